#include "filelist/selection.h"

#include "dirmodel/name_match.h"
#include "filelist/list_accessible.h"
#include "filelist/list_view.h"
#include "filelist/navigation.h"
#include "filelist/pane.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_set>

namespace dorn {

namespace {

int sBatchDepth = 0;
bool sBatchChanged = false;
void (*sSelected_f)() = nullptr;

void selection_changed() {
    if (sBatchDepth > 0) {
        sBatchChanged = true;
        return;
    }
    status_bar_update();
    if (sSelected_f != nullptr) sSelected_f();
    if (gPane.view != nullptr) gPane.view->viewport()->update();
    list_accessible_selection_changed(gPane.view);
}

bool in_range(int32_t index) {
    return index >= 0 && index < fl_cache().count;
}

bool is_selected(int32_t index) {
    return (gDir->entries[index]->flags & kEntrySelected) != 0;
}

void mark(int32_t index, bool selected) {
    DirEntry& entry = *gDir->entries[index];
    const int32_t step = selected ? 1 : -1;
    entry.flags = selected ? entry.flags | kEntrySelected : entry.flags & ~kEntrySelected;
    gDir->n_selected += step;
    if (is_directory(entry)) gDir->n_selected_dirs += step;
}

void unmark_all() {
    // An unselected list is left alone: this is called for each key of a search.
    if (fl_cache().n_selected > 0) {
        for (int32_t i = 0; i < gDir->count; ++i)
            gDir->entries[i]->flags &= ~kEntrySelected;
    }
    gDir->n_selected = 0;
    gDir->n_selected_dirs = 0;
}

bool entry_matches(const char* name, const char* text, std::size_t length, uint32_t flags) {
    if ((flags & kFindExact) != 0 && std::strcmp(name, text) == 0) return true;
    if ((flags & kFindPrefix) != 0 && std::strncmp(name, text, length) == 0) return true;
    return es_strcmp(name, text) == 0;
}

}  // namespace

SelectionBatch::SelectionBatch() {
    ++sBatchDepth;
}

SelectionBatch::~SelectionBatch() {
    if (--sBatchDepth > 0 || !sBatchChanged) return;
    sBatchChanged = false;
    selection_changed();
}

int32_t fl_select_index(int32_t index) {
    if (!in_range(index) || is_selected(index)) return index;
    mark(index, true);
    selection_changed();
    return index;
}

int32_t fl_unselect_index(int32_t index) {
    if (!in_range(index) || !is_selected(index)) return index;
    mark(index, false);
    selection_changed();
    return index;
}

int32_t fl_invert_index(int32_t index) {
    if (!in_range(index)) return index;
    return is_selected(index) ? fl_unselect_index(index) : fl_select_index(index);
}

void fl_set_selected_cb(void (*changed)()) {
    sSelected_f = changed;
}

void fl_invert_all() {
    const SelectionBatch batch;
    for (int32_t i = 0; i < fl_cache().count; ++i)
        fl_invert_index(i);
}

void fl_select_all() {
    for (int32_t i = 0; i < fl_cache().count; ++i)
        gDir->entries[i]->flags |= kEntrySelected;
    gDir->n_selected = gDir->count;
    gDir->n_selected_dirs = gDir->n_dirs;
    selection_changed();
}

void fl_unselect_all() {
    unmark_all();
    selection_changed();
}

int32_t fl_select(const char* pattern, uint32_t flags) {
    const SelectionBatch batch;
    return x_find(pattern, 0, flags, fl_select_index);
}

int32_t fl_unselect(const char* pattern, uint32_t flags) {
    const SelectionBatch batch;
    return x_find(pattern, 0, flags, fl_unselect_index);
}

void fl_select_rows(int first, int last, bool keep) {
    const SelectionBatch batch;
    if (!keep) fl_unselect_all();
    const int rows = static_cast<int>(gPane.rows.size());
    const int end = std::min(std::max(first, last), rows - 1);
    for (int row = std::max(std::min(first, last), 0); row <= end; ++row)
        fl_select_index(gPane.rows[static_cast<std::size_t>(row)].index);
}

int32_t x_find(const char* text, int32_t, uint32_t flags, FindCallback callback) {
    if (text == nullptr || *text == '\0') return -2;
    if (std::strcmp(text, "..") == 0) return -1;
    const std::size_t length = std::strlen(text);
    const int32_t step = (flags & kFindBackward) != 0 ? -1 : 1;
    int32_t found = -2;
    for (int32_t i = 0; in_range(i); i += step) {
        const DirEntry& entry = *gDir->entries[i];
        if ((flags & kFindSkipDirectories) != 0 && is_directory(entry)) continue;
        if (!entry_matches(entry.name, text, length, flags)) continue;
        found = i;
        if (callback == nullptr) return found;
        callback(i);
    }
    return found;
}

int32_t fl_find_name(const char* name) {
    for (int32_t i = 0; in_range(i); ++i) {
        if (std::strcmp(gDir->entries[i]->name, name) == 0) return i;
    }
    return -2;
}

int32_t fl_select_names(const std::vector<std::string>& names) {
    const std::unordered_set<std::string_view> wanted(names.begin(), names.end());
    std::vector<int32_t> found;
    for (int32_t i = 0; in_range(i); ++i) {
        if (wanted.contains(gDir->entries[i]->name)) found.push_back(i);
    }
    if (found.empty()) return 0;
    const SelectionBatch batch;
    fl_goto_index(found.front());
    for (const int32_t index : found)
        fl_select_index(index);
    return static_cast<int32_t>(found.size());
}

}  // namespace dorn
