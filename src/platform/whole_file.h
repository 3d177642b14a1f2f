// Files kept per user are replaced whole or not at all.
//
// The new content goes into a temporary beside the file (beside its target, when the file is a
// symbolic link), every write, the flush to the disk and the close are checked, and the temporary
// is renamed over the file, whose mode it has taken. Where the folder takes no temporary the file
// is written in place. A failure leaves the file as it was and no temporary behind.
#pragma once

#include <string>
#include <string_view>

namespace dorn {

/// Replaces the file at `path` by `content`. 0, or -1 with errno set.
int write_whole_file(const std::string& path, std::string_view content);

/// Reads up to `limit` bytes of the file at `path` into `*content`. 0, or -1 with errno set and
/// `*content` empty when it can't be opened or read, or is no regular file.
int read_whole_file(const std::string& path, std::size_t limit, std::string* content);

/// `directory` and `name` joined with one "/" between them (none added when `directory` ends with
/// one).
std::string join_path(const std::string& directory, const std::string& name);

}  // namespace dorn
