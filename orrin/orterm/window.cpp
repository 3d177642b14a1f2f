#include "window.h"

#include "attach.h"
#include "channel.h"
#include "pty.h"
#include "title.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>

namespace dorn {
namespace {

/// How long an emulator may take until its window is there.
constexpr std::chrono::seconds kStartTime{20};

/// Whether somebody sits at the terminal that this program was started from, and it is not in the
/// background there.
bool has_own_terminal() {
    return isatty(STDIN_FILENO) && tcgetpgrp(STDIN_FILENO) == getpgrp();
}

/// The emulator's child process: what it reads is nothing, what it says goes where ours goes.
[[noreturn]] void run_emulator(const std::vector<std::string>& words) {
    reset_signals();
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    execv(words[0].c_str(), exec_words(words).data());
    std::fprintf(stderr, "orterm: %s: %s\n", words[0].c_str(), std::strerror(errno));
    _exit(127);
}

[[noreturn]] void run_in_own_terminal(const std::string& address) {
    close_range(3, ~0U, 0);
    reset_signals();
    _exit(attach_run(address));
}

void say_no_emulator(const Window& window, const char* consequence) {
    const bool display = std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY");
    std::fprintf(stderr, "orterm: no terminal window for %s (%s): %s\n", window.title.c_str(),
                 !window.candidates.empty() ? "no terminal emulator could be started"
                 : display                  ? "no terminal emulator is installed"
                                            : "there is no display",
                 consequence);
}

void give_up(Window& window) {
    say_no_emulator(window, "its output follows here");
    window.state = WindowState::kNone;
    window.listener.reset();
}

/// What the emulator executes to start this program once more. The file may have been deleted or
/// replaced since the command was started; this process, which stays for all of it, still has it.
std::string own_path() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size() - 1);
    if (length > 0 && access(path.data(), X_OK) == 0) return path.data();
    return "/proc/" + std::to_string(getpid()) + "/exe";
}

/// Starts the next candidate, or our own terminal after the last one.
void try_next(Window& window) {
    if (window.emulator > 0) kill(window.emulator, SIGTERM);
    const size_t index = window.next++;
    window.own_terminal = index == window.candidates.size() && has_own_terminal();
    if (index >= window.candidates.size() && !window.own_terminal) {
        give_up(window);
        return;
    }
    if (window.own_terminal) say_no_emulator(window, "going on here");
    window.deadline = Clock::now() + kStartTime;
    const std::string program = own_path();
    window.emulator = fork();
    if (window.emulator != 0) return;
    if (window.own_terminal) run_in_own_terminal(window.address);
    run_emulator(emulator_words(window.candidates[index], window.title,
                                {program, "--attach", window.address}));
}

}  // namespace

bool window_setup(Window& window, const std::vector<std::string>& command) {
    window.title = window_title(command);
    window.candidates = find_emulators();
    window.listener = channel_listen(window.address);
    return static_cast<bool>(window.listener);
}

std::string window_terminal_type(const Window& window) {
    if (!window.candidates.empty()) return window.candidates[0].form->type;
    return has_own_terminal() ? "" : "dumb";
}

void window_show(Window& window) {
    window.state = WindowState::kStarting;
    try_next(window);
}

void window_emulator_ended(Window& window, int status) {
    window.emulator = -1;
    if (window.state == WindowState::kStarting && status != 0) try_next(window);
}

void window_take_connection(Window& window) {
    window.channel = channel_accept(window.listener.get());
    if (!window.channel) return;
    window.listener.reset();
    window.state = WindowState::kOpen;
    window.opened = Clock::now();
}

void window_check_deadline(Window& window) {
    if (window.state == WindowState::kStarting && Clock::now() >= window.deadline) try_next(window);
}

int window_patience(const Window& window) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(window.deadline - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

void window_dismiss(Window& window) {
    if (window.state == WindowState::kStarting && window.emulator > 0)
        kill(window.emulator, SIGTERM);
    window.listener.reset();
    window.channel.reset();
    if (!window.own_terminal || window.emulator <= 0) return;
    while (waitpid(window.emulator, nullptr, 0) < 0 && errno == EINTR)
        continue;
}

}  // namespace dorn
