// How the place that a drop would go to is marked.
#pragma once

class QPainter;
class QPalette;
class QRect;

namespace dorn {

/// Frames and tints `area`.
void draw_drop_mark(QPainter* painter, const QRect& area, const QPalette& palette);

}  // namespace dorn
