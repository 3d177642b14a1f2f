// Attributes as text.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dorn {

/// Writes one piece of the permission text, without a NUL. `part` says which: 0 is the type (1
/// byte), 1 the owner's, 2 the group's, 3 the others' (3 bytes each), 4 the sticky mark (1 byte).
/// Others write nothing.
void dir_get_permissions(uint32_t mode, char* out, int part);

/// A size in bytes as "%.1fMB", "%.1fKB" or "%ld bytes", in a static buffer that the next call
/// overwrites.
const char* ll2str(int64_t size);

/// A byte count in the integer style of totals ("1.512KB"). `out` has room for 32 bytes. Returns
/// the length.
int es_generate_byte_string(char* out, int64_t bytes);

/// A time (seconds since the epoch) as text in `out`, which has room for 100 bytes. Style 0: age;
/// 1: date, or time with a word for the day; 2: date and time. Every text begins with a blank.
/// Another style writes nothing. Returns the length of what `out` then holds.
int es_generate_time_string(char* out, int64_t time, int style);

/// Decimal digits with "," every three, in a static buffer that the next call overwrites.
const char* cvt2c(uint64_t value);

}  // namespace dorn
