// The directories of one side of an operation, open.
//
// Whatever the worker does to an entry it does relative to a descriptor of the directory that holds
// it. That is opened component by component from the operation's own directory downwards, and has
// to be the directory that was met before: one that was swapped for a link or for another directory
// is refused. A few descriptors are kept, so that neither a wide tree nor a deep one is walked
// again for each directory, and fifty operations at once stay below a thousand descriptors.
#pragma once

#include "fileops/engine/file_op.h"
#include "platform/fd.h"

#include <array>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace dorn {

struct FileId {
    dev_t device;
    ino_t inode;
    bool operator==(const FileId&) const = default;
};

/// openat, again when a signal interrupts it. None: errno is set.
Fd open_at(int directory, const char* name, int flags, mode_t mode = 0);

/// Opens the directory at `path`, links followed, for use with the *at calls only; the path may be
/// longer than the system takes in one piece. None: errno is set.
Fd open_directory(const std::string& path);

class TreeDirs {
  public:
    enum class Side {
        kSource,  // a group's directory has to be the one that the scan met
        kCopy,    // a group's directory is where its copies go, noted when it is first met
    };

    TreeDirs(FileOp* op, Side side) : op_(op), side_(side) {}

    /// Sets group 0's directory (none: errno tells why), and for a copy the name that the one entry
    /// of group 0 gets; empty: each keeps its own.
    void set_root(Fd root, std::string name = {});

    /// The descriptor of the group's directory, good for the *at calls until the next call here.
    /// -1 with errno set, ESTALE when it is not the directory that was met before.
    int of_group(int32_t group);

    /// Takes an open descriptor of the group's directory over.
    void keep(int32_t group, Fd fd);

    /// The name of an entry on this side.
    const char* name_of(int32_t group, int32_t index) const;

    /// Closes all descriptors but the one of the group asked for last and group 0's.
    void drop();

  private:
    struct Kept {
        int32_t group = -1;
        uint64_t used = 0;
        Fd fd;
    };

    Kept* find(int32_t group);
    /// The group itself, or the nearest above it that is kept, 0 when none is. All that are kept of
    /// those above stay longer than others.
    int32_t nearest_kept(int32_t group);
    Fd open_below(int parent, int32_t group);
    bool is_same(const struct stat& status, int32_t group) const;

    FileOp* op_;
    Side side_;
    Fd root_;
    int root_error_ = 0;
    std::string root_name_;
    std::array<Kept, 8> kept_;
    uint64_t clock_ = 0;
    int32_t last_ = 0;
};

}  // namespace dorn
