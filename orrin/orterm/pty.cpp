#include "pty.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>

namespace dorn {
namespace {

pid_t sCommand;

/// The terminal was closed: everything in the command's group hears of it, not only the group in
/// the foreground, which the kernel tells when this process ends.
void hang_up_command(int /*signal*/) {
    kill(-sCommand, SIGHUP);
    kill(-sCommand, SIGCONT);
    _exit(128 + SIGHUP);
}

[[noreturn]] void run_command(const std::vector<std::string>& command, const std::string& term) {
    setpgid(0, 0);
    // From the background this raises SIGTTOU, which is blocked here.
    tcsetpgrp(STDIN_FILENO, getpid());
    if (!term.empty()) setenv("TERM", term.c_str(), 1);
    // They would tell of another terminal's size.
    unsetenv("COLUMNS");
    unsetenv("LINES");
    reset_signals();
    execvp(command[0].c_str(), exec_words(command).data());
    const int error = errno;
    std::fprintf(stderr, "orterm: %s: %s\n", command[0].c_str(), std::strerror(error));
    _exit(error == ENOENT ? 127 : 126);
}

/// Waits for the command's end and returns its status. A stopped command goes on, in the
/// foreground, lest it stops at once again: there is no shell that could continue it.
int wait_for_command() {
    int status = 0;
    for (;;) {
        if (waitpid(sCommand, &status, WUNTRACED) < 0) {
            if (errno == EINTR) continue;
            return 128 + SIGHUP;
        }
        if (!WIFSTOPPED(status)) return shell_status(status);
        tcsetpgrp(STDIN_FILENO, sCommand);
        kill(-sCommand, SIGCONT);
    }
}

/// The session's leader: all of its signals are blocked on entry.
[[noreturn]] void lead_session(int slave, const std::vector<std::string>& command,
                               const std::string& term) {
    setsid();
    ioctl(slave, TIOCSCTTY, 0);
    for (int fd = 0; fd < 3; ++fd)
        dup2(slave, fd);
    close_range(3, ~0U, 0);
    sCommand = fork();
    if (sCommand == 0) run_command(command, term);
    if (sCommand < 0) {
        std::fprintf(stderr, "orterm: %s\n", std::strerror(errno));
        _exit(126);
    }
    std::signal(SIGHUP, hang_up_command);
    sigset_t hangup;
    sigemptyset(&hangup);
    sigaddset(&hangup, SIGHUP);
    sigprocmask(SIG_UNBLOCK, &hangup, nullptr);
    const int status = wait_for_command();
    tcsetpgrp(STDIN_FILENO, getpid());
    std::signal(SIGHUP, SIG_IGN);
    _exit(status);
}

}  // namespace

bool pty_open(Pty& pty) {
    pty.master = Fd(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    if (!pty.master || unlockpt(pty.master.get()) != 0) return false;
    pty.slave = Fd(ioctl(pty.master.get(), TIOCGPTPEER, O_RDWR | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    termios modes{};
    if (!pty.slave || fstat(pty.slave.get(), &status) != 0 ||
        tcgetattr(pty.slave.get(), &modes) != 0)
        return false;
    pty.device = status.st_rdev;
    modes.c_iflag |= IUTF8;
    tcsetattr(pty.slave.get(), TCSANOW, &modes);
    const winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    ioctl(pty.master.get(), TIOCSWINSZ, &size);
    return true;
}

pid_t pty_start(Pty& pty, const std::vector<std::string>& command, const std::string& term) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before);
    const pid_t leader = fork();
    if (leader == 0) lead_session(pty.slave.get(), command, term);
    const int error = errno;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    pty.slave.reset();
    errno = error;
    return leader;
}

int pty_hang_up(Pty& pty, pid_t leader) {
    kill(leader, SIGHUP);
    pty.master.reset();
    int status = 0;
    while (waitpid(leader, &status, 0) < 0 && errno == EINTR)
        continue;
    return status;
}

std::vector<char*> exec_words(const std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words)
        pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

void reset_signals() {
    for (int number = 1; number < NSIG; ++number)
        std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

int shell_status(int wait_status) {
    return WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

}  // namespace dorn
