#include "filelist/row_delegate.h"

#include "filelist/list_view.h"
#include "filelist/squeezed_text.h"

#include <QPainter>
#include <QStyle>

namespace dorn {

namespace {

constexpr int kMargin = 3;
constexpr int kImageSize = 16;
constexpr int kImageGap = 4;

}  // namespace

QColor RowDelegate::selection_colour(const QStyleOptionViewItem& option) {
    const QColor highlight = option.palette.color(QPalette::Highlight);
    if (option.state.testFlag(QStyle::State_Active)) return highlight;
    const QColor base = option.palette.color(QPalette::Base);
    constexpr float share = 0.3F;
    auto mix = [](float a, float b) { return a * share + b * (1 - share); };
    return QColor::fromRgbF(mix(highlight.redF(), base.redF()),
                            mix(highlight.greenF(), base.greenF()),
                            mix(highlight.blueF(), base.blueF()));
}

RowDelegate::RowDelegate(ListView* view) : QStyledItemDelegate(view) {}

void RowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const bool active = option.state.testFlag(QStyle::State_Active);
    QRect area = option.rect.adjusted(kMargin, 0, -kMargin, 0);
    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    if (!icon.isNull()) {
        const QRect place(area.left(), area.center().y() - kImageSize / 2 + 1, kImageSize,
                          kImageSize);
        if (area.width() >= kImageSize)
            icon.paint(painter, QStyle::visualRect(option.direction, option.rect, place),
                       Qt::AlignCenter, selected && active ? QIcon::Selected : QIcon::Normal);
        area.adjust(kImageSize + kImageGap, 0, 0, 0);
    }
    painter->setFont(option.font);
    const bool inverted = selected && active;
    painter->setPen(option.palette.color(inverted ? QPalette::HighlightedText : QPalette::Text));
    const auto alignment = index.data(Qt::TextAlignmentRole).value<Qt::Alignment>();
    draw_squeezed_text(painter, QStyle::visualRect(option.direction, option.rect, area), alignment,
                       index.data(Qt::DisplayRole).toString());
}

QSize RowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {60, qMax(option.fontMetrics.height() + 2, kImageSize + 2)};
}

int RowDelegate::natural_width(const ListView& view, const QModelIndex& index) {
    const int text = view.fontMetrics().horizontalAdvance(index.data(Qt::DisplayRole).toString());
    const int image = index.column() == 0 ? kImageSize + kImageGap : 0;
    return text + image + 2 * kMargin + 1;
}

}  // namespace dorn
