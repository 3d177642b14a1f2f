// A terminal emulator without a window: fake_terminal -e PROGRAM [ARGUMENT...] runs the program on
// a pseudo-terminal of 100 columns and 30 rows. Its keyboard and screen are the socket named by
// FAKE_TERMINAL; when that is closed the window is. SIGUSR1 makes it 132 by 50. With
// FAKE_TERMINAL_SERVER set the process that was started ends at once and another one goes on.
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

int sMaster = -1;

void enlarge(int /*signal*/) {
    const winsize size{.ws_row = 50, .ws_col = 132, .ws_xpixel = 0, .ws_ypixel = 0};
    ioctl(sMaster, TIOCSWINSZ, &size);
}

int connect_test() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const char* path = std::getenv("FAKE_TERMINAL");
    if (!path) _exit(3);
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    const int test = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(test, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) _exit(3);
    return test;
}

// Passes on what there is; false at the end.
bool pass(int from, int to) {
    std::array<char, 65536> bytes;
    const ssize_t count = read(from, bytes.data(), bytes.size());
    for (ssize_t sent = 0; sent < count;) {
        const ssize_t more = write(to, bytes.data() + sent, static_cast<size_t>(count - sent));
        if (more < 0) return false;
        sent += more;
    }
    return count > 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || std::strcmp(argv[1], "-e") != 0) return 2;
    if (std::getenv("FAKE_TERMINAL_SERVER") && fork() != 0) return 0;
    const int test = connect_test();
    const winsize size{.ws_row = 30, .ws_col = 100, .ws_xpixel = 0, .ws_ypixel = 0};
    const pid_t program = forkpty(&sMaster, nullptr, nullptr, &size);
    if (program == 0) {
        execv(argv[2], argv + 2);
        _exit(127);
    }
    struct sigaction action {};
    action.sa_handler = enlarge;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, nullptr);
    for (;;) {
        std::array<pollfd, 2> set{{{test, POLLIN, 0}, {sMaster, POLLIN, 0}}};
        if (poll(set.data(), set.size(), -1) < 0) continue;
        if (set[1].revents != 0 && !pass(sMaster, test)) return 0;
        if (set[0].revents != 0 && !pass(test, sMaster)) return 0;
    }
}
