#include "platform/signals.h"

#include "platform/spare_thread.h"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

namespace dorn {
namespace {

/// Puts back how the process takes its signals.
class SignalsTest : public testing::Test {
  protected:
    SignalsTest() {
        for (int number = 1; number < kNumbers; ++number)
            sigaction(number, nullptr, &before_[static_cast<std::size_t>(number)]);
    }
    ~SignalsTest() override {
        for (int number = 1; number < kNumbers; ++number)
            sigaction(number, &before_[static_cast<std::size_t>(number)], nullptr);
    }

  private:
    static constexpr int kNumbers = 32;
    std::array<struct sigaction, kNumbers> before_{};
};

TEST_F(SignalsTest, AStormOfOneSignalPushesNoOtherOut) {
    const int fd = signals_install();
    ASSERT_GE(fd, 0);
    for (int i = 0; i < 70000; ++i)
        raise(SIGWINCH);  // more than the pipe holds
    raise(SIGTERM);
    pollfd waiting{fd, POLLIN, 0};
    EXPECT_EQ(poll(&waiting, 1, 0), 1);
    EXPECT_EQ(signals_take(), SIGTERM);
    EXPECT_EQ(signals_take(), SIGWINCH);
    EXPECT_EQ(signals_take(), 0);
    EXPECT_EQ(poll(&waiting, 1, 0), 0);
    for (const int ignored : {SIGPIPE, SIGXFSZ, SIGCHLD})
        raise(ignored);
    EXPECT_EQ(signals_take(), 0);
}

TEST_F(SignalsTest, TheAlarmMakesABlockedCallReturn) {
    signals_install();
    std::array<int, 2> pipe_ends{};
    ASSERT_EQ(pipe(pipe_ends.data()), 0);
    const itimerval often{{0, 5000}, {0, 5000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    char byte = 0;
    const ssize_t got = read(pipe_ends[0], &byte, 1);
    const int error = errno;
    const itimerval off{};
    setitimer(ITIMER_REAL, &off, nullptr);
    EXPECT_EQ(got, -1);
    EXPECT_EQ(error, EINTR);
    for (const int end : pipe_ends)
        close(end);
}

TEST(SpareThreadTest, WorkIsDoneWithEverySignalBlockedAndSeenByTheCaller) {
    const auto mask = std::make_shared<sigset_t>();
    const SpareCall call([mask] { pthread_sigmask(SIG_SETMASK, nullptr, mask.get()); });
    while (!call.done(1000)) {
    }
    EXPECT_EQ(mask.use_count(), 1);  // what the work held has been let go
    for (const int number : {SIGALRM, SIGTERM, SIGWINCH})
        EXPECT_EQ(sigismember(mask.get(), number), 1);
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGALRM), 0);
}

TEST(SpareThreadTest, WorkThatHangsIsGivenUpAndMayEndLater) {
    std::array<int, 2> pipe_ends{};
    ASSERT_EQ(pipe(pipe_ends.data()), 0);
    const auto wait_for_a_byte = [from = pipe_ends[0]] {
        char byte = 0;
        [[maybe_unused]] const ssize_t got = read(from, &byte, 1);
    };
    const SpareCall call(wait_for_a_byte);
    EXPECT_FALSE(call.done(0));
    EXPECT_FALSE(spare_call(wait_for_a_byte, 5));
    ASSERT_EQ(write(pipe_ends[1], "ab", 2), 2);
    while (!call.done(1000)) {
    }
    close(pipe_ends[1]);
}

}  // namespace
}  // namespace dorn
