#include "channel.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace dorn {
namespace {

/// The address as a name in the abstract space: a NUL, then the name. Returns its length, 0 when it
/// is too long.
socklen_t make_address(const std::string& name, sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (name.empty() || name.size() + 1 > sizeof address.sun_path) return 0;
    std::memcpy(address.sun_path + 1, name.data(), name.size());
    return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

bool peer_is_this_user(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == geteuid();
}

/// 128 random bits in hexadecimal; empty when there are none to be had.
std::string random_word() {
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return {};
    std::string word;
    for (const unsigned char byte : bytes) {
        word += "0123456789abcdef"[byte >> 4];
        word += "0123456789abcdef"[byte & 15];
    }
    return word;
}

}  // namespace

Fd channel_listen(std::string& address) {
    const std::string word = random_word();
    if (word.empty()) return {};
    address = "orterm-" + word;
    sockaddr_un place;
    const socklen_t length = make_address(address, place);
    Fd listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener || bind(listener.get(), generic(place), length) != 0 ||
        listen(listener.get(), 4) != 0)
        return {};
    return listener;
}

Fd channel_accept(int listener) {
    Fd connection(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection || !peer_is_this_user(connection.get())) return {};
    return connection;
}

Fd channel_connect(const std::string& address) {
    sockaddr_un place;
    const socklen_t length = make_address(address, place);
    if (length == 0) {
        errno = EINVAL;
        return {};
    }
    Fd connection(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (!connection || connect(connection.get(), generic(place), length) != 0) return {};
    if (!peer_is_this_user(connection.get())) {
        errno = EACCES;
        return {};
    }
    return connection;
}

}  // namespace dorn
