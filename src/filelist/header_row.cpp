#include "filelist/header_row.h"

#include "filelist/columns.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "filelist/squeezed_text.h"
#include "ui/qt_widget.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QStyleOptionHeader>

namespace dorn {

namespace {

constexpr int kEdge = 4;  // pixels on each side of an edge that take hold of it
constexpr int kMargin = 4;
constexpr int kMarkSize = 10;  // of the sort mark

int column_of(const HeaderButton* button) {
    for (int column = 1; column <= kColumns; ++column) {
        if (button->objectName() == QLatin1String(fl_header_name(column))) return column;
    }
    return 0;
}

}  // namespace

HeaderButton::HeaderButton(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
}

QSize HeaderButton::sizeHint() const {
    return {80, fontMetrics().height() + 8};
}

void HeaderButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QStyleOptionHeader option;
    option.initFrom(this);
    option.rect = rect();
    option.state |= isDown() ? QStyle::State_Sunken : QStyle::State_Raised;
    if (column_of(this) == 0) option.state &= ~QStyle::State_MouseOver;
    option.section = column_of(this);
    option.position = QStyleOptionHeader::Middle;
    style()->drawControl(QStyle::CE_HeaderSection, &option, &painter, this);
    QRect area = rect().adjusted(kMargin, 0, -kMargin, 0);
    if (!icon().isNull()) {
        const QRect mark(area.right() - kMarkSize + 1, area.center().y() - kMarkSize / 2, kMarkSize,
                         kMarkSize);
        icon().paint(&painter, QStyle::visualRect(layoutDirection(), rect(), mark));
        area.adjust(0, 0, -kMarkSize - 2, 0);
    }
    painter.setPen(palette().color(QPalette::ButtonText));
    draw_squeezed_text(&painter, QStyle::visualRect(layoutDirection(), rect(), area), Qt::AlignLeft,
                       text());
    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.rect = rect().adjusted(2, 2, -2, -2);
        focus.state |= QStyle::State_KeyboardFocusChange;
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
    }
}

// The column whose far edge lies at `x`, 0 for none: this button's, or the one's before it.
int HeaderButton::edge_at(int x) const {
    if (isRightToLeft()) x = width() - 1 - x;
    const int column = column_of(this);
    const bool filler = column == 0;
    if (!filler && x >= width() - kEdge) return column;
    if (x >= kEdge) return 0;
    return filler ? kColumns : column - 1;
}

void HeaderButton::mousePressEvent(QMouseEvent* event) {
    const int edge = edge_at(event->position().toPoint().x());
    if (event->button() != Qt::LeftButton || edge == 0) {
        if (column_of(this) != 0) QAbstractButton::mousePressEvent(event);
        return;
    }
    dragged_column_ = edge;
    drag_start_x_ = event->globalPosition().toPoint().x();
    drag_start_width_ = fl_get_column_width(edge);
}

void HeaderButton::mouseMoveEvent(QMouseEvent* event) {
    // The release goes unseen while the window is blocked.
    if (!event->buttons().testFlag(Qt::LeftButton)) dragged_column_ = 0;
    if (dragged_column_ != 0) {
        constexpr int narrowest = 16;
        const int to_right = event->globalPosition().toPoint().x() - drag_start_x_;
        const int moved = isRightToLeft() ? -to_right : to_right;
        fl_set_column_width(dragged_column_, qMax(narrowest, drag_start_width_ + moved));
        return;
    }
    const bool at_edge = edge_at(event->position().toPoint().x()) != 0;
    if (at_edge)
        setCursor(Qt::SplitHCursor);
    else
        unsetCursor();
    QAbstractButton::mouseMoveEvent(event);
}

void HeaderButton::mouseReleaseEvent(QMouseEvent* event) {
    if (dragged_column_ != 0 && event->button() == Qt::LeftButton)
        dragged_column_ = 0;
    else
        QAbstractButton::mouseReleaseEvent(event);
}

void HeaderButton::mouseDoubleClickEvent(QMouseEvent* event) {
    const int edge = edge_at(event->position().toPoint().x());
    if (edge == 0 || gPane.view == nullptr) {
        mousePressEvent(event);
        return;
    }
    fl_set_column_width(edge, gPane.view->natural_width(edge));
}

HeaderRow::HeaderRow(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QSize HeaderRow::sizeHint() const {
    return {100, fontMetrics().height() + 8};
}

QSize HeaderRow::minimumSizeHint() const {
    return {0, sizeHint().height()};
}

void HeaderRow::resizeEvent(QResizeEvent*) {
    place_again();
}

void HeaderRow::place(int offset) {
    offset_ = offset;
    auto mirrored = [this](const QRect& area) {
        return QStyle::visualRect(layoutDirection(), rect(), area);
    };
    int x = -offset;
    for (int column = 1; column <= kColumns; ++column) {
        QWidget* button = qt(w_instance(fl_header_name(column)));
        if (button == nullptr) return;
        button->setGeometry(mirrored({x, 0, button->width(), height()}));
        x += button->width();
    }
    if (QWidget* filler = qt(w_instance("fh_link0")); filler != nullptr)
        filler->setGeometry(mirrored({x, 0, qMax(0, width() - x), height()}));
}

}  // namespace dorn
