// The records of the directory model: one entry, and the cache of the shown directory.
#pragma once

#include "platform/file_status.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dorn {

struct ListRow;  // a row of the file list; filelist/ owns it

// Bits of DirEntry::flags.
inline constexpr uint32_t kEntryCurrent = 0x1;  // the current entry (never set on entry 0)
inline constexpr uint32_t kEntrySelected = 0x2;
inline constexpr uint32_t kEntryLink = 0x4;     // link_text holds text to show
inline constexpr uint32_t kEntryBroken = 0x10;  // the attributes could not be read

inline constexpr std::size_t kNameSize = 256;
inline constexpr std::size_t kLinkSize = 1024;  // bytes of the longest target kept

/// One directory entry. For a symbolic link whose target can be reached the status is the target's.
struct DirEntry : FileStatus {
    char name[kNameSize];  // bytes as on disk, NUL-terminated
    uint32_t flags;
    uint32_t extra;  // not used by the reader
    /// What the link column shows when flags has kEntryLink: a link's target, or an error text.
    /// Heap memory of `link_room` bytes, kept with the record across reads; null before its first
    /// use.
    char* link_text;
    uint32_t link_room;  // bytes allocated, terminator included; at most kLinkSize + 1
    ListRow* row;        // the entry's row, valid until the rows are rebuilt; not owned
};
static_assert(sizeof(DirEntry) <= 360, "a million entries are to fit in memory beside their rows");

/// Puts at most kLinkSize bytes of `text` into the record's link_text and sets kEntryLink;
/// link_text may stay null when there is no memory.
void entry_set_link(DirEntry* entry, std::string_view text);

/// Where DirEntry records come from: zeroed pages of the system, a few at first; they live as long
/// as this. The process ends with status 1 when there is no memory.
class EntrySlabs {
  public:
    EntrySlabs() = default;
    ~EntrySlabs();
    EntrySlabs(const EntrySlabs&) = delete;
    EntrySlabs& operator=(const EntrySlabs&) = delete;

    /// A zeroed record.
    DirEntry* take();

    /// Takes back the record that was given out last; it is given out again, zeroed.
    void put_back(DirEntry* last);

  private:
    struct Slab {
        DirEntry* records;
        std::size_t size;  // records
    };
    std::vector<Slab> slabs_;
    std::size_t used_ = 0;  // records given out of the last slab
};

/// The shown directory. Slots 0 .. count-1 of `entries` are shown, in display order; the next
/// `spare` hold records kept for reuse; the rest are null. count + spare <= capacity.
struct DirCache {
    DirEntry** entries = nullptr;  // malloc'ed array of `capacity` slots
    std::string path;        // the directory, bytes; empty while none is set; filelist/ sets it
    std::string filespec;    // the filename filter
    int64_t total_size = 0;  // bytes, over the shown entries
    int32_t count = 0;
    int32_t n_dirs = 0;
    int32_t n_selected = 0;
    int32_t n_selected_dirs = 0;
    int32_t capacity = 0;
    int32_t current = -1;  // -1: the ".." row; -2: none
    int32_t spare = 0;
    int32_t read_error = 0;  // errno of the last dir_read that failed or broke off, else 0
    EntrySlabs slabs;

    DirCache() = default;
    ~DirCache();
    DirCache(const DirCache&) = delete;
    DirCache& operator=(const DirCache&) = delete;
};

/// The shown directory; made by filelist/, lives for the whole run.
extern DirCache* gDir;

}  // namespace dorn
