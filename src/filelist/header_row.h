// The row of header buttons above the list; their widths are the columns' widths.
#pragma once

#include <QAbstractButton>
#include <QWidget>

namespace dorn {

/// One header button, drawn as the style draws a header's section. Its right edge can be dragged.
class HeaderButton : public QAbstractButton {
  public:
    explicit HeaderButton(QWidget* parent = nullptr);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

  private:
    int edge_at(int x) const;

    int dragged_column_ = 0;  // 1 to 7 while an edge is dragged
    int drag_start_x_ = 0;
    int drag_start_width_ = 0;
};

class HeaderRow : public QWidget {
  public:
    explicit HeaderRow(QWidget* parent = nullptr);

    /// Lays the buttons out side by side, `offset` pixels scrolled to the left.
    void place(int offset);
    /// Lays them out again after a width has changed.
    void place_again() {
        place(offset_);
    }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    int offset_ = 0;
};

}  // namespace dorn
