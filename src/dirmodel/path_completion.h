// Completing a directory's name in a path that is being typed. Event-loop thread only.
#pragma once

#include <optional>
#include <string>

namespace dorn {

/// Completes an absolute path of bytes to a directory: the path with a "/" at its end when one
/// directory matches, the common beginning when several do; nothing when none does, when the result
/// would have 1280 bytes or more, or when the file system does not answer in time.
std::optional<std::string> find_matching_dir(const char* text);

}  // namespace dorn
