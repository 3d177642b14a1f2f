// The title of the window.
#pragma once

#include <string>
#include <vector>

namespace dorn {

/// The words of the command, or the line that it gives to a shell. Valid UTF-8 without control
/// characters (a "?" stands for each, and for each byte above 0x7F of a text that is not valid), at
/// most 200 bytes, not beginning with "-".
std::string window_title(const std::vector<std::string>& command);

}  // namespace dorn
