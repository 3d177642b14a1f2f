// The guard against a name that a directory delivers twice: a hash set of the entries' names that
// keeps no name itself.
#pragma once

#include "dirmodel/dir_entry.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace dorn {

class NameSet {
  public:
    NameSet() : slots_(256) {}

    /// Notes that entries[index] is to have that name. False, with nothing noted, when one of the
    /// entries noted before has it.
    bool add(std::string_view name, int32_t index, DirEntry* const* entries);

  private:
    struct Slot {
        int32_t place;  // index + 1; 0: empty
        uint32_t hash;
    };

    void grow();

    std::vector<Slot> slots_;  // open addressing; the size is a power of two, at most half in use
    std::size_t count_ = 0;
};

}  // namespace dorn
