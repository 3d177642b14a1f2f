// A clipboard without a window system, for the tests of engine code: the functions of
// ui/clipboard.h, and the other programs' side of it.
#pragma once

#include "ui/clipboard.h"

namespace dorn::headless {

/// Another program puts these bytes by type there. With `unread` the content stays unknown until
/// clipboard_read.
void clipboard_foreign(std::map<std::string, std::string> items, bool unread = false);
void clipboard_read();

/// The bytes that another program gets for the type, "" for none.
std::string clipboard_bytes(const std::string& type);

/// How often we have put something there or emptied it.
int clipboard_puts();

}  // namespace dorn::headless
