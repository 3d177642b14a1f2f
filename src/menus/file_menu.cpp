// The File menu's commands that start programs.
#include "assoc/engine/association.h"
#include "assoc/engine/command.h"
#include "config/config.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/navigation.h"
#include "menus/commands.h"
#include "ui/dialogs.h"

#include <cstring>

namespace dorn {

namespace {

constexpr const char* kDorn = "/usr/orrin/bin/dorn";
constexpr std::size_t kPathLimit = 1023;  // bytes

bool is_selected(int32_t index) {
    return (gDir->entries[index]->flags & kEntrySelected) != 0;
}

/// Runs each selected file's own command for the action, or `fallback` (null: none) without one.
void run_for_files(AssocAction action, const char* fallback) {
    for (int32_t i = 0; i < gDir->count; ++i) {
        const DirEntry& entry = *gDir->entries[i];
        if (!is_selected(i) || is_directory(entry)) continue;
        const char* command = _get_pat_cmd(entry.name, action);
        if (command == nullptr) command = fallback;
        if (command != nullptr) file_cmd(command, entry.name);
    }
}

int32_t first_selected() {
    int32_t index = 0;
    while (index < gDir->count && !is_selected(index))
        ++index;
    return index;
}

void say_printed() {
    Widget* status = w_instance("status1");
    if (gDir->n_selected >= 2) {
        wprintf(status, "%d items printed", gDir->n_selected);
        return;
    }
    const int32_t index = gDir->current >= 0 ? gDir->current : first_selected();
    if (index >= gDir->count) return;
    wprintf(status, "'%s' printed", fname_decode(gDir->entries[index]->name, nullptr));
}

}  // namespace

int fm_open() {
    fl_open_selection();
    return 0;
}

int fm_view() {
    run_for_files(AssocAction::View, nullptr);
    return 0;
}

int fm_edit() {
    run_for_files(AssocAction::Edit, gConfig->edit_cmd);
    return 0;
}

int fm_open_another() {
    if (gDir->n_selected != 1 || gDir->n_selected_dirs != 1) return 0;
    const std::string path = gDir->path + "/" + gDir->entries[first_selected()]->name;
    // A path cut short would name something else.
    if (path.size() <= kPathLimit) misc_spawn(0, {kDorn, path});
    return 0;
}

int fm_new_window() {
    misc_spawn(0, {kDorn});
    return 0;
}

int fm_open_orterm() {
    misc_spawn(0, {gConfig->term_cmd});
    return 0;
}

int fm_print() {
    char* command = gConfig->print_cmd;
    if (*command == '\0') std::strcpy(command, "lpr @");
    if (file_cmd(command, nullptr) != -1) say_printed();
    return 0;
}

int fm_print_directory() {
    return 0;
}

}  // namespace dorn
