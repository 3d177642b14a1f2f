// Owner or group names for the length of one sort: each id is asked for once, however many there
// are, and two ids are compared by the places of their names.
#pragma once

#include "dirmodel/dir_sort.h"

#include <cstdint>
#include <vector>

namespace dorn {

/// A hash table from id to the place of its name: add every id, rank, then ask. Event-loop thread
/// only.
class SortNames {
  public:
    using Lookup = int (*)(uint32_t id, char buffer[kIdNameSize]);

    explicit SortNames(Lookup lookup);

    /// Makes the name of `id` known, asking for it when it is not.
    void add(uint32_t id);

    /// Gives the names their places in byte order; equal names share one.
    void rank();

    /// The place of an added id's name, from 0.
    int32_t place(uint32_t id) const;

  private:
    struct Slot {
        uint32_t id;
        bool used;
        char name[kIdNameSize];
        int32_t place;
    };

    std::size_t slot_of(uint32_t id) const;
    void grow();

    Lookup lookup_;
    std::vector<Slot> slots_;  // open addressing; the size is a power of two, at most half in use
    std::size_t count_ = 0;
};

}  // namespace dorn
