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

    /// The width that shows the cell whole, in pixels.
    static int natural_width(const ListView& view, const QModelIndex& index);
};

}  // namespace dorn
