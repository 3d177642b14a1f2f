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

/// Edit: put the selection on the clipboard. After a cut the list shows it as cut; a copy in place
/// of a cut list takes its marks away.
int em_copy();
int em_cut();
/// Starts a copy, or of a cut list a move, of what the clipboard holds into the shown directory,
/// one operation for each other directory it comes from. Tells what is no local file. While the
/// clipboard is being read, it is done once that is known.
int em_paste();
/// Deletes the selection, after a question where the settings say so. -1 when it can't be packed.
int em_delete();
/// 1 when the clipboard holds a list under the tag `type`, "files" or "mvfiles", else 0; null looks
/// for either. There is one clipboard, whatever the input group.
int em_check_clipboard_for_type(int input_group, const char* type);
/// To be called when another list is on the clipboard: does a Paste that waited for it.
void em_clipboard_changed();

/// Edit: change the selection, then give the list the focus.
int em_select_all();
int em_unselect_all();
int em_invert_selection();
/// Without a selection there is nothing to unselect (nor to cut, copy, delete or rename), without a
/// list on the clipboard nothing to paste.
void em_setup(MenuStates& states);
/// Puts the Copy To and Move To cascades into the menu.
void em_populate(QMenu* menu);

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
