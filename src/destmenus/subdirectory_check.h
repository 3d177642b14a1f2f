// Which of a directory's subdirectories have subdirectories themselves, found out without waiting
// for a file system that doesn't answer.
#pragma once

#include "destmenus/dest_scan.h"

#include <functional>
#include <string>
#include <vector>

namespace dorn {

struct SubdirectoryCheck {
    std::string path;  // bytes; the directory that the names are in
    bool hide_dot;     // subdirectories that begin with "." don't count
    int limit_ms;      // after which one that does not answer is left as it is
};

/// Looks at each of `names` in order and tells `tell` the kinds of runs of them, on the calling
/// thread; `first` is the index of a run's first name. Returns soon after `stopped`, which other
/// threads call, says true.
void check_subdirectories(
    const SubdirectoryCheck& check, const std::vector<std::string>& names,
    const std::function<bool()>& stopped,
    const std::function<void(std::size_t first, const std::vector<DestKind>& kinds)>& tell);

/// The kind of one directory, with the system calls made on the calling thread: for threads that
/// may hang. `path` is relative to the open directory `parent`, or absolute.
DestKind dest_kind_here(int parent, const char* path, bool hide_dot);

}  // namespace dorn
