// The commands behind the menu items, by menu, and the set-up functions that decide which of a
// menu's items are enabled when it opens. Commands return 0. Event-loop thread only.
#pragma once

#include "menus/menu_tables.h"

class QMenu;

namespace dorn {

/// File: opens the selection as Enter does. View and Edit run the first matching association's
/// command for each selected file: a file without a view command is left out, one without an edit
/// command gets the configured editor.
int fm_open();
int fm_view();
int fm_edit();
/// Opens another window of the program: on the selected directory when nothing else is selected, or
/// on the shown one.
int fm_open_another();
int fm_new_window();
/// Starts the configured terminal.
int fm_open_orterm();
/// Runs the configured print command for the selection and says so in the status line.
int fm_print();
/// Does nothing.
int fm_print_directory();
/// Re-reads the shown directory.
int fm_refresh();

/// Edit: change the selection, then give the list the focus.
int em_select_all();
int em_unselect_all();
int em_invert_selection();
/// Without a selection there is nothing to unselect (nor to cut, copy, delete or rename).
void em_setup(MenuStates& states);

/// Go: back, forward, to the parent, to $HOME (nothing when that is unset).
int gm_back();
int gm_forward();
int gm_up();
int gm_home();
/// Disables what leads nowhere.
void gm_setup(MenuStates& states);

/// Bookmarks: put the shown directory, in its display form, on the hotlist; take it, as it is on
/// disk, off. The two differ only for a directory whose name is translated.
int hm_add();
int hm_remove();
/// Of Add and Remove only the one that has something to do is enabled.
void hm_setup(MenuStates& states);
/// One item a hotlist entry, behind a separator; choosing it shows that directory. Nothing is asked
/// of the file system.
void hm_populate(QMenu* menu);

/// Help: opens the window of commands and keys, or brings it to the front.
int help_quickref();

}  // namespace dorn
