// The allocation list: every block of memory that one file operation owns, freed in one call.
// Blocks are malloc'ed. Not thread-safe: one operation, one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dorn {

struct PathList {
    int32_t count;     // blocks held
    int32_t capacity;  // slots of the array
    void** items;      // the blocks, owned
};

/// An empty list of 1024 slots; null when there is no memory.
PathList* alloc_start();

/// Puts `block`, malloc'ed, into the list, which owns it from here on, and returns it. Null, with
/// the block still the caller's, when either is null or the list can't grow.
void* alloc_add(PathList* list, void* block);

/// Resizes `block` to `size` bytes and returns where it is now; null, with the block as it was,
/// when there is no memory or an argument is null. A block that the list does not hold is added as
/// it is.
void* alloc_realloc(PathList* list, void* block, std::size_t size);

/// Frees every block, the array and the list. Null: nothing.
void alloc_free(PathList* list);

}  // namespace dorn
