#include "filelist/squeezed_text.h"

#include <QFontMetrics>
#include <QPainter>

namespace dorn {

namespace {

constexpr double kNarrowest = 0.72;

}  // namespace

void draw_squeezed_text(QPainter* painter, const QRect& area, Qt::Alignment alignment,
                        const QString& text) {
    if (area.width() <= 0) return;
    const QFontMetrics metrics = painter->fontMetrics();
    const int width = metrics.horizontalAdvance(text);
    const int flags = static_cast<int>(alignment) | Qt::TextSingleLine | Qt::AlignVCenter;
    if (width <= area.width()) {
        painter->drawText(area, flags, text);
        return;
    }
    const double scale = double(area.width()) / width;
    if (scale < kNarrowest) {
        painter->drawText(area, flags, metrics.elidedText(text, Qt::ElideRight, area.width()));
        return;
    }
    painter->save();
    painter->translate(area.topLeft());
    painter->scale(scale, 1.0);
    painter->drawText(QRect(0, 0, width + 1, area.height()), flags, text);
    painter->restore();
}

}  // namespace dorn
