// Keys typed into the list: search forward "/", search backward "?", a command ":" that
// is run in a terminal window which stays open after it. Typed text is echoed in the status line.
// Event-loop thread only.
#pragma once

#include "ui/key_event.h"

namespace dorn {

/// Interprets a key. 0: not used; -1: used, the command line is closed; positive: used, the text
/// changed.
int interp_key(const KeyEvent& key);

/// Shows state and text in "status1", or clears it when idle.
void interp_echo();

/// Forgets state and text (the list's timer does this on expiry).
void interp_reset();

/// Whether a state is set, that is, whether Backspace and Escape are the interpreter's.
bool interp_active();

}  // namespace dorn
