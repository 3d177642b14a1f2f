// Reordering the hotlist by dragging its entries within the tree.
#pragma once

#include <QMimeData>
#include <QTreeWidget>

namespace dorn {

/// What travels with a dragged hotlist entry; the caller owns it. Which entry it is, the tree
/// knows.
QMimeData* tree_drag_data();
bool tree_is_hotlist_drag(const QMimeData* data);

/// Whether dropping the top-level item `dragged` on `target` changes anything: both are top-level
/// items, and not the same one.
bool tree_can_drop(const QTreeWidgetItem* dragged, const QTreeWidgetItem* target);

/// Moves `dragged` before or after `target`, when tree_can_drop says so, and rewrites gTree in the
/// order of the tree.
void tree_drop(QTreeWidget* tree, QTreeWidgetItem* dragged, QTreeWidgetItem* target, bool after);

/// Rings the terminal's bell when a drag has entered another item than `*last_id` and that is not a
/// top-level one; keeps the item's id in `*last_id`.
void tree_drag_over(const QTreeWidgetItem* item, int64_t* last_id);

}  // namespace dorn
