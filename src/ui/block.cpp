// Blocking: a widget that takes no input while something runs.
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QApplication>
#include <QCursor>
#include <QEvent>

namespace dorn {

namespace {

constexpr const char* kBlockedProperty = "dorn_blocked";

bool is_input(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::Shortcut:
        case QEvent::ShortcutOverride:
        case QEvent::ContextMenu:
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::TabletPress:
            return true;
        default:
            return false;
    }
}

// Answered as refused. All else counts as dealt with: an accepted ShortcutOverride keeps
// accelerators from running, and after an accepted DragEnter the toolkit tells of the motions that
// follow when the block has ended.
bool is_drop(QEvent::Type type) {
    return type == QEvent::DragMove || type == QEvent::Drop;
}

// What was pressed before the block is not to stay pressed after it: a scroll bar would scroll on
// by itself. True when the widget is to be told.
bool let_go(QObject* watched) {
    if (auto* button = qobject_cast<QAbstractButton*>(watched)) button->setDown(false);
    return qobject_cast<QAbstractSlider*>(watched) != nullptr;
}

// Swallows the input of blocked widgets and their children. In place only while there are any.
class InputFilter : public QObject {
  public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (!is_input(event->type()) || !watched->isWidgetType()) return false;
        auto* widget = static_cast<QWidget*>(watched);
        for (; widget != nullptr; widget = widget->isWindow() ? nullptr : widget->parentWidget()) {
            if (!ui_is_blocked(handle(widget))) continue;
            if (event->type() == QEvent::MouseButtonRelease && let_go(watched)) return false;
            event->setAccepted(!is_drop(event->type()));
            return true;
        }
        return false;
    }
};

void mark_blocked(QWidget* widget, bool on) {
    static InputFilter* const filter = new InputFilter;
    static int blocked = 0;
    const bool was_on = ui_is_blocked(handle(widget));
    if (was_on == on) return;
    widget->setProperty(kBlockedProperty, on);
    blocked += on ? 1 : -1;
    if (blocked == 1 && on) qApp->installEventFilter(filter);
    if (blocked == 0) qApp->removeEventFilter(filter);
}

}  // namespace

bool ui_is_blocked(const Widget* widget) {
    return widget != nullptr && qt(widget)->property(kBlockedProperty).toBool();
}

void wblock(Widget* widget, int on) {
    if (widget == nullptr) return;
    mark_blocked(qt(widget), on == 1);
    if (on == 1)
        qt(widget)->setCursor(Qt::BusyCursor);
    else
        qt(widget)->unsetCursor();
}

void misc_block(Widget* widget, int on) {
    if (widget == nullptr) return;
    QWidget* target = qt(widget);
    mark_blocked(target, on != 0);
    if (on != 0)
        target->setCursor(Qt::WaitCursor);
    else
        target->unsetCursor();
    if (!target->isWindow()) target->setEnabled(on == 0);
}

}  // namespace dorn
