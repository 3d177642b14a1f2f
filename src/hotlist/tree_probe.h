// Finding out, beside the event loop, which picture the items deserve.
#pragma once

#include "hotlist/tree_item.h"

#include <QTreeWidget>

#include <vector>

namespace dorn {

/// Asks for the kinds of `items`, which belong to `tree`, on spare threads; each item takes its
/// picture when its answer comes, if it is still there. A child that turns out not to exist is
/// taken out of a sorted tree. Questions are dropped once `wanted`, unless null, is false.
void tree_probe(QTreeWidget* tree, const std::vector<TreeItem*>& items,
                const TreeItem::Wanted& wanted = nullptr);

/// How fs_path_has_subdirectories is to look, by the listing options.
int tree_probe_flags();

}  // namespace dorn
