// A recursive walk over a directory tree.
#pragma once

#include <sys/stat.h>

namespace dorn {

/// Called for each entry with its path and unfollowed status (null when it can't be read). A
/// result other than 0 ends the walk.
using WalkCallback = int (*)(const char* path, const struct stat* status, void* data);

/// Calls `callback` for everything below `path`, a directory before what it holds. Links are not
/// followed, a directory that can't be opened is passed over, and nothing recurses with the depth
/// of the tree. 0 when the walk went to its end, the callback's result when that ended it, -1 when
/// `path` can't be opened.
int misc_walktree(const char* path, WalkCallback callback, void* data);

}  // namespace dorn
