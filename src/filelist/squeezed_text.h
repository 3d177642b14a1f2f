// Text in a narrow place: drawn narrower, by up to a quarter or so, where that shows it whole; else
// cut with an ellipsis.
#pragma once

#include <QFont>
#include <QRect>
#include <QString>

class QPainter;

namespace dorn {

/// Draws one line of `text` with the painter's font and pen inside `area`.
void draw_squeezed_text(QPainter* painter, const QRect& area, Qt::Alignment alignment,
                        const QString& text);

}  // namespace dorn
