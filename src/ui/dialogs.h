// Messages, questions, texts of widgets, blocking, focus and placement: the functions through which
// every message reaches the user. Event-loop thread only.
#pragma once

#include "ui/widget.h"

namespace dorn {

/// Shows a modal alert over `parent` and returns the 1-based number of the button pressed.
/// `buttons` is one string: labels separated by "|", "&" before the mnemonic letter, "@" before the
/// default button, "#" before the escape button ("&Skip|@&Overwrite|#a&Bort"); without marks the
/// first is the default and the last the escape button. Closing the alert counts as the escape
/// button. Title and message are plain text, whatever they hold.
int ui_alert(Widget* parent, const char* title, const char* message, const char* buttons);

/// How long the alerts that other threads ask for take no answer after they have come up, in
/// milliseconds; 0 at the start.
void ui_set_alert_grace(int ms);

/// Closes every alert and modal dialog that is up, as the user would: alerts take their escape
/// button.
void ui_close_questions();

/// An alert with the one button "&Continue". The message is cut at 255 bytes. Returns 1.
[[gnu::format(printf, 3, 4)]] int wreport(Widget* parent, const char* title, const char* format,
                                          ...);

/// A question: 1 for "&Yes" (the default button), 2 for "&No".
[[gnu::format(printf, 3, 4)]] int wask(Widget* parent, const char* title, const char* format, ...);

/// Formats a text and puts it where that kind of widget shows its text: a window's title, a pane's
/// title, otherwise the widget's text. Returns the number of bytes formatted, -1 for a null widget.
[[gnu::format(printf, 2, 3)]] int wprintf(Widget* widget, const char* format, ...);

/// Sets the plain text that a line cut for its width tells in full when pointed at. A null widget:
/// nothing.
void wtip(Widget* widget, const char* text);

/// Shows `percent` (0 to 100) in a progress bar. A null widget: nothing.
void wpercent(Widget* widget, int percent);

/// With `on` == 1 the widget and its children take no input and show a busy cursor, and their
/// window is marked as blocked; any other `on` undoes that. A null widget: nothing.
void wblock(Widget* widget, int on);

/// The other way to block, with another busy cursor: a widget that is not a window is greyed out,
/// too. Non-zero `on` blocks, 0 undoes. A null widget: nothing.
void misc_block(Widget* widget, int on);

/// Whether the widget is blocked by wblock or misc_block.
bool ui_is_blocked(const Widget* widget);

/// A wblock that ends with the scope; inside another one it leaves the widget blocked.
class ScopedBlock {
  public:
    explicit ScopedBlock(Widget* widget) : widget_(ui_is_blocked(widget) ? nullptr : widget) {
        wblock(widget_, 1);
    }
    ~ScopedBlock() {
        wblock(widget_, 0);
    }
    ScopedBlock(const ScopedBlock&) = delete;
    ScopedBlock& operator=(const ScopedBlock&) = delete;

  private:
    Widget* widget_;
};

struct Area {
    int x, y, width, height;  // pixels
};

/// Where `child` goes to be centred over `parent` and still lie in `console`; its size is kept.
Area centred_area(const Area& parent, const Area& child, const Area& console);

/// Moves the window `child` to be centred over `parent` within the visible console area.
void wcenter(Widget* parent, Widget* child);

/// Brings the widget's window to the front and gives the widget the keyboard focus.
void wfocus(Widget* widget);

/// Brings the main window to the front and gives `widget` the keyboard focus.
void misc_give_focus(Widget* widget);

/// The first widget of class `class_name` found depth-first from `widget`, itself included; null
/// when there is none.
Widget* wrecursive_find_child_class(Widget* widget, const char* class_name);

/// Rings the bell.
void ui_bell();

}  // namespace dorn
