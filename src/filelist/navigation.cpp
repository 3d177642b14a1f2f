#include "filelist/navigation.h"

#include "dirmodel/dir_read.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "filelist/list_view.h"
#include "filelist/open_file.h"
#include "filelist/pane.h"
#include "filelist/selection.h"
#include "ui/background.h"
#include "ui/dialogs.h"

#include <deque>
#include <dirent.h>
#include <memory>
#include <unistd.h>

namespace dorn {

namespace {

constexpr std::size_t kHistoryDepth = 10;

using PathHistory = std::deque<std::string>;  // the most recent path first
PathHistory backward_history;
PathHistory forward_history;

void x_history_push(PathHistory& history, const std::string& path) {
    if (path.empty() || (!history.empty() && history.front() == path)) return;
    if (history.size() >= kHistoryDepth) history.pop_back();
    history.push_front(path);
}

std::string pop_head(PathHistory& history) {
    std::string path = std::move(history.front());
    history.pop_front();
    return path;
}

// A refused step has used up its entry all the same, which no rebuild of the rows tells.
void revisit(const std::string& path) {
    if (fl_setpath(path.c_str()) == -1) fl_notify();
}

enum class PathState { NotFound, NoDirectory, NoAccess, Fine };

PathState path_state_here(const std::string& path) {
    const int directory = fs_path_is_directory_here(path.c_str());
    if (directory < 0) return PathState::NotFound;
    if (directory == 0) return PathState::NoDirectory;
    DIR* opened = opendir(path.c_str());
    if (opened == nullptr) return PathState::NoAccess;
    // One that can be read but not entered would be shown while names mean the directory before.
    const bool can_enter = faccessat(dirfd(opened), ".", X_OK, 0) == 0;
    closedir(opened);
    return can_enter ? PathState::Fine : PathState::NoAccess;
}

// A path that does not answer in time counts as not found.
PathState path_state(const std::string& path) {
    auto state = std::make_shared<PathState>(PathState::NotFound);
    const bool answered = ui_bounded([path, state] { *state = path_state_here(path); });
    return answered ? *state : PathState::NotFound;
}

void report_path(PathState state, const std::string& path) {
    Widget* base = w_instance("base");
    const char* shown = fname_decode(path.c_str(), nullptr);
    if (state == PathState::NotFound)
        wreport(base, "Error", "Directory '%s', not found", shown);
    else if (state == PathState::NoDirectory)
        wreport(base, "Error", "Path '%s' not found", shown);
    else
        wreport(base, "Error", "Cannot access directory '%s'", shown);
}

bool is_selected(int32_t index) {
    return (gDir->entries[index]->flags & kEntrySelected) != 0;
}

}  // namespace

std::optional<std::string> x_check_path(const char* path) {
    if (path == nullptr) return std::nullopt;
    // The working directory is the shown one, so a relative path is relative to that.
    const bool relative = path[0] != '/' && path[0] != '\0';
    std::string full = relative ? es_construct_fullpath(fl_cache().path.c_str(), path) : path;
    full = es_strip_pathname(std::move(full));
    if (full == fl_cache().path) return std::nullopt;
    const PathState state = path_state(full);
    if (state == PathState::Fine) return full;
    report_path(state, full);
    return std::nullopt;
}

int fl_newpath(Widget*, const char* path) {
    const std::string before = fl_cache().path;
    const std::string wanted = path == nullptr ? "" : path;  // it may point into the cache
    if (fl_setpath(wanted.c_str()) == -1) return -1;
    forward_history.clear();
    x_history_push(backward_history, before);
    fl_notify();  // the rows told of themselves before this step was recorded
    return 0;
}

int _new_path(const char* path) {
    return fl_newpath(nullptr, path);
}

void fl_back() {
    if (backward_history.empty()) return;
    x_history_push(forward_history, gDir->path);
    revisit(pop_head(backward_history));
}

void fl_forward() {
    // The push comes first even when there is nowhere to go.
    x_history_push(backward_history, gDir->path);
    if (forward_history.empty()) return;
    revisit(pop_head(forward_history));
}

int fl_get_back_count() {
    return static_cast<int>(backward_history.size());
}

int fl_get_forward_count() {
    return static_cast<int>(forward_history.size());
}

void fl_up() {
    std::string parent = fl_cache().path;
    if (parent.size() <= 1) return;
    while (parent.size() >= 2 && parent.back() == '/')
        parent.pop_back();
    const std::size_t slash = parent.rfind('/');
    std::string child;
    if (slash == std::string::npos || slash == 0) {
        child = parent.substr(1);
        parent = "/";
    } else {
        child = parent.substr(slash + 1);
        parent.resize(slash);
    }
    if (fl_newpath(nullptr, parent.c_str()) == 0)
        fl_select_index(fl_goto_index(fl_find_name(child.c_str())));
}

void fl_down() {
    if (gDir->current == -1)
        fl_up();
    else if (gDir->current >= 0 && gDir->current < gDir->count)
        fl_newpath(nullptr, fl_get_fullpath(gDir->current).c_str());
}

int fl_open(int32_t index) {
    if (index == -1) {
        fl_up();
        return 0;
    }
    if (index < 0 || index >= fl_cache().count) return -1;
    if (is_directory(*gDir->entries[index]))
        fl_newpath(nullptr, fl_get_fullpath(index).c_str());
    else
        open_file(index);
    return 0;
}

void fl_open_selection() {
    if (fl_cache().n_selected == 0) {
        fl_open(gDir->current);
        return;
    }
    if (gDir->n_selected_dirs >= 2) return;
    int32_t directory = -2;
    for (int32_t i = 0; i < gDir->count; ++i) {
        if (!is_selected(i)) continue;
        if (is_directory(*gDir->entries[i]))
            directory = i;
        else
            fl_open(i);
    }
    if (directory >= 0) fl_open(directory);
}

std::string fl_get_fullpath(int32_t index) {
    std::string path = gDir->path;
    if (path.empty() || path.back() != '/') path += '/';
    if (index >= 0 && index < gDir->count) path += gDir->entries[index]->name;
    return path;
}

int32_t fl_goto(const char* name, int32_t start, uint32_t flags) {
    return fl_goto_index(x_find(name, start, flags, nullptr));
}

int32_t fl_goto_index(int32_t index) {
    return fl_place_current(index, true);
}

void fl_set_current(int32_t index) {
    if (gDir->current >= 0 && gDir->current < gDir->count)
        gDir->entries[gDir->current]->flags &= ~kEntryCurrent;
    if (index > 0 && index < gDir->count) gDir->entries[index]->flags |= kEntryCurrent;
    gDir->current = index;
}

int32_t fl_place_current(int32_t index, bool scroll) {
    if (index > fl_cache().count) index = gDir->count - 1;
    fl_unselect_all();
    if (index != gDir->current) {
        if (gDir->current >= 0 && gDir->current < gDir->count)
            gDir->entries[gDir->current]->flags &= ~kEntryCurrent;
        if (index >= gDir->count && index >= 0) return index;
        fl_set_current(index);
    }
    if (gPane.view == nullptr) return index;
    const int row = fl_row_of(index);
    gPane.view->show_current_row(row);
    if (scroll && row >= 0) gPane.view->scroll_to_row(row);
    return index;
}

}  // namespace dorn
