// The widget of the hotlist tree: keys, mouse, the drag of entries within it, lists of files
// dropped on its items.
#pragma once

#include "hotlist/tree_file_drop.h"

#include <QTreeWidget>

#include <cstdint>

namespace dorn {

/// A click or Enter chooses an item and leaves nothing selected, so the current item is the only
/// mark; the menu button, the menu key and Shift+F10 open the context menu.
class HotlistView : public QTreeWidget {
  public:
    explicit HotlistView(QWidget* parent = nullptr);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void open_menu_at_current();
    void start_entry_drag();
    bool is_lower_half(const QTreeWidgetItem* item, const QPoint& position) const;
    int drop_line(QTreeWidgetItem* target, bool after) const;
    void scroll_at_edge(int y);
    void end_drag();

    int64_t dnd_item_ = 0;   // id of the top-level item under the last button press; 0: none
    int64_t drag_over_ = 0;  // id of the item that a drag is over; 0: none
    int drop_line_ = -1;     // y of the line that shows where a drop goes; -1: none
    QPoint press_;
    TreeFileDrop files_{this};
};

}  // namespace dorn
