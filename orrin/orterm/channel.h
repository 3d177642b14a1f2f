// The connection between the first process, which runs the command, and the attached one, which
// runs in the window.
//
// It is a socket of packets under an abstract address that can't be guessed, so nothing lies in the
// file system and the name is gone with the listener. Both ends look at the other's user id, since
// the address can be read in the list of processes. Packets from the command to the window are
// output as it is; those from the window begin with a PacketKind. No packet is empty: an empty one
// is the end of the connection.
#pragma once

#include "platform/fd.h"

#include <string>

namespace dorn {

/// The most bytes that one packet holds.
constexpr size_t kPacketSize = 16384;

/// The first byte of a packet from the window.
enum class PacketKind : char {
    kKeys = 'k',  ///< what was typed
    kSize = 's',  ///< a struct winsize
};

/// Listens under an address of its own, which `address` receives. Empty with errno set when that
/// fails. Does not block when accepting.
Fd channel_listen(std::string& address);

/// Takes one connection. Empty when it is not this user's, or gone again. Does not block later on.
Fd channel_accept(int listener);

/// Connects to an address of channel_listen. Empty with errno set when nobody listens there, or
/// somebody else.
Fd channel_connect(const std::string& address);

}  // namespace dorn
