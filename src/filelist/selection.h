// The selection of the file list: the entries' selected flags, the counts that go with them, and
// the search for entries by name. No operation is worse than linear in the entries; the status line
// and the list are brought up to date once an operation. Event-loop thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace dorn {

/// Selects, unselects or inverts one entry. Out of range: nothing. Return the index.
int32_t fl_select_index(int32_t index);
int32_t fl_unselect_index(int32_t index);
int32_t fl_invert_index(int32_t index);

void fl_invert_all();
void fl_select_all();
void fl_unselect_all();

/// Sets what is called after each operation that changed the selection. A rebuild of the rows is
/// told by fl_set_notify_cb instead.
void fl_set_selected_cb(void (*changed)());

/// Selects or unselects every entry that x_find finds for `pattern`. Return the last one's index,
/// -2 when there was none.
int32_t fl_select(const char* pattern, uint32_t flags);
int32_t fl_unselect(const char* pattern, uint32_t flags);

// Flags of x_find.
inline constexpr uint32_t kFindExact = 1;
inline constexpr uint32_t kFindSkipDirectories = 2;
inline constexpr uint32_t kFindBackward = 4;
inline constexpr uint32_t kFindPrefix = 8;

using FindCallback = int32_t (*)(int32_t index);

/// The first entry whose name equals or begins with the text, as the flags say, or matches it as a
/// pattern; with a callback that is called for each one, the last. -2 when there is none or the
/// text is empty, -1 for "..". The walk begins at entry 0 whatever `start` says.
int32_t x_find(const char* text, int32_t start, uint32_t flags, FindCallback callback);

/// Selects exactly the entries of these names, makes the first of them in the list's order the
/// current one and scrolls to it. When none of them is listed nothing changes. Returns their
/// number.
int32_t fl_select_names(const std::vector<std::string>& names);

/// The entry of exactly that name, which is never read as a pattern; -2 when there is none.
int32_t fl_find_name(const char* name);

}  // namespace dorn
