#include "input_watch.h"

#include "wants_input.h"

#include <algorithm>

namespace dorn {
namespace {

constexpr std::chrono::milliseconds kLongestPause{1000};
constexpr std::chrono::seconds kLongestUnknown{1};

}  // namespace

int input_watch_patience(const InputWatch& watch) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(watch.next - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

bool input_watch_look(InputWatch& watch, const Pty& pty, pid_t leader) {
    const Clock::time_point now = Clock::now();
    if (now < watch.next) return false;
    watch.pause = std::min(watch.pause * 5 / 4, kLongestPause);
    watch.next = now + watch.pause;
    if (terminal_is_raw(pty.master.get())) return true;
    const InputWish wish = processes_want_input(leader, pty.device);
    if (wish != InputWish::kUnknown) {
        watch.unknown_since = Clock::time_point::max();
        return wish == InputWish::kYes;
    }
    watch.unknown_since = std::min(watch.unknown_since, now);
    return now - watch.unknown_since >= kLongestUnknown;
}

}  // namespace dorn
