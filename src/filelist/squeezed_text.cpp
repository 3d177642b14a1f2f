#include "filelist/squeezed_text.h"

#include <QFontMetrics>
#include <QPainter>
#include <QStyle>

namespace dorn {

namespace {

constexpr double kNarrowest = 0.72;

void draw(QPainter* painter, const QRect& area, int flags, const QString& text, int width) {
    if (width <= area.width()) {
        painter->drawText(area, flags, text);
        return;
    }
    const double scale = double(area.width()) / width;
    if (scale < kNarrowest) {
        painter->drawText(area, flags,
                          painter->fontMetrics().elidedText(text, Qt::ElideRight, area.width()));
        return;
    }
    painter->save();
    painter->translate(area.topLeft());
    painter->scale(scale, 1.0);
    painter->drawText(QRect(0, 0, width + 1, area.height()), flags, text);
    painter->restore();
}

}  // namespace

void draw_squeezed_text(QPainter* painter, const QRect& area, Qt::Alignment alignment,
                        const QString& text) {
    if (area.width() <= 0) return;
    const int width = painter->fontMetrics().horizontalAdvance(text);
    // The place follows the window's direction, the text its own: no bracket changes its side.
    const Qt::LayoutDirection direction = painter->layoutDirection();
    const int flags = int(QStyle::visualAlignment(direction, alignment)) | Qt::AlignAbsolute |
                      Qt::TextSingleLine | Qt::AlignVCenter;
    painter->setLayoutDirection(Qt::LayoutDirectionAuto);
    draw(painter, area, flags, text, width);
    painter->setLayoutDirection(direction);
}

}  // namespace dorn
