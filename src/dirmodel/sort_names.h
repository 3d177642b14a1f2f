// Owner or group names for the length of one sort: each id is asked for once, however many there
// are, and a comparison is a look into a table.
#pragma once

#include "dirmodel/dir_sort.h"

#include <cstdint>
#include <vector>

namespace dorn {

/// A hash table from id to name. Event-loop thread only.
class SortNames {
  public:
    using Lookup = int (*)(uint32_t id, char buffer[kIdNameSize]);

    explicit SortNames(Lookup lookup);

    /// Makes the name of `id` known, asking for it when it is not.
    void add(uint32_t id);

    /// The name of an id that was added.
    const char* find(uint32_t id) const;

  private:
    struct Slot {
        uint32_t id;
        bool used;
        char name[kIdNameSize];
    };

    std::size_t slot_of(uint32_t id) const;
    void grow();

    Lookup lookup_;
    std::vector<Slot> slots_;  // open addressing; the size is a power of two, at most half in use
    std::size_t count_ = 0;
};

}  // namespace dorn
