// What a directory's picture in the tree depends on.
#pragma once

#include <string>

namespace dorn {

enum class DirectoryKind {
    Branch,      // has a subdirectory
    Leaf,        // has none
    Unopenable,  // is there, and can't be opened as a directory
    Missing,     // does not exist
};

/// Finds out the kind of `path` (bytes as on disk), with the system calls made on the calling
/// thread: for threads that may hang. `flags` as fs_path_has_subdirectories takes them.
DirectoryKind directory_kind_here(const std::string& path, int flags);

}  // namespace dorn
