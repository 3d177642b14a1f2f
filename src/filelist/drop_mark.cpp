#include "filelist/drop_mark.h"

#include <QPainter>
#include <QPalette>

namespace dorn {

void draw_drop_mark(QPainter* painter, const QRect& area, const QPalette& palette) {
    QColor tint = palette.color(QPalette::Highlight);
    painter->setPen(QPen(tint, 2));
    tint.setAlphaF(0.2F);
    painter->setBrush(tint);
    painter->drawRect(area.adjusted(1, 1, -1, -1));
}

}  // namespace dorn
