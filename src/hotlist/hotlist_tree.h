// The hotlist pane: the tree whose top-level items are the hotlist. See engine/hotlist.h for the
// list itself. Event-loop thread only.
//
//     tree_setup();
//     tree_load(config_directory, "hotlist.001");
//
// Nothing here makes a file-system call that can hang: what an item's picture depends on is asked
// on spare threads, and a directory is expanded by a stream that does not wait.
#pragma once

#include "hotlist/engine/hotlist.h"
#include "ui/widget.h"

#include <string>

class QTreeWidget;
class QTreeWidgetItem;

namespace dorn {

/// Gives the widget "tree" its pictures, font, keys and mouse.
void tree_setup();

/// Adds each line of the file; a file that can't be read gives "/" alone.
void tree_load(const char* directory, const char* file_name);

/// Writes the list. 0, or -1 when the file can't be written. A file that was there and could not be
/// read is left alone while the list is still the "/" that stands for it.
int tree_save(const char* directory, const char* file_name);

/// Adds `path` as the last top-level item. 0, or -1 when it is there already or can't be kept in
/// the file (then the user has been told).
int tree_add(HotlistTree* list, const char* path);
/// Takes `path` out of the list and the tree. An absent path changes nothing.
void tree_remove(HotlistTree* list, const char* path);

/// Adds the current directory; removes the context item if it is a top-level one. Return 0.
int tree_add_cb();
int tree_delete_cb();

/// To be called when names are translated otherwise than before: labels and pictures follow, and
/// what is expanded is read anew.
void tree_translation_changed();

/// Shows the item's directory in the file list, unless it is the one shown.
void tree_selection_cb(QTreeWidget* tree, QTreeWidgetItem* item);

/// Makes an expansion under way end soon (the program is closing).
void tree_expand_stop();

/// Called after the list changed by the user's hand; null at the start.
void tree_set_notify_cb(void (*notify)());
void tree_notify();

/// Called to open the tree's context menu at a global position; null at the start.
void tree_set_menu_cb(void (*open_menu)(int x, int y));
/// Makes `item` (null: none) the context item and opens the context menu.
void tree_open_menu(QTreeWidgetItem* item, int x, int y);

/// The full path of an item as shown (see fname_encode for the way to the disk).
std::string x_get_fullpath(const QTreeWidgetItem* item);

}  // namespace dorn
