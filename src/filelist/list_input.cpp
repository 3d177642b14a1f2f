// The list's mouse and keys.
#include "filelist/list_drag.h"
#include "filelist/list_drop.h"
#include "filelist/list_view.h"
#include "filelist/navigation.h"
#include "filelist/pane.h"
#include "filelist/selection.h"
#include "filelist/typeahead.h"
#include "ui/actions.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

namespace dorn {

namespace {

void (*sOpenMenu)(int x, int y) = nullptr;

int32_t entry_of(int row) {
    if (row < 0 || row >= static_cast<int>(gPane.rows.size())) return -2;
    return gPane.rows[static_cast<std::size_t>(row)].index;
}

bool is_selected(int32_t index) {
    return index >= 0 && index < gDir->count && (gDir->entries[index]->flags & kEntrySelected) != 0;
}

KeyEvent key_event(const QKeyEvent& event) {
    KeyEvent key;
    key.flags = kKeyDown | (event.isAutoRepeat() ? kKeyRepeat : 0);
    const Qt::KeyboardModifiers held = event.modifiers();
    if (held.testFlag(Qt::ShiftModifier)) key.modifiers |= kModShift;
    if (held.testFlag(Qt::ControlModifier)) key.modifiers |= kModCtrl;
    if (held.testFlag(Qt::AltModifier)) key.modifiers |= kModAlt;
    const bool command = held & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    switch (event.key()) {
        case Qt::Key_Escape:
            key.sym = kKeyEscape;
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            key.sym = held.testAnyFlags(Qt::ShiftModifier) || command ? 0 : kKeyEnter;
            break;
        case Qt::Key_Backspace:
            key.sym = command ? 0 : kKeyBackspace;
            break;
        default:
            if (!command && event.text().size() == 1) key.sym = event.text().front().unicode();
    }
    key.cap = key.sym;
    if (key.sym != 0) key.flags |= kKeySymValid | kKeyCapValid;
    return key;
}

// What the interpreter's answer means for the timer and the status line.
void after_interpreted(int used) {
    if (used > 0) {
        fl_timer_set();
        interp_echo();
    } else {
        fl_timer_disable();
        wprintf(w_instance("status1"), "%s", "");
    }
}

}  // namespace

void fl_set_menu_cb(void (*open_menu)(int x, int y)) {
    sOpenMenu = open_menu;
}

void ListView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        press_select_button(event);
    else if (event->button() == Qt::RightButton)
        press_menu_button(row_at(event->position().toPoint()));
    event->accept();
}

void ListView::press_select_button(const QMouseEvent* event) {
    fl_timer_disable();
    status_bar_update();
    const int row = row_at(event->position().toPoint());
    const bool toggle = event->modifiers().testFlag(Qt::ControlModifier);
    const bool extend = event->modifiers().testFlag(Qt::ShiftModifier);
    const int anchor = extend && anchor_ >= 0 ? anchor_ : row;
    press_ = event->position().toPoint();
    on_release_ = OnRelease::Nothing;
    sweeping_ = row >= 0;
    if (row < 0) {
        if (!toggle && !extend) fl_unselect_all();
        return;
    }
    const int32_t index = entry_of(row);
    if (extend)
        fl_select_rows(anchor, row, toggle);
    else if (is_selected(index))  // it may be the begin of a drag of all that is selected
        on_release_ = toggle ? OnRelease::Toggle : OnRelease::Narrow;
    else if (toggle)
        fl_invert_index(index);
    else
        fl_select_rows(row, row, false);
    fl_set_current(index);
    show_current_row(row);
    anchor_ = anchor;
    scroll_to_row(row);
}

// From a selected row a drag starts at a short distance; a sweep becomes one where it leaves the
// list sideways (above and below, it scrolls).
bool ListView::drag_starts(const QMouseEvent& event) const {
    if (gDir->n_selected == 0) return false;
    const QPoint position = event.position().toPoint();
    if (on_release_ != OnRelease::Nothing)
        return (position - press_).manhattanLength() >= QApplication::startDragDistance();
    const int x = viewport()->mapTo(this, position).x();
    return x < 0 || x >= width();
}

void ListView::mouseMoveEvent(QMouseEvent* event) {
    if (!sweeping_ || !event->buttons().testFlag(Qt::LeftButton)) return;
    if (drag_starts(*event)) {
        sweeping_ = false;
        on_release_ = OnRelease::Nothing;
        fl_start_drag(this);
        return;
    }
    // Above or below the list the sweep goes on, a row at a time.
    const int y = event->position().toPoint().y();
    int row = row_at(QPoint(0, qBound(0, y, viewport()->height() - 1)));
    if (row < 0) row = static_cast<int>(gPane.rows.size()) - 1;
    if (y < 0) row = qMax(0, row - 1);
    if (y >= viewport()->height()) row = qMin(row + 1, static_cast<int>(gPane.rows.size()) - 1);
    if (row == current_row_ || on_release_ != OnRelease::Nothing) return;
    const int anchor = anchor_;
    fl_select_rows(anchor, row, event->modifiers().testFlag(Qt::ControlModifier));
    fl_set_current(entry_of(row));
    show_current_row(row);
    anchor_ = anchor;
    scroll_to_row(row);
}

void ListView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const OnRelease what = on_release_;
    on_release_ = OnRelease::Nothing;
    sweeping_ = false;
    if (what == OnRelease::Narrow) fl_select_rows(current_row_, current_row_, false);
    if (what == OnRelease::Toggle) fl_invert_index(entry_of(current_row_));
}

void ListView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (event->modifiers().testAnyFlags(Qt::ControlModifier | Qt::ShiftModifier)) {
        press_select_button(event);  // one more change of the selection, which opens nothing
        return;
    }
    on_release_ = OnRelease::Nothing;
    sweeping_ = false;
    const int row = row_at(event->position().toPoint());
    if (row >= 0) fl_open(entry_of(row));
}

void ListView::dragEnterEvent(QDragEnterEvent* event) {
    fl_dnd_cb(event);
}

void ListView::dragMoveEvent(QDragMoveEvent* event) {
    fl_dnd_cb(event);
}

void ListView::dragLeaveEvent(QDragLeaveEvent* event) {
    fl_dnd_cb(event);
}

void ListView::dropEvent(QDropEvent* event) {
    fl_dnd_cb(event);
}

void ListView::press_menu_button(int row) {
    fl_timer_disable();
    if (row < 0) {
        fl_unselect_all();
        return;
    }
    const int32_t index = entry_of(row);
    if (!is_selected(index)) fl_unselect_all();
    fl_set_current(index);
    show_current_row(row);
    scroll_to_row(row);
    fl_select_index(index);
    fl_notify();
}

void ListView::contextMenuEvent(QContextMenuEvent* event) {
    QPoint at = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        if (current_row_ >= 0) press_menu_button(current_row_);
        at = viewport()->mapToGlobal(
            visualRect(model()->index(qMax(current_row_, 0), 0)).bottomLeft() + QPoint(24, 0));
    }
    if (sOpenMenu != nullptr) sOpenMenu(at.x(), at.y());
    event->accept();
}

bool ListView::event(QEvent* event) {
    // While something is typed the interpreter's keys come before the accelerators bound to them.
    if (event->type() == QEvent::ShortcutOverride && interp_active()) {
        const KeyEvent key = key_event(*static_cast<QKeyEvent*>(event));
        if ((key.flags & kKeySymValid) != 0) {
            event->accept();
            return true;
        }
    }
    return QTreeView::event(event);
}

void ListView::keyPressEvent(QKeyEvent* event) {
    event->accept();
    const KeyEvent key = key_event(*event);
    if (kb_process(handle(this), nullptr, &key) == 1) return;
    const int used = interp_key(key);
    if (used != 0) {
        after_interpreted(used);
        return;
    }
    if (key.sym == kKeyEnter) {
        fl_open_selection();
        return;
    }
    if (event->key() == Qt::Key_Space) {
        toggle_current(event->modifiers().testFlag(Qt::ControlModifier));
        return;
    }
    if (!move_by_key(event)) event->ignore();
}

void ListView::toggle_current(bool keep) {
    const int32_t index = entry_of(current_row_);
    if (index < 0) return;
    if (keep)
        fl_invert_index(index);
    else
        fl_select_rows(current_row_, current_row_, false);
}

bool ListView::move_by_key(QKeyEvent* event) {
    const int last = static_cast<int>(gPane.rows.size()) - 1;
    const int page = qMax(1, viewport()->height() / qMax(1, sizeHintForRow(0)) - 1);
    const bool gone = current_row_ < 0;  // the entry below has come to its row
    const int here = gone ? qMin(left_row_, last + 1) : current_row_;  // more may be gone
    QScrollBar* across = horizontalScrollBar();
    switch (event->key()) {
        case Qt::Key_Up:
            move_current(event, qMax(0, here - 1));
            return true;
        case Qt::Key_Down:
            move_current(event, qMin(last, gone ? here : here + 1));
            return true;
        case Qt::Key_PageUp:
            move_current(event, qMax(0, here - page));
            return true;
        case Qt::Key_PageDown:
            move_current(event, qMin(last, here + page));
            return true;
        case Qt::Key_Home:
            move_current(event, 0);
            return true;
        case Qt::Key_End:
            move_current(event, last);
            return true;
        case Qt::Key_Left:
        case Qt::Key_Right:
            if (event->modifiers() != Qt::NoModifier) return false;
            across->triggerAction(event->key() == Qt::Key_Left ? QScrollBar::SliderSingleStepSub
                                                               : QScrollBar::SliderSingleStepAdd);
            return true;
        default:
            return false;
    }
}

void ListView::move_current(QKeyEvent* event, int row) {
    if (row < 0) return;
    fl_timer_disable();
    const bool extend = event->modifiers().testFlag(Qt::ShiftModifier);
    const bool only_move = event->modifiers().testFlag(Qt::ControlModifier) && !extend;
    const int anchor = extend && anchor_ >= 0 ? anchor_ : row;
    if (!only_move) fl_select_rows(anchor, row, false);
    fl_set_current(entry_of(row));
    show_current_row(row);
    anchor_ = anchor;
    scroll_to_row(row);
}

}  // namespace dorn
