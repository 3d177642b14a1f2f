#include "hotlist/tree_file_drop.h"

#include "dirmodel/path_text.h"
#include "filelist/drop_mark.h"
#include "filelist/file_drop.h"
#include "hotlist/tree_item.h"

#include <QDropEvent>
#include <QPainter>
#include <QTreeWidget>

namespace dorn {

namespace {

constexpr uint32_t kExpandAfter = 800;  // milliseconds of rest

// "" when no files can go there.
std::string directory_of(TreeItem* item) {
    if (item == nullptr) return {};
    const auto image = TreeImage(item->data(0, kTreeImageRole).toInt());
    if (image == TreeImage::InvalidFolder || image == TreeImage::File) return {};
    const std::optional<std::string> path = tree_disk_path(item);
    return path && path->starts_with('/') ? es_strip_pathname(*path) : std::string();
}

}  // namespace

void TreeFileDrop::motion(QDropEvent* event) {
    TreeItem* item = tree_item(tree_->itemAt(event->position().toPoint()));
    directory_ = directory_of(item);
    file_drop_hover(event, directory_);
    const int64_t target = event->isAccepted() ? tree_item_id(item) : 0;
    if (target == target_) return;
    target_ = target;
    wtimer_attach(&rest_, target == 0 ? 0 : kExpandAfter, expand_target, this);
    tree_->viewport()->update();
}

void TreeFileDrop::drop(QDropEvent* event) {
    TreeItem* item = tree_item(tree_->itemAt(event->position().toPoint()));
    const bool shown = target_ != 0 && tree_item_id(item) == target_;
    file_drop(event, shown ? directory_ : std::string());
    leave();
    tree_->clearSelection();
}

void TreeFileDrop::leave() {
    target_ = 0;
    if (rest_.attached) wtimer_detach(&rest_);
    tree_->viewport()->update();
}

void TreeFileDrop::expand_target(Timer* timer, void* self) {
    wtimer_detach(timer);
    TreeItem* item = tree_item(static_cast<TreeFileDrop*>(self)->target_);
    if (item != nullptr && item->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator)
        item->setExpanded(true);
}

void TreeFileDrop::paint(QPainter* painter) const {
    const TreeItem* item = tree_item(target_);
    if (item != nullptr) draw_drop_mark(painter, tree_->visualItemRect(item), tree_->palette());
}

}  // namespace dorn
