#include "ui/elided_label.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace dorn {

namespace {

constexpr int kFewCharacters = 12;

}  // namespace

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize ElidedLabel::minimumSizeHint() const {
    return {kFewCharacters * fontMetrics().averageCharWidth(), fontMetrics().height()};
}

QSize ElidedLabel::sizeHint() const {
    return minimumSizeHint();
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect area = contentsRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, area.width());
    style()->drawItemText(&painter, area, int(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || text().isEmpty()) return QLabel::event(event);
    // Escaped, so that no name is read as rich text.
    const QString whole = toolTip().isEmpty() ? text() : toolTip();
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       QStringLiteral("<span>%1</span>").arg(whole.toHtmlEscaped()), this);
    return true;
}

}  // namespace dorn
