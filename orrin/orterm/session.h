// One command from its start to its end, with its window.
//
// The first process stays for all of it. It runs the command on a pseudo-terminal, keeps what the
// command writes until a window can take it, and starts a terminal emulator when a window is due.
// The emulator runs this program once more, attached; its connection is the window: the emulator's
// own process tells nothing, since some hand over to a server. The window gone hangs the command
// up; the command ended closes the window, at once or after a key.
#pragma once

#include <string>
#include <vector>

namespace dorn {

struct SessionOptions {
    bool keep_window = false;  ///< -z
    bool late_window = false;  ///< -U
};

/// Runs the command (not empty) and returns its exit status: 128 and the signal's number for one
/// ended by a signal, 126 or 127 for one that could not be started.
int session_run(const SessionOptions& options, const std::vector<std::string>& command);

}  // namespace dorn
