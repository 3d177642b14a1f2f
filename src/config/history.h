// Input histories: the last 20 distinct texts typed into a combo box, newest first, kept between
// runs in a text file, one entry a line. Event-loop thread only.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace dorn {

inline constexpr int kHistorySlots = 20;

/// A ring: the entries, newest to oldest, are at slots head, head + 1, ... modulo 20.
struct HistoryList {
    int32_t head = 0;  // slot of the newest entry, 0..19
    std::array<std::string, kHistorySlots> slots;
    int32_t count = 0;   // entries held, 0..20
    uint32_t flags = 0;  // kHistoryChanged
};
inline constexpr uint32_t kHistoryChanged = 0x1;  // not yet shown in the combo box

// One list a combo box. Null before init_read_cboxs and after init_destroy_cboxs; set by these
// alone.
extern std::unique_ptr<HistoryList> gPathList;     // "goto.001": path field
extern std::unique_ptr<HistoryList> gSpecList;     // "fspec.001": filter field
extern std::unique_ptr<HistoryList> gPatternList;  // "pattern.001": select by pattern
extern std::unique_ptr<HistoryList> gWithList;     // "with.001": Open With; never written
extern std::unique_ptr<HistoryList> gCopyList;     // "copy.001": destinations; never written

/// A list filled from the content of a history file, as cl_read does. A line counts up to a NUL
/// byte in it.
std::unique_ptr<HistoryList> cl_parse(std::string_view content);

/// A list filled from the file (at most 20 lines, of at most 1022 bytes with their newline; a
/// longer one becomes more than one entry) with the changed flag set. Never null; a missing file or
/// a null argument gives an empty list.
std::unique_ptr<HistoryList> cl_read(const char* directory, const char* file_name);

/// Writes the entries, newest first, one a line; whole or not at all. What a line can't hold (a
/// newline, 1022 bytes or more) is left out, for it would come back as something else. A file that
/// can't be written or a null argument is passed over in silence.
void cl_save(const HistoryList* list, const char* directory, const char* file_name);

/// Records a use of `text`: it becomes the newest entry; the oldest goes when 20 others are held.
void cl_add(HistoryList* list, const char* text);

/// The n-th most recent entry, counting from 1; null when there is none. Owned by the list, valid
/// until it changes.
const char* cl_get(const HistoryList* list, int n);

/// Frees the list.
void cl_destroy(std::unique_ptr<HistoryList> list);

/// The position just after "http://", "ftp://", "gopher://" or "file://" when `text` begins with
/// one of them; null otherwise, also for a null text.
const char* cl_is_web_address(const char* text);

/// The most recent entry that begins with `text`, both compared without a web prefix, itself
/// returned without its prefix; null when there is none. Owned by the list.
const char* cl_find_pattern(const HistoryList* list, const char* text);

/// Reads, writes and frees the five lists (writes the first three). A null directory reads and
/// writes nothing. An empty filter history gets "*".
void init_read_cboxs(const char* directory);
void init_save_cboxs(const char* directory);
void init_destroy_cboxs();

}  // namespace dorn
