// The pseudo-terminal and the command that runs on it.
//
// The command gets a session of its own. The session's leader is a small process between us and the
// command: when a leader ends, the kernel hangs up the terminal's foreground processes, among them
// whatever the command left running (a viewer that the desktop's opener started). This leader steps
// into the foreground itself before it ends, so those live on. It ends as the command did; ended by
// force, or with the pseudo-terminal closed, it takes the command with it.
#pragma once

#include "platform/fd.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace dorn {

struct Pty {
    Fd master;         ///< does not block
    Fd slave;          ///< the command's side; reset once the command is started
    dev_t device = 0;  ///< the slave's device number
};

/// Opens a pseudo-terminal of 80 columns and 24 rows. False with errno set when there is none.
bool pty_open(Pty& pty);

/// Starts `command` (not empty; its first word is looked up along PATH) on the pseudo-terminal,
/// with `term` as its TERM unless that is empty. A command that can't be started says so on the
/// pseudo-terminal and ends with status 127 when there is none of that name, else 126. Returns the
/// process id of the session's leader, our child, or -1 with errno set.
pid_t pty_start(Pty& pty, const std::vector<std::string>& command, const std::string& term);

/// Hangs up the session of that leader and waits for the leader's end. Returns its wait status.
int pty_hang_up(Pty& pty, pid_t leader);

/// The words as exec takes them: pointers into `words`, then a null pointer.
std::vector<char*> exec_words(const std::vector<std::string>& words);

/// Undoes what this program did to its signals; for a child before exec.
void reset_signals();

/// A wait status as a shell gives it: the exit status, or 128 and the signal's number.
int shell_status(int wait_status);

}  // namespace dorn
