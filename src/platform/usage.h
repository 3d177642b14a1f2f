// The program's usage text and its window options.
#pragma once

#include <optional>
#include <string>

namespace dorn {

/// The text that --help prints, "%C" replaced by `program`.
std::string usage_text(const std::string& program);

struct WindowOptions {
    std::string server;  // -s: the display to use; empty: the environment's
    std::optional<int> x, y, height, width;
    enum class State { Normal, Iconified, Maximized } state = State::Normal;
    bool help = false;  // --help or an unknown option was given
};

/// Reads the window options (option string "s:x:y:h:w:S:", "--help" beside it) from a copy of
/// `argv`, which stays as it is. They may stand before and behind the directory, up to a "--". An
/// unknown option, one without its value, a position that is no number, a dimension that is no
/// positive number or another state than i, m or n sets `help` and names the fault in `*error`; an
/// empty `*error` with `help` means that help was asked for.
WindowOptions usage_parse(int argc, const char* const* argv, std::string* error);

}  // namespace dorn
