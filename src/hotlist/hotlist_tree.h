// The hotlist pane: the tree whose top-level items are the hotlist. See engine/hotlist.h for the
// list itself. Event-loop thread only.
//
//     tree_setup();
//     tree_load(config_directory, "hotlist.001");
#pragma once

#include <string>

#include "hotlist/engine/hotlist.h"
#include "ui/widget.h"

class QTreeWidgetItem;

namespace dorn {

/// Gives the widget "tree" its pictures, font, keys and mouse.
void tree_setup();

/// Adds each line of the file; a file that can't be read gives "/" alone.
void tree_load(const char* directory, const char* file_name);
/// Writes the list. 0, or -1 when the file can't be written.
int tree_save(const char* directory, const char* file_name);

/// Adds `path` as the last top-level item. 0, or -1 when it is there already.
int tree_add(HotlistTree* list, const char* path);
/// Takes `path` out of the list and the tree. An absent path changes nothing.
void tree_remove(HotlistTree* list, const char* path);

/// Adds the current directory; removes the context item if it is a top-level one. Return 0.
int tree_add_cb();
int tree_delete_cb();

/// Called after the list changed by the user's hand; null at the start.
void tree_set_notify_cb(void (*notify)());
/// Called to open the tree's context menu at a global position; null at the start.
void tree_set_menu_cb(void (*open_menu)(int x, int y));

/// The full path of an item as shown (see fname_encode for the way to the disk).
std::string x_get_fullpath(const QTreeWidgetItem* item);

}  // namespace dorn
