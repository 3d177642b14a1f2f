// Between the opaque handles and the toolkit's objects; for the Qt side only.
#pragma once

#include "ui/widget.h"

#include <QFont>
#include <QIcon>
#include <QString>
#include <QWidget>

#include <string>

class QDialog;

namespace dorn {

inline Widget* handle(QWidget* widget) {
    return reinterpret_cast<Widget*>(widget);
}
inline QWidget* qt(Widget* widget) {
    return reinterpret_cast<QWidget*>(widget);
}
inline const QWidget* qt(const Widget* widget) {
    return reinterpret_cast<const QWidget*>(widget);
}

/// The widget with that instance name as its Qt class; null when it is missing or another class.
template <class T>
T* qt_instance(const char* name) {
    return dynamic_cast<T*>(qt(w_instance(name)));
}

/// Makes every named widget below `root`, itself included, known to w_instance.
void ui_register_instances(QWidget* root);

/// Closes the dialog, as by Escape, when the main window is hidden: hidden, that would leave it
/// behind.
void ui_close_with_base(QDialog* dialog);

/// The font that a font name of the configuration record stands for: a family, a size in points of
/// two digits or more, then "b" and "i" for bold and italic ("DejaVu Sans10b"). "TextFont" is the
/// desktop's own font, its size relative to the 9 points that are usual: "TextFont08" is a little
/// smaller than the desktop's text, whatever size that has. A name that is none gives the desktop's
/// own font.
QFont ui_font(const char* name);
/// The name by which ui_font gives that font: its family, size, weight (bold or not) and slant.
std::string ui_font_name(const QFont& font);

/// Makes our own pictures the fallback icon theme ("dorn"), so that a themed icon is found where
/// the desktop has none. To be called before the application object exists.
void ui_setup_icon_theme();

/// The picture of that name: the desktop theme's icon `theme_name` where given and present, else
/// our own from the resources (":/pictures/NAME.svg"). Ours is drawn at the device's pixels, its
/// text-coloured parts follow the application's palette as it is when painted (disabled and
/// selected have their own colours), and a coloured picture is faded when disabled. A glyph on a
/// dark palette is always ours. An unknown name gives a null icon. Event-loop thread only.
QIcon ui_icon(const char* own_name, const char* theme_name = nullptr);

/// `text` on one line as it can be shown: a newline and a tab as arrows, other control characters,
/// direction overrides and invalid UTF-8 as replacement characters. For display only, never the way
/// back to a file.
QString ui_text(const char* text);
/// The same with its lines, for the text of an alert.
QString ui_message_text(const char* text);

}  // namespace dorn
