// The process in the window: it relays between the window's terminal and the process that runs the
// command. Keys go there as they come, the terminal being in raw mode; so does the terminal's size,
// at first and whenever it changes. What comes from there is written to the terminal.
#pragma once

#include <string>

namespace dorn {

/// Relays on this process's controlling terminal until either side is gone or a signal ends it, and
/// leaves the terminal as it was. All output that was sent is written before. Returns the exit
/// status: 0, or 1 with a message on standard error when there is nothing at `address`, or no
/// terminal.
int attach_run(const std::string& address);

}  // namespace dorn
