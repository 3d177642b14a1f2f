#include "attach.h"

#include "channel.h"
#include "platform/fd.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <termios.h>

namespace dorn {
namespace {

/// The terminal of the window, opened anew: that it does not block concerns no other process.
class RawTerminal {
  public:
    RawTerminal() : fd_(open("/dev/tty", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        if (!fd_ || tcgetattr(fd_.get(), &before_) != 0) {
            fd_.reset();
            return;
        }
        termios raw = before_;
        cfmakeraw(&raw);
        tcsetattr(fd_.get(), TCSANOW, &raw);
    }
    ~RawTerminal() {
        if (fd_) tcsetattr(fd_.get(), TCSADRAIN, &before_);
    }
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;

    /// -1 when there is no terminal.
    int get() const {
        return fd_.get();
    }

  private:
    Fd fd_;
    termios before_{};
};

struct Relay {
    RawTerminal terminal;
    Fd channel;
    Fd signals;
    std::string output;         ///< on its way to the terminal
    std::string keys;           ///< one packet on its way to the program
    bool size_due = true;       ///< the terminal's size is to be sent
    bool channel_open = true;   ///< more output may come
    bool terminal_open = true;  ///< neither hung up nor told to end
};

constexpr size_t kMaxOutput = 4 * kPacketSize;

bool would_block() {
    return errno == EAGAIN || errno == EINTR;
}

std::string packet(PacketKind kind, const void* bytes, size_t size) {
    return std::string(1, static_cast<char>(kind)).append(static_cast<const char*>(bytes), size);
}

void read_keys(Relay& relay) {
    std::array<char, 4096> bytes;
    const ssize_t count = read(relay.terminal.get(), bytes.data(), bytes.size());
    if (count > 0) {
        relay.keys = packet(PacketKind::kKeys, bytes.data(), static_cast<size_t>(count));
    } else if (count == 0 || !would_block()) {
        relay.terminal_open = false;
    }
}

/// Sends a packet; false when there is no room for it yet. What is meant for a program that has
/// gone is dropped: its last output is still to be read.
bool send_packet(const Relay& relay, const std::string& message) {
    return send(relay.channel.get(), message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >=
               0 ||
           !would_block();
}

/// An emulator that knows no size yet tells of it later, with a signal.
void send_size(Relay& relay) {
    winsize size{};
    const bool known = ioctl(relay.terminal.get(), TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    if (!known || send_packet(relay, packet(PacketKind::kSize, &size, sizeof size)))
        relay.size_due = false;
}

void send_waiting(Relay& relay) {
    if (relay.size_due) send_size(relay);
    if (!relay.keys.empty() && send_packet(relay, relay.keys)) relay.keys.clear();
}

void receive_output(Relay& relay) {
    std::array<char, kPacketSize> bytes;
    const ssize_t count = recv(relay.channel.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count > 0) {
        relay.output.append(bytes.data(), static_cast<size_t>(count));
    } else if (count == 0 || (!would_block() && errno != ECONNRESET)) {
        // A reset is told once, in front of what was sent before it: reading goes on.
        relay.channel_open = false;
    }
}

void write_output(Relay& relay) {
    const ssize_t count = write(relay.terminal.get(), relay.output.data(), relay.output.size());
    if (count > 0) {
        relay.output.erase(0, static_cast<size_t>(count));
    } else if (count < 0 && !would_block()) {
        relay.terminal_open = false;
    }
}

void take_signal(Relay& relay) {
    signalfd_siginfo info{};
    if (read(relay.signals.get(), &info, sizeof info) != static_cast<ssize_t>(sizeof info)) return;
    if (info.ssi_signo == SIGWINCH) {
        relay.size_due = true;
    } else {
        relay.terminal_open = false;
    }
}

void relay_once(Relay& relay) {
    constexpr int kGone = POLLHUP | POLLERR;
    const auto wish = [](bool reads, bool writes) {
        return static_cast<short>((reads ? POLLIN : 0) | (writes ? POLLOUT : 0));
    };
    const bool sends = relay.channel_open && (relay.size_due || !relay.keys.empty());
    const bool receives = relay.channel_open && relay.output.size() < kMaxOutput;
    std::array<pollfd, 3> set{
        {{relay.signals.get(), POLLIN, 0},
         {relay.terminal.get(), wish(relay.keys.empty(), !relay.output.empty()), 0},
         {sends || receives ? relay.channel.get() : -1, wish(receives, sends), 0}}};
    if (poll(set.data(), set.size(), -1) < 0) return;
    if (set[0].revents != 0) take_signal(relay);
    if ((set[1].revents & POLLIN) != 0) read_keys(relay);
    if ((set[1].revents & POLLOUT) != 0) write_output(relay);
    if ((set[1].revents & kGone) != 0) relay.terminal_open = false;
    if (receives && (set[2].revents & (POLLIN | kGone)) != 0) receive_output(relay);
    if (sends && (set[2].revents & (POLLOUT | kGone)) != 0) send_waiting(relay);
}

/// A descriptor that tells of a size change and of signals to end.
Fd open_signals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGWINCH, SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        sigaddset(&set, number);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return Fd(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

}  // namespace

int attach_run(const std::string& address) {
    Fd channel = channel_connect(address);
    if (!channel) {
        std::fprintf(stderr, "orterm: nothing to attach to: %s\n", std::strerror(errno));
        return 1;
    }
    Fd signals = open_signals();
    Relay relay{.terminal = {},
                .channel = std::move(channel),
                .signals = std::move(signals),
                .output = {},
                .keys = {}};
    if (relay.terminal.get() < 0 || !relay.signals) {
        std::fprintf(stderr, "orterm: no terminal to attach to: %s\n", std::strerror(errno));
        return 1;
    }
    while (relay.terminal_open && (relay.channel_open || !relay.output.empty()))
        relay_once(relay);
    return 0;
}

}  // namespace dorn
