#include "hotlist/hotlist_view.h"

#include "filelist/file_drop.h"
#include "hotlist/hotlist_tree.h"
#include "hotlist/tree_drag.h"
#include "hotlist/tree_item.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QPainter>
#include <QPointer>
#include <QScrollBar>

namespace dorn {

namespace {

constexpr int kIndentation = 16;  // pixels a level
constexpr int kScrollEdge = 16;   // pixels from the upper and lower edge where a drag scrolls

}  // namespace

HotlistView::HotlistView(QWidget* parent) : QTreeWidget(parent) {
    setColumnCount(1);
    setHeaderHidden(true);
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setExpandsOnDoubleClick(false);
    setUniformRowHeights(true);
    setIconSize({16, 16});
    setIndentation(kIndentation);
    setTextElideMode(Qt::ElideMiddle);
    setAnimated(false);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
}

void HotlistView::keyPressEvent(QKeyEvent* event) {
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && plain) {
        if (currentItem() != nullptr) tree_selection_cb(this, currentItem());
        return;
    }
    if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        open_menu_at_current();
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

void HotlistView::mousePressEvent(QMouseEvent* event) {
    press_ = event->pos();
    const QTreeWidgetItem* item = itemAt(press_);
    dnd_item_ = item != nullptr && item->parent() == nullptr ? tree_item_id(item) : 0;
    QTreeWidget::mousePressEvent(event);
}

void HotlistView::mouseMoveEvent(QMouseEvent* event) {
    const bool far = (event->pos() - press_).manhattanLength() >= QApplication::startDragDistance();
    if ((event->buttons() & Qt::LeftButton) == 0 || dnd_item_ == 0)
        QTreeWidget::mouseMoveEvent(event);
    else if (far)
        start_entry_drag();
}

void HotlistView::mouseReleaseEvent(QMouseEvent* event) {
    dnd_item_ = 0;
    QTreeWidget::mouseReleaseEvent(event);
}

void HotlistView::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
    if (event->reason() != QContextMenuEvent::Mouse) return open_menu_at_current();
    tree_open_menu(itemAt(event->pos()), event->globalX(), event->globalY());
}

void HotlistView::open_menu_at_current() {
    QTreeWidgetItem* item = currentItem();
    if (item != nullptr) scrollToItem(item);
    const QRect row = item != nullptr ? visualItemRect(item) : QRect();
    const QPoint place = viewport()->mapToGlobal(row.bottomLeft());
    tree_open_menu(item, place.x(), place.y());
}

void HotlistView::start_entry_drag() {
    TreeItem* item = tree_item(dnd_item_);
    if (item == nullptr) return;
    const QPointer<HotlistView> alive(this);
    auto* drag = new QDrag(this);
    drag->setMimeData(tree_drag_data());
    const QRect row = visualItemRect(item);
    drag->setPixmap(viewport()->grab(row));
    drag->setHotSpot(press_ - row.topLeft());
    drag->exec(Qt::MoveAction);
    if (alive) end_drag();
}

void HotlistView::end_drag() {
    setState(NoState);
    dnd_item_ = 0;
    drag_over_ = 0;
    drop_line_ = -1;
    viewport()->update();
}

// Hotlist entries and lists of files are taken.
void HotlistView::dragEnterEvent(QDragEnterEvent* event) {
    drag_over_ = 0;
    event->setAccepted(tree_is_hotlist_drag(event->mimeData()) ||
                       file_drop_action(*event) != Qt::IgnoreAction);
}

void HotlistView::dragMoveEvent(QDragMoveEvent* event) {
    const QPoint position = event->position().toPoint();
    scroll_at_edge(position.y());
    if (!tree_is_hotlist_drag(event->mimeData())) return files_.motion(event);
    QTreeWidgetItem* target = itemAt(position);
    tree_drag_over(target, &drag_over_);
    const bool can = tree_can_drop(tree_item(dnd_item_), target);
    drop_line_ = can ? drop_line(target, is_lower_half(target, position)) : -1;
    viewport()->update();
    if (can)
        event->acceptProposedAction();
    else
        event->ignore();
}

void HotlistView::dragLeaveEvent(QDragLeaveEvent* event) {
    drag_over_ = 0;
    drop_line_ = -1;
    files_.leave();
    event->accept();
}

void HotlistView::dropEvent(QDropEvent* event) {
    if (!tree_is_hotlist_drag(event->mimeData())) return files_.drop(event);
    const QPoint position = event->position().toPoint();
    QTreeWidgetItem* target = itemAt(position);
    if (target != nullptr)
        tree_drop(this, tree_item(dnd_item_), target, is_lower_half(target, position));
    event->acceptProposedAction();
    end_drag();
}

bool HotlistView::is_lower_half(const QTreeWidgetItem* item, const QPoint& position) const {
    return position.y() > visualItemRect(item).center().y();
}

// Behind an expanded item the line stands below everything that it shows.
int HotlistView::drop_line(QTreeWidgetItem* target, bool after) const {
    if (!after) return visualItemRect(target).top();
    QTreeWidgetItem* last = target;
    while (last->isExpanded() && last->childCount() > 0)
        last = last->child(last->childCount() - 1);
    return visualItemRect(last).bottom();
}

void HotlistView::scroll_at_edge(int y) {
    QScrollBar* bar = verticalScrollBar();
    if (y < kScrollEdge) bar->setValue(bar->value() - bar->singleStep());
    if (y > viewport()->height() - kScrollEdge) bar->setValue(bar->value() + bar->singleStep());
}

void HotlistView::paintEvent(QPaintEvent* event) {
    QTreeWidget::paintEvent(event);
    QPainter painter(viewport());
    files_.paint(&painter);
    if (drop_line_ < 0) return;
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    const int y = qBound(1, drop_line_, viewport()->height() - 1);
    painter.drawLine(0, y, viewport()->width(), y);
}

void HotlistView::changeEvent(QEvent* event) {
    QTreeWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) tree_load_pictures();
}

}  // namespace dorn
