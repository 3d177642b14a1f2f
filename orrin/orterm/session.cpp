#include "session.h"

#include "channel.h"
#include "input_watch.h"
#include "pty.h"
#include "window.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>

namespace dorn {
namespace {

/// What the command wrote and the window has not taken: above this the command is left waiting.
constexpr size_t kMaxOutput = 16 * kPacketSize;

/// What was typed and the command has not read: above this the window is left waiting.
constexpr size_t kMaxKeys = 4 * kPacketSize;

/// The most that is read once the command has ended: more than a pseudo-terminal holds back, so
/// more comes only from what the command left running.
constexpr size_t kMaxLastWords = 16 * kPacketSize;

/// A window that was up for less, and in which nobody typed, has not been read.
constexpr std::chrono::seconds kTimeToRead{5};

struct Session {
    SessionOptions options;
    Pty pty;
    Fd signals;
    pid_t leader = -1;
    Window window;
    InputWatch watch;
    std::string output;  ///< on its way to the window
    std::string keys;    ///< on their way to the command

    bool ended = false;        ///< the command; `status` is its
    bool drained = false;      ///< and nothing more is to be read from it
    size_t last_words = 0;     ///< bytes read since it ended
    int status = 0;            ///< as a shell gives it
    bool farewell = false;     ///< how it ended was decided and told
    bool key_awaited = false;  ///< the window stays until a key is pressed
    bool typed = false;        ///< something was
    bool hung_up = false;      ///< the window was closed while the command ran
};

bool would_block() {
    return errno == EAGAIN || errno == EINTR;
}

void hang_up(Session& session) {
    if (!session.ended) session.status = shell_status(pty_hang_up(session.pty, session.leader));
    session.hung_up = true;
}

/// Whoever can't be shown a window sees the output on standard error.
void write_to_standard_error(Session& session) {
    while (!session.output.empty()) {
        const ssize_t count = write(STDERR_FILENO, session.output.data(), session.output.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        session.output.erase(0, static_cast<size_t>(count));
    }
    session.output.clear();
}

/// Reads from the command what there is, as far as there is room for it.
void read_command(Session& session) {
    std::array<char, kPacketSize> bytes;
    while (!session.drained && session.output.size() < kMaxOutput) {
        const ssize_t count = read(session.pty.master.get(), bytes.data(), bytes.size());
        if (count <= 0) {
            session.drained = session.ended;
            return;
        }
        session.output.append(bytes.data(), static_cast<size_t>(count));
        if (session.ended) session.last_words += static_cast<size_t>(count);
        if (session.last_words >= kMaxLastWords) session.drained = true;
    }
}

void write_command(Session& session) {
    const ssize_t count = write(session.pty.master.get(), session.keys.data(), session.keys.size());
    if (count > 0) {
        session.keys.erase(0, static_cast<size_t>(count));
    } else if (count < 0 && !would_block()) {
        session.keys.clear();
    }
}

/// The length of the control sequence that `text` begins with, such as a terminal reports a
/// position, a colour or a moved mouse in; 0 when it begins with anything else.
size_t report_length(std::string_view text) {
    if (text.size() < 2 || text[0] != '\x1b') return 0;
    if (text[1] == '[') {
        size_t end = 2;
        while (end < text.size() && text[end] < '@')
            ++end;
        return std::min(end + 1, text.size());
    }
    if (text[1] == ']' || text[1] == 'P') {
        const size_t bell = text.find('\a');
        const size_t close = text.find("\x1b\\", 2);
        const size_t end = std::min(bell, close);
        return end == std::string_view::npos ? text.size() : end + (end == close ? 2 : 1);
    }
    return 2;
}

/// Whether a person typed: the terminal's own reports come by the same way.
bool holds_key(std::string_view text) {
    while (const size_t length = report_length(text))
        text.remove_prefix(length);
    return !text.empty();
}

void take_keys(Session& session, std::string_view text) {
    const bool typed = holds_key(text);
    session.typed = session.typed || typed;
    if (!session.farewell) {
        session.keys.append(text);
    } else if (typed) {
        session.key_awaited = false;
    }
}

void read_window(Session& session) {
    std::array<char, kPacketSize> bytes;
    const ssize_t count =
        recv(session.window.channel.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count <= 0) {
        if (count == 0 || !would_block()) hang_up(session);
        return;
    }
    const auto size = static_cast<size_t>(count) - 1;
    if (bytes[0] == static_cast<char>(PacketKind::kKeys)) {
        take_keys(session, {bytes.data() + 1, size});
    } else if (bytes[0] == static_cast<char>(PacketKind::kSize) && size == sizeof(winsize)) {
        winsize window{};
        std::memcpy(&window, bytes.data() + 1, sizeof window);
        ioctl(session.pty.master.get(), TIOCSWINSZ, &window);
    }
}

void write_window(Session& session) {
    const ssize_t count =
        send(session.window.channel.get(), session.output.data(),
             std::min(session.output.size(), kPacketSize), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count > 0) {
        session.output.erase(0, static_cast<size_t>(count));
    } else if (count < 0 && !would_block()) {
        hang_up(session);
    }
}

/// Takes the ends of the command and of the emulator.
void take_signals(Session& session) {
    signalfd_siginfo info{};
    while (read(session.signals.get(), &info, sizeof info) > 0)
        continue;
    int status = 0;
    for (pid_t child = 0; (child = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (child == session.leader) {
            session.ended = true;
            session.status = shell_status(status);
        } else if (child == session.window.emulator) {
            window_emulator_ended(session.window, shell_status(status));
        }
    }
}

/// Whether the window stays after the command's end. Our own terminal stays anyway.
bool wants_key(const Session& session) {
    if (session.window.own_terminal) return false;
    if (session.options.keep_window) return true;
    if (!session.options.late_window || session.status == 128 + SIGINT) return false;
    return session.status != 0 ||
           (!session.typed && Clock::now() - session.window.opened < kTimeToRead);
}

void say_farewell(Session& session) {
    session.farewell = true;
    session.key_awaited = wants_key(session);
    if (!session.key_awaited) return;
    // Colours back to the usual ones, the cursor visible.
    session.output += "\x1b[0m\x1b[?25h\r\n[" + session.window.title + " ended with status " +
                      std::to_string(session.status) + ": press Enter to close]";
}

/// Whether everything is done, the command having ended.
bool is_done(Session& session) {
    if (session.hung_up) return true;
    if (!session.ended || !session.drained) return false;
    switch (session.window.state) {
        case WindowState::kAway:
        case WindowState::kNone:
            return true;
        case WindowState::kStarting:
            return session.output.empty() &&
                   (session.options.late_window || !session.options.keep_window);
        case WindowState::kOpen:
            if (!session.farewell) say_farewell(session);
            return session.output.empty() && !session.key_awaited;
    }
    return true;
}

/// Looks whether the command wants input that nobody can give as long as there is no window.
void look_for_input(Session& session) {
    const bool unseen =
        session.window.state == WindowState::kAway || session.window.state == WindowState::kNone;
    if (session.ended || !unseen) return;
    if (!input_watch_look(session.watch, session.pty, session.leader)) return;
    if (session.window.state == WindowState::kAway) {
        window_show(session.window);
        return;
    }
    std::fprintf(stderr, "orterm: %s wants input, and there is no terminal\n",
                 session.window.title.c_str());
    hang_up(session);
}

/// Milliseconds until something is to be done even if nothing happens; -1 for never.
int patience(const Session& session) {
    switch (session.window.state) {
        case WindowState::kAway:
        case WindowState::kNone:
            return session.ended ? -1 : input_watch_patience(session.watch);
        case WindowState::kStarting:
            return window_patience(session.window);
        case WindowState::kOpen:
            return -1;
    }
    return -1;
}

void wait_for_events(Session& session) {
    const auto wish = [](bool reads, bool writes) {
        return static_cast<short>((reads ? POLLIN : 0) | (writes ? POLLOUT : 0));
    };
    Window& window = session.window;
    const short command = wish(!session.ended && session.output.size() < kMaxOutput,
                               !session.ended && !session.keys.empty());
    // A command held up by a full buffer is left out: its end would be told again and again.
    std::array<pollfd, 4> set{
        {{session.signals.get(), POLLIN, 0},
         {command != 0 ? session.pty.master.get() : -1, command, 0},
         {window.state == WindowState::kStarting ? window.listener.get() : -1, POLLIN, 0},
         {window.channel.get(), wish(session.keys.size() < kMaxKeys, !session.output.empty()), 0}}};
    if (poll(set.data(), set.size(), patience(session)) < 0) return;
    if (set[1].revents != 0) read_command(session);
    if ((set[1].revents & POLLOUT) != 0) write_command(session);
    if (set[2].revents != 0) window_take_connection(window);
    if ((set[3].revents & POLLOUT) != 0) write_window(session);
    if (!session.hung_up && (set[3].revents & (POLLIN | POLLHUP | POLLERR)) != 0)
        read_window(session);
    if (set[0].revents != 0) take_signals(session);
}

void step(Session& session) {
    wait_for_events(session);
    if (session.hung_up) return;
    if (session.ended && !session.drained) read_command(session);
    window_check_deadline(session.window);
    look_for_input(session);
    if (session.window.state == WindowState::kAway && !session.output.empty())
        window_show(session.window);
    if (session.window.state == WindowState::kNone) write_to_standard_error(session);
}

/// Blocks SIGCHLD, whatever was inherited for it, and gives a descriptor that tells of it. A
/// standard error that nobody reads is no reason to end.
Fd open_child_signals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    sigprocmask(SIG_SETMASK, &set, nullptr);
    return Fd(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

bool begin(Session& session, const std::vector<std::string>& command) {
    session.signals = open_child_signals();
    if (!session.signals || !pty_open(session.pty) || !window_setup(session.window, command))
        return false;
    session.leader = pty_start(session.pty, command, window_terminal_type(session.window));
    return session.leader >= 0;
}

}  // namespace

int session_run(const SessionOptions& options, const std::vector<std::string>& command) {
    Session session;
    session.options = options;
    if (!begin(session, command)) {
        std::fprintf(stderr, "orterm: %s\n", std::strerror(errno));
        return 126;
    }
    if (!options.late_window) window_show(session.window);
    while (!is_done(session))
        step(session);
    window_dismiss(session.window);
    return session.status;
}

}  // namespace dorn
