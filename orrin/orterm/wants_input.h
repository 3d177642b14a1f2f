// Tells whether a program on a pseudo-terminal is waiting for somebody to type.
//
// The kernel has no call for it, so /proc is asked: a descendant of the session's leader that is
// blocked in a read, poll or select of the terminal waits. Where another user's process (sudo, su)
// hides its system call, what it sleeps in is looked at instead; where that is hidden too, nothing
// is known.
#pragma once

#include <sys/types.h>

namespace dorn {

enum class InputWish { kNo, kYes, kUnknown };

/// Looks at `top` and its descendants; `terminal` is the slave's device number.
InputWish processes_want_input(pid_t top, dev_t terminal);

/// Whether the program took the terminal out of its line mode or switched its echo off, as editors,
/// pagers and password questions do. `master` is the pseudo-terminal's.
bool terminal_is_raw(int master);

}  // namespace dorn
