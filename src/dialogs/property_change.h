// A change of names, owners and modes, entry by entry: what the Properties dialog does to the disk.
// Nothing here knows the screen.
//
//     auto work = std::make_shared<PropertyWork>();
//     work->targets = ...; work->change = ...;
//     work->run();                // on a spare thread; until the end or the first error
//     if (work->error != PropertyError::None) ...;     // of targets[done - 1]
//     work->run();                // goes on with the next one
#pragma once

#include "dialogs/shown_directory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace dorn {

/// An entry as it was when the dialog opened.
struct PropertyTarget {
    std::string name;  // bytes
    int32_t uid;
    int32_t gid;
    uint32_t mode;
};

inline constexpr uint32_t kModeToggles = 06777;  // the bits that the dialog sets and clears

struct PropertyChange {
    std::string name;   // bytes on disk; empty: keep it
    std::string owner;  // a user's name or id; empty: keep it
    std::string group;
    uint32_t mode_bits = 0;  // of kModeToggles
};

/// The step that failed.
enum class PropertyError { None, NameExists, Rename, Owner, Group, Ownership, Mode };

struct PropertyWork {
    ShownDirectory directory;
    std::vector<PropertyTarget> targets;
    PropertyChange change;

    std::atomic<std::size_t> done{0};                      // targets dealt with, failed or not
    std::atomic<PropertyError> step{PropertyError::None};  // what is being tried
    std::atomic<bool> stop{false};                         // set to end after the step under way
    std::atomic<bool> renamed{false};                      // a target has the new name
    PropertyError error = PropertyError::None;             // how the last run ended

    /// Goes on with the targets until the end, a `stop` or a failure. Blocks as the file system
    /// does. Any thread, one at a time.
    void run();

    bool at_end() const {
        return done >= targets.size();
    }
};

/// Changes one entry: name, owner and group, mode, in this order, each only where it differs. The
/// first failure ends it and leaves the earlier steps in place. An existing entry is never written
/// over. The sticky bit is never kept.
PropertyError x_prop_done_one(PropertyWork& work, const PropertyTarget& target);

}  // namespace dorn
