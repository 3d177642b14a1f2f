// The order of the shown entries, and the owner and group names that two of the orders compare.
// Event-loop thread only.
#pragma once

#include "dirmodel/dir_entry.h"

#include <cstdint>

namespace dorn {

/// Compares two entries: negative, 0 or positive; some of them are not orderings (see below).
using DirCompare = int32_t (*)(const DirEntry* a, const DirEntry* b);

/// Sorts the shown entries with the C library's qsort: by `primary`, entries that it calls equal by
/// name; descending when `ascending` is 0; folders first in both directions when the configuration
/// says so. A null `primary` leaves the read order.
void dir_sort(DirCache* cache, DirCompare primary, int ascending);

/// Names of digits alone by value, every other pair by byte order.
int32_t dir_cmp_name(const DirEntry* a, const DirEntry* b);
/// 1 when a is smaller, else 0. Deliberately one-sided: the name decides every other pair.
int32_t dir_cmp_size(const DirEntry* a, const DirEntry* b);
/// Difference of the modification times; wraps at 32 bits.
int32_t dir_cmp_date(const DirEntry* a, const DirEntry* b);
/// strcmp of the owners' names.
int32_t dir_cmp_user(const DirEntry* a, const DirEntry* b);
/// strcmp of the groups' names.
int32_t dir_cmp_group(const DirEntry* a, const DirEntry* b);
/// Difference of the modes, file type included.
int32_t dir_cmp_permissions(const DirEntry* a, const DirEntry* b);
/// strcmp of the link texts; 0 unless both have one.
int32_t dir_cmp_link(const DirEntry* a, const DirEntry* b);
/// -1 when only a is a directory, 1 when only b is, else 0.
int32_t dir_cmp_dir(const DirEntry* a, const DirEntry* b);

inline constexpr int kIdNameSize = 16;

/// Writes the name of a user id (at most 15 bytes and a NUL), or the id in decimal when it has
/// none. Returns the length of the decimal text, the length of a name found in the cache of 256,
/// and 0 for a name that the system was asked for.
int dir_get_username(uint32_t uid, char buffer[kIdNameSize]);
/// The same for a group id.
int dir_get_groupname(uint32_t gid, char buffer[kIdNameSize]);

/// How often the system has been asked for a user's or group's name; for tests and benchmarks.
uint64_t dir_name_lookups();

}  // namespace dorn
