// Filling an item with the subdirectories on the disk, and emptying it.
#pragma once

#include <QTreeWidget>

namespace dorn {

/// Fills the item's children from the file system, the event loop being served and "base" blocked
/// meanwhile. An item that can't be opened stays without children. Returns 0.
int x_tree_expand(QTreeWidget* tree, QTreeWidgetItem* item);

/// What an item's opening by the user does: x_tree_expand as soon as the event loop is back, one
/// item after the other.
void tree_expand_later(QTreeWidget* tree, QTreeWidgetItem* item);

/// What an item's closing does: frees its children.
void tree_state_cb(QTreeWidget* tree, QTreeWidgetItem* item);

}  // namespace dorn
