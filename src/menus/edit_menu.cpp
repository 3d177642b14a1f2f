// The Edit menu's selection commands and its set-up, and Refresh of the File menu.
#include "destmenus/dest_menu.h"
#include "filelist/filelist.h"
#include "filelist/selection.h"
#include "fileops/engine/file_clipboard.h"
#include "menus/commands.h"
#include "ui/dialogs.h"

namespace dorn {

namespace {

int selection_changed() {
    status_bar_update();
    misc_give_focus(w_instance("filelist"));
    return 0;
}

}  // namespace

int fm_refresh() {
    return fl_refresh();
}

int em_select_all() {
    fl_refresh_if_asked();
    fl_select_all();
    return selection_changed();
}

int em_unselect_all() {
    fl_unselect_all();
    return selection_changed();
}

int em_invert_selection() {
    fl_invert_all();
    return selection_changed();
}

void em_populate(QMenu* menu) {
    mgen_work_insert(menu);
}

void em_setup(MenuStates& states) {
    if (em_check_clipboard_for_type(-1, nullptr) == 0 && !file_clipboard_is_being_read())
        states.disable("em_paste");
    if (gDir != nullptr && gDir->n_selected > 0) return;
    for (const char* name : {"em_cut", "em_copy", "em_delete", "em_rename", "em_unselect",
                             "em_unselect_all", "em_unselect_pattern"})
        states.disable(name);
}

}  // namespace dorn
