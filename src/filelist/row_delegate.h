// How one cell of the list is painted.
#pragma once

#include <QStyledItemDelegate>

namespace dorn {

class ListView;

class RowDelegate : public QStyledItemDelegate {
  public:
    explicit RowDelegate(ListView* view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// What a selected row is filled with: paler while the list has not the keyboard focus
    /// (State_Active).
    static QColor selection_colour(const QStyleOptionViewItem& option);

    /// The width that shows the cell whole, in pixels.
    static int natural_width(const ListView& view, const QModelIndex& index);
};

}  // namespace dorn
