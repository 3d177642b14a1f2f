// The list's widget: rows painted from the entries' own flags, mouse and keys turned into the
// pane's operations.
#pragma once

#include <QTreeView>

namespace dorn {

class HeaderRow;

class ListView : public QTreeView {
  public:
    explicit ListView(QWidget* parent = nullptr);

    /// Finds the header row of the same window and keeps the columns in step with its buttons.
    void attach_header();

    int first_visible_row() const;
    void set_first_visible_row(int row);
    /// Highlights `row` as the current one, -1 for none, without scrolling.
    void show_current_row(int row);
    int current_row() const {
        return current_row_;
    }
    /// Where the arrow keys go on while no row is highlighted: the row of an entry that is gone.
    void set_left_row(int row) {
        left_row_ = qMax(row, 0);
    }
    void scroll_to_row(int row);
    /// The row at a position of the viewport, -1 for none.
    int row_at(const QPoint& position) const;

    /// The width that shows column 1 to 7 of the rows in sight whole, in pixels.
    int natural_width(int column) const;

    void setModel(QAbstractItemModel* model) override;
    /// The rows are others from here on: what the held select button was about has ended.
    void reset() override;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void press_select_button(const QMouseEvent* event);
    bool drag_starts(const QMouseEvent& event) const;
    void press_menu_button(int row);
    void move_current(QKeyEvent* event, int row);
    bool move_by_key(QKeyEvent* event);
    void toggle_current(bool keep);

    HeaderRow* header_row_ = nullptr;
    // What the release after a press on a selected row does, unless a drag came of it.
    enum class OnRelease { Nothing, Narrow, Toggle };

    int anchor_ = -1;        // row where a range begins
    int current_row_ = -1;   // the highlighted row
    int left_row_ = 0;       // where the keys go on when none is
    bool sweeping_ = false;  // the select button is held and sweeps a range
    QPoint press_;           // where the select button went down, in the viewport
    OnRelease on_release_ = OnRelease::Nothing;
};

/// Opens the list's context menu at a global position; null (the start): there is none.
void fl_set_menu_cb(void (*open_menu)(int x, int y));

}  // namespace dorn
