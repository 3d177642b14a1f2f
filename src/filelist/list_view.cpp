#include "filelist/list_view.h"

#include "filelist/columns.h"
#include "filelist/drop_mark.h"
#include "filelist/header_row.h"
#include "filelist/list_accessible.h"
#include "filelist/list_drop.h"
#include "filelist/pane.h"
#include "filelist/row_delegate.h"
#include "ui/qt_widget.h"

#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>

namespace dorn {

namespace {

constexpr int kNarrowest = 1;    // pixels; no wider than a header button may be
constexpr int kLinkWidth = 150;  // pixels; the one column whose width is not kept

}  // namespace

ListView::ListView(QWidget* parent) : QTreeView(parent) {
    list_accessible_install();
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setHeaderHidden(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    // The selection is kept in the entries' flags: the toolkit's model of it does not scale.
    setSelectionMode(QAbstractItemView::NoSelection);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    setAutoScroll(false);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setItemDelegate(new RowDelegate(this));
    header()->setMinimumSectionSize(kNarrowest);
    header()->setStretchLastSection(false);
}

void ListView::setModel(QAbstractItemModel* model) {
    QTreeView::setModel(model);
    for (int column = 1; column <= kColumns; ++column)
        header()->resizeSection(column - 1, qMax(fl_get_column_width(column), kNarrowest));
}

void ListView::reset() {
    QTreeView::reset();
    sweeping_ = false;
    on_release_ = OnRelease::Nothing;
}

void ListView::attach_header() {
    header_row_ = qt_instance<HeaderRow>("header_row");
    if (header_row_ == nullptr) return;
    fl_set_column_width(kColumns, kLinkWidth);
    for (int column = 1; column <= kColumns; ++column) {
        auto* button = qt_instance<HeaderButton>(fl_header_name(column));
        QObject::connect(button, &HeaderButton::clicked, this,
                         [button] { fl_sort_cb(handle(button)); });
    }
}

int ListView::first_visible_row() const {
    return verticalScrollBar()->value();
}

void ListView::set_first_visible_row(int row) {
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(row);
}

void ListView::show_current_row(int row) {
    current_row_ = row;
    anchor_ = row;
    if (model() == nullptr) return;
    const QModelIndex index = row < 0 ? QModelIndex() : model()->index(row, 0);
    // Straight to the selection model: the view's own way would scroll.
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    setAutoScroll(scrolls);
    viewport()->update();
}

void ListView::scroll_to_row(int row) {
    if (model() == nullptr) return;
    const int at = horizontalScrollBar()->value();
    scrollTo(model()->index(row, 0), QAbstractItemView::EnsureVisible);
    horizontalScrollBar()->setValue(at);
}

int ListView::natural_width(int column) const {
    int widest = 0;
    const int first = first_visible_row();
    const int rows = model() == nullptr ? 0 : model()->rowCount();
    const int in_sight = viewport()->height() / qMax(1, sizeHintForRow(0)) + 1;
    for (int row = first; row < qMin(rows, first + in_sight); ++row)
        widest = qMax(widest, RowDelegate::natural_width(*this, model()->index(row, column - 1)));
    return widest;
}

void ListView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
    // While the directory is read the rows stand for entries that are being replaced.
    if (fl_is_reading() || index.row() >= static_cast<int>(gPane.rows.size())) return;
    QStyleOptionViewItem row = option;
    const int32_t entry = gPane.rows[static_cast<std::size_t>(index.row())].index;
    if (entry >= 0 && entry < gDir->count && (gDir->entries[entry]->flags & kEntrySelected) != 0)
        row.state |= QStyle::State_Selected;
    row.state.setFlag(QStyle::State_Active, hasFocus() && isActiveWindow());
    if (row.state.testFlag(QStyle::State_Selected))
        painter->fillRect(row.rect, RowDelegate::selection_colour(row));
    QTreeView::drawRow(painter, row, index);
    if (fl_drop_shown().empty() || fl_drop_shown() != fl_drop_directory(index.row())) return;
    draw_drop_mark(painter, row.rect, palette());
}

// A drop that goes to the shown directory has the whole list as its target.
void ListView::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    if (fl_drop_shown().empty() || fl_drop_shown() != fl_drop_directory(-1)) return;
    QPainter painter(viewport());
    draw_drop_mark(&painter, viewport()->rect(), palette());
}

void ListView::scrollContentsBy(int dx, int dy) {
    QTreeView::scrollContentsBy(dx, dy);
    if (header_row_ != nullptr) header_row_->place(horizontalOffset());
}

void ListView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    if (header_row_ != nullptr) header_row_->place(horizontalOffset());
}

int ListView::row_at(const QPoint& position) const {
    const QModelIndex index = indexAt(position);
    return index.isValid() ? index.row() : -1;
}

}  // namespace dorn
