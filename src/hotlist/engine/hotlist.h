// The hotlist: the user's list of favourite directories, and its file "hotlist.001".
//
// The file is plain text, one path a line, in display order, no header and no escaping. Paths are
// bytes, as they are shown in the tree; what a line can't hold (a newline, more than 1024 bytes) is
// not taken into the list, so that the file always gives back what was written. Event-loop thread
// only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dorn {

struct HotlistTree {
    std::vector<std::string> entries;  // the top-level items, in display order
    void* context_item = nullptr;      // the tree item last pressed with the menu button, or null
};

/// The hotlist; lives for the whole run.
extern HotlistTree gTree;

inline constexpr std::size_t kHotlistLineSize = 1024;  // bytes of the longest path in the file

/// Whether a line of the file can hold `path`.
bool hotlist_can_keep(std::string_view path);

/// Appends `path`. 0, or -1 when it is in the list already or the file can't keep it.
int hotlist_append(HotlistTree* list, const char* path);

/// Takes `path` out. 0, or -1 when it isn't in the list.
int hotlist_erase(HotlistTree* list, const char* path);

/// 1 if `path` is in the list (exact bytes), else 0.
int tree_lookup(const char* path);

/// The paths in the text of a file, in order, each path once: a line longer than kHotlistLineSize
/// is more than one path, an empty line is an empty path, and a NUL ends the path it stands in.
std::vector<std::string> hotlist_parse(std::string_view text);

/// The text of a file that holds `paths`.
std::string hotlist_format(const std::vector<std::string>& paths);

/// The paths in the file; `ok` is false, and errno says why, when it can't be read or `directory`
/// is null.
std::vector<std::string> hotlist_read(const char* directory, const char* file_name, bool* ok);

/// Writes the paths, whole or not at all. 0, or -1 when the file can't be written or `directory` is
/// null.
int hotlist_write(const HotlistTree& list, const char* directory, const char* file_name);

}  // namespace dorn
