#include "hotlist/tree_drag.h"

#include "hotlist/hotlist_tree.h"
#include "hotlist/tree_item.h"

#include <cstdio>

namespace dorn {

namespace {

const QString kEntryType = QStringLiteral("application/x-dorn-hotlist");

void rewrite_list(const QTreeWidget* tree) {
    gTree.entries.clear();
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        gTree.entries.push_back(tree_item(tree->topLevelItem(i))->name());
    gTree.context_item = nullptr;
}

}  // namespace

QMimeData* tree_drag_data() {
    auto* data = new QMimeData;
    data->setData(kEntryType, QByteArrayLiteral("This is dorn hotlist entry"));
    return data;
}

bool tree_is_hotlist_drag(const QMimeData* data) {
    return data != nullptr && data->hasFormat(kEntryType);
}

bool tree_can_drop(const QTreeWidgetItem* dragged, const QTreeWidgetItem* target) {
    return dragged != nullptr && target != nullptr && dragged != target &&
           dragged->parent() == nullptr && target->parent() == nullptr;
}

void tree_drop(QTreeWidget* tree, QTreeWidgetItem* dragged, QTreeWidgetItem* target, bool after) {
    if (!tree_can_drop(dragged, target)) return;
    const bool expanded = dragged->isExpanded();
    dragged->setExpanded(false);  // its children are read anew in its other place
    tree->takeTopLevelItem(tree->indexOfTopLevelItem(dragged));
    const int place = tree->indexOfTopLevelItem(target) + (after ? 1 : 0);
    tree->insertTopLevelItem(place, dragged);
    dragged->setExpanded(expanded);
    rewrite_list(tree);
    tree->setCurrentItem(dragged);
    tree->scrollToItem(dragged);
    tree->clearSelection();
    tree_notify();
}

void tree_drag_over(const QTreeWidgetItem* item, int64_t* last_id) {
    const int64_t id = tree_item_id(item);
    if (id == *last_id) return;
    *last_id = id;
    if (item == nullptr || item->parent() == nullptr) return;
    std::fputc('\a', stdout);
    std::fflush(stdout);
}

}  // namespace dorn
