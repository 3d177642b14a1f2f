// Reading a directory into the cache, and probes of one path.
//
// dir_read runs on the event-loop thread and serves the event loop while it waits and works; it
// changes the process's working directory to the one it reads.
#pragma once

#include "dirmodel/dir_entry.h"
#include "dirmodel/dir_sort.h"
#include "platform/dirstream.h"
#include "ui/timer.h"

#include <cstdint>

namespace dorn {

/// Fills `cache` from its path and sorts it (see dir_sort). 0, or -1 when the directory can't be
/// entered or opened, with the reason in cache->read_error and count 0. A directory that fails
/// later keeps the entries read so far: the result is 0, with the reason in cache->read_error.
/// While one read runs another one is refused (-1, nothing changed).
int dir_read(DirCache* cache, DirCompare sort_a, int sort_b);

/// Makes a dir_read under way end soon with what it has, and refuses those that come later, as
/// while one runs (the program is closing). With `stop` false reads run again.
void dir_read_stop(bool stop = true);

/// How long one entry's status may take, in milliseconds; tests shorten it. Initially 10000.
extern int gStatusLimitMs;

/// Copies the entry's own (unfollowed) status, when `dirent` carries it, into `entry`. 0 or -1.
int lstat_optimize(const RawDirEntry* dirent, FileStatus* entry);

/// Copies the followed status, when `dirent` carries it, else an unfollowed one that is not of a
/// symbolic link. 0 or -1.
int stat_optimize(const RawDirEntry* dirent, FileStatus* entry);

/// -1 when `path` can't be stat'ed (links followed) or does not answer in time, 0 when it is no
/// directory, else its link count, 2 when that is reported as 0.
int fs_path_is_directory(const char* path);

/// The same, with the system call made on the calling thread: for threads that may hang.
int fs_path_is_directory_here(const char* path);

inline constexpr int kCountDotDirectories = 0x2;

/// Positive when dir/name (as shown to the user; `dir` may be null) has a subdirectory, 0 when it
/// has none, -1 when it can't be opened or does not answer in time, -2 when its path can't be
/// translated to the file system's encoding. kCountDotDirectories counts dot names, too.
int fs_path_has_subdirectories(const char* dir, const char* name, int flags);

/// The same for a path of bytes as on disk, with the system calls made on the calling thread: for
/// threads that may hang. Never -2.
int fs_has_subdirectories_here(const char* path, int flags);

/// Timer callback: shows "%d read" with the count of the cache (`data`) in the field "status2".
void x_print_progress(Timer* timer, void* data);

}  // namespace dorn
