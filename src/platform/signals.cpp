#include "platform/signals.h"

#include <array>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr std::array kForwarded = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGWINCH};
constexpr std::array kIgnored = {SIGCHLD, SIGPIPE, SIGXFSZ};

int sPipe[2] = {-1, -1};
// One bit a signal number. The pipe only wakes the event loop: a storm of one signal can fill it
// without pushing another one out.
std::atomic<uint32_t> sWaiting{0};
static_assert(std::atomic<uint32_t>::is_always_lock_free);

void forward(int number) {
    const int kept = errno;
    sWaiting.fetch_or(1U << number);
    const char wake = 0;
    // A full pipe wakes the event loop as well.
    [[maybe_unused]] const ssize_t written = write(sPipe[1], &wake, 1);
    errno = kept;
}

void interrupt_only(int) {}

void install(int number, void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

}  // namespace

int signals_install() {
    if (sPipe[0] < 0 && pipe2(sPipe, O_CLOEXEC | O_NONBLOCK) != 0) return -1;
    sigset_t wanted;
    sigemptyset(&wanted);
    for (const int number : kForwarded) {
        install(number, forward, SA_RESTART);
        sigaddset(&wanted, number);
    }
    for (const int number : kIgnored)
        install(number, SIG_IGN, 0);
    install(SIGALRM, interrupt_only, 0);
    sigaddset(&wanted, SIGALRM);
    // Whoever started the program may have left some of them blocked.
    pthread_sigmask(SIG_UNBLOCK, &wanted, nullptr);
    return sPipe[0];
}

int signals_take() {
    std::array<char, 256> wakes;
    while (read(sPipe[0], wakes.data(), wakes.size()) > 0) {
    }
    const uint32_t waiting = sWaiting.load();
    if (waiting == 0) return 0;
    const int number = std::countr_zero(waiting);
    sWaiting.fetch_and(~(1U << number));
    return number;
}

SignalsBlocked::SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
}

SignalsBlocked::~SignalsBlocked() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace dorn
