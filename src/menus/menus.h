// The main window's menus, context menus, toolbar buttons and accelerators, all built from the
// tables of menu_tables.h. Event-loop thread only.
//
// A table row names the command it runs. A command becomes part of every menu, of the accelerators
// and of the Quick Reference by being registered under that name; rows without a registered command
// are left out, and so are submenus and separators that have nothing to hold or to separate.
//
//     menus_register("fm_exit", fm_exit);
//     menus_setup();
#pragma once

class QMenu;

namespace dorn {

using MenuCommand = int (*)();

/// Registers the command of that name (a string that lives for the whole run); a second time
/// replaces it. May be called before or after menus_setup.
void menus_register(const char* name, MenuCommand command);

/// The same for a toggle; `is_on` gives its check mark whenever its menu opens.
void menus_register_toggle(const char* name, MenuCommand command, bool (*is_on)());

/// The same for a row that puts items of its own making into its menu whenever that opens.
void menus_register_generator(const char* name, void (*fill)(QMenu* menu));

/// Runs the command of that name, as its menu item, key or button does: nothing happens when it is
/// not registered, when its menu's set-up disables it, or while the main window is blocked. Returns
/// what the command returns, or -1.
int menus_run(const char* name);

/// Registers the commands of this folder, builds the menu bar, installs the accelerators and
/// connects the toolbar buttons. The main window's widgets must be known to w_instance.
void menus_setup();

/// Opens the file list's, the hotlist's or the toolbar area's (View) menu at a global position. A
/// menu that would be empty stays closed.
void menus_open_list_menu(int x, int y);
void menus_open_hotlist_menu(int x, int y);
void menus_open_view_menu(int x, int y);

}  // namespace dorn
