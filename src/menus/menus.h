// The main window's menus, context menus, toolbars and the Quick Reference, all built from the
// tables of menu_tables.h. Event-loop thread only.
#pragma once

namespace dorn {

/// Builds the menu bar, installs the accelerators and fills the toolbars.
void menus_setup();

/// Opens the file list's, the hotlist's or the toolbar area's (View) menu at a global position.
void menus_open_list_menu(int x, int y);
void menus_open_hotlist_menu(int x, int y);
void menus_open_view_menu(int x, int y);

}  // namespace dorn
