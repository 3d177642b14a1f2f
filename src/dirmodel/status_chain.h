// The chain of extra records behind a delivered entry's name, and an entry's attributes from it.
#pragma once

#include "dirmodel/dir_entry.h"
#include "platform/dirstream.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace dorn {

/// The name of a delivered entry.
inline std::string_view raw_name(const RawDirEntry& raw) {
    return {reinterpret_cast<const char*>(&raw) + kRawNameOffset, raw.namelen};
}

/// The data of the first record of that type; nothing when there is none within raw.reclen.
std::optional<std::string_view> find_extra(const RawDirEntry& raw, uint16_t type);

/// Fills the entry's status, link text and flags from what `raw` carries. What it neither carries
/// nor tells as failed is asked of the system, each call for at most gStatusLimitMs, relative to
/// the open directory `directory`.
void entry_fill(DirEntry* entry, const RawDirEntry& raw, int directory);

}  // namespace dorn
