#include "platform/signals.h"

#include "platform/spare_thread.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <sys/time.h>

using namespace dorn;

namespace {

/// Puts back how the process takes its signals.
class SignalsTest : public testing::Test {
  protected:
    SignalsTest() {
        for (std::size_t number = 1; number < before_.size(); ++number)
            sigaction(static_cast<int>(number), nullptr, &before_[number]);
    }
    ~SignalsTest() override {
        for (std::size_t number = 1; number < before_.size(); ++number)
            sigaction(static_cast<int>(number), &before_[number], nullptr);
    }

  private:
    std::array<struct sigaction, 32> before_{};
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
    const itimerval often{{0, 5000}, {0, 5000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ(poll(nullptr, 0, 60000), -1);
    EXPECT_EQ(errno, EINTR);
    const itimerval off{};
    setitimer(ITIMER_REAL, &off, nullptr);
}

TEST(SpareThreadTest, WorkIsDoneWithEverySignalBlockedAndSeenByTheCaller) {
    const auto mask = std::make_shared<sigset_t>();
    const SpareCall call([mask] { pthread_sigmask(SIG_SETMASK, nullptr, mask.get()); });
    while (!call.done(1000)) {
    }
    EXPECT_EQ(mask.use_count(), 1);  // what the work held has been let go
    for (const int number : {SIGALRM, SIGTERM, SIGWINCH})
        EXPECT_EQ(sigismember(mask.get(), number), 1);
}

TEST(SpareThreadTest, WorkThatHangsIsGivenUpAndMayEndLater) {
    const auto go = std::make_shared<std::atomic<bool>>(false);
    const auto wait_for_it = [go] { go->wait(false); };
    const SpareCall call(wait_for_it);
    EXPECT_FALSE(call.done(0));
    EXPECT_FALSE(spare_call(wait_for_it, 5));
    *go = true;
    go->notify_all();
    while (!call.done(1000)) {
    }
}

}  // namespace
