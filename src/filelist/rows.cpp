// Rows from the cache: their texts, their pictures, their rebuilding.
#include "config/config.h"
#include "dirmodel/dir_sort.h"
#include "dirmodel/entry_text.h"
#include "dirmodel/name_translation.h"
#include "filelist/columns.h"
#include "filelist/list_model.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "ui/dialogs.h"

#include <array>
#include <cstring>

namespace dorn {

Pane gPane;

namespace {

constexpr uint32_t kOwnerExecute = 0100;

void (*sNotify_f)() = nullptr;
bool (*sIsCut)(const char* directory, const char* name) = nullptr;
void (*sReloadCut)() = nullptr;

// An entry that could not be examined carries an error text like a link, but is none: it has no
// mode, while a dangling link keeps its own.
bool is_link(const DirEntry& entry) {
    const bool unreadable = (entry.flags & kEntryBroken) != 0 && entry.mode == 0;
    return (entry.flags & kEntryLink) != 0 && !unreadable;
}

RowImage plain_image(const DirEntry& entry) {
    const bool executable = (entry.mode & kOwnerExecute) != 0;
    if (is_link(entry)) {
        if ((entry.flags & kEntryBroken) != 0) return kImageBrokenLink;
        if (is_directory(entry)) return kImageLinkedFolder;
        return executable ? kImageLinkedExec : kImageLinkedFile;
    }
    if (is_directory(entry)) return kImageClosedFolder;
    return executable ? kImageExec : kImageFile;
}

RowImage row_image(const DirEntry& entry) {
    if (sIsCut != nullptr && sIsCut(gDir->path.c_str(), entry.name))
        return is_directory(entry) ? kImageDirCut : kImageFileCut;
    return plain_image(entry);
}

bool shows_parent() {
    return (gOptions & kOptionShowParent) != 0 && !gDir->path.empty() && gDir->path != "/";
}

// In their order on the screen entries lie far apart in memory: one is asked for this many rows
// before it is needed, both the part that tells the picture and the part that points at the row.
constexpr int32_t kPrefetchAhead = 16;

void prefetch_entry(int32_t index) {
    if (index >= gDir->count) return;
    __builtin_prefetch(&gDir->entries[index]->mode);
    __builtin_prefetch(&gDir->entries[index]->flags, 1);
}

void make_rows() {
    std::vector<ListRow>& rows = gPane.rows;
    rows.clear();
    const auto count = static_cast<std::size_t>(gDir->count);
    if (rows.capacity() > 2 * (count + 1)) rows.shrink_to_fit();
    rows.reserve(count + 1);  // entries point at their rows, so these must not move
    if (shows_parent()) rows.push_back({-1, kImageParent});
    for (int32_t i = 0; i < gDir->count; ++i) {
        prefetch_entry(i + kPrefetchAhead);
        rows.push_back({i, row_image(*gDir->entries[i])});
        gDir->entries[i]->row = &rows.back();
    }
}

std::string permissions_text(uint32_t mode) {
    std::string text(11, ' ');
    dir_get_permissions(mode, &text[0], 1);
    dir_get_permissions(mode, &text[4], 2);
    dir_get_permissions(mode, &text[8], 3);
    return text;
}

std::string date_text(const DirEntry& entry) {
    std::array<char, 100> text{};
    es_generate_time_string(text.data(), entry.mtime, 2);
    return text.data();
}

std::string id_text(int (*lookup)(uint32_t, char*), int32_t id) {
    std::array<char, kIdNameSize> name{};
    lookup(static_cast<uint32_t>(id), name.data());
    return name.data();
}

}  // namespace

DirCache& fl_cache() {
    if (gDir == nullptr) gDir = new DirCache;
    return *gDir;
}

int fl_row_of(int32_t index) {
    if (index == -1) return gPane.rows.empty() ? -1 : 0;
    if (index < 0 || index >= gDir->count) return -1;
    const ListRow* row = gDir->entries[index]->row;
    return row == nullptr ? -1 : static_cast<int>(row - gPane.rows.data());
}

std::string fl_column_text(int32_t index, int column) {
    if (index < 0 || index >= fl_cache().count) return index == -1 && column == 1 ? ".." : "";
    const DirEntry& entry = *gDir->entries[index];
    switch (column) {
        case 1:
            return fname_decode(entry.name, nullptr);
        case 2:
            return cvt2c(static_cast<uint64_t>(entry.size));
        case 3:
            return date_text(entry);
        case 4:
            return id_text(dir_get_username, entry.uid);
        case 5:
            return id_text(dir_get_groupname, entry.gid);
        case 6:
            return permissions_text(entry.mode);
        case 7:
            if ((entry.flags & kEntryLink) == 0 || entry.link_text == nullptr) return "";
            return fname_decode(entry.link_text, nullptr);
        default:
            return "";
    }
}

void fl_set_notify_cb(void (*notify)()) {
    sNotify_f = notify;
}

void fl_notify() {
    if (sNotify_f != nullptr) sNotify_f();
}

void fl_set_cut_cb(bool (*is_cut)(const char* directory, const char* name), void (*reload)()) {
    sIsCut = is_cut;
    sReloadCut = reload;
}

void fl_update_cut() {
    if (fl_is_reading()) return;  // the rows are rebuilt after it
    for (ListRow& row : gPane.rows) {
        if (row.index >= 0 && row.index < gDir->count)
            row.image = row_image(*gDir->entries[row.index]);
    }
    if (gPane.view != nullptr) gPane.view->viewport()->update();
}

void fl_update() {
    fl_cache();
    const int first_visible = gPane.view == nullptr ? 0 : gPane.view->first_visible_row();
    if (sReloadCut != nullptr) sReloadCut();
    wprintf(w_instance("status1"), "Displaying Directory");
    if (gPane.model != nullptr) {
        gPane.model->rebuild(make_rows);
        gPane.view->show_current_row(fl_row_of(gDir->current));
        if (first_visible != 0) gPane.view->set_first_visible_row(first_visible);
    } else {
        make_rows();
    }
    fl_notify();
}

}  // namespace dorn
