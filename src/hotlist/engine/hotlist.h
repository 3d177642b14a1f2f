// The hotlist: the user's list of favourite directories, and its file "hotlist.001".
//
// The file is plain text, one path a line, in display order, no header and no escaping. Paths are
// bytes, as they are shown in the tree. Event-loop thread only.
#pragma once

#include <string>
#include <vector>

namespace dorn {

struct HotlistTree {
    std::vector<std::string> entries;  // the top-level items, in display order
    void* context_item = nullptr;      // the tree item last pressed with the menu button, or null
};

/// The hotlist; lives for the whole run.
extern HotlistTree gTree;

/// Appends `path`. 0, or -1 when it is in the list already.
int hotlist_append(HotlistTree* list, const char* path);

/// Takes `path` out. 0, or -1 when it isn't in the list.
int hotlist_erase(HotlistTree* list, const char* path);

/// 1 if `path` is in the list (exact bytes), else 0.
int tree_lookup(const char* path);

/// The lines of the file, each at most 1024 bytes (a longer line is more than one), in order; `ok`
/// is false when the file can't be read.
std::vector<std::string> hotlist_read(const char* directory, const char* file_name, bool* ok);

/// Writes the paths, whole or not at all. 0, or -1 when the file can't be written.
int hotlist_write(const HotlistTree& list, const char* directory, const char* file_name);

}  // namespace dorn
