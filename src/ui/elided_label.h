// A label of one line whose text is cut in the middle where it does not fit.
#pragma once

#include <QLabel>

namespace dorn {

/// Takes any width; the text is plain. The tool tip shows it whole, or what was set as tool tip.
class ElidedLabel : public QLabel {
  public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;
};

}  // namespace dorn
