// The modal alert behind every message and question.
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace dorn {

namespace {

struct AlertButton {
    QString label;
    bool is_default = false;
    bool is_escape = false;
};

QList<AlertButton> parse_buttons(const char* buttons) {
    QList<AlertButton> parsed;
    for (QString label : QString::fromUtf8(buttons).split(u'|')) {
        AlertButton button;
        while (label.startsWith(u'@') || label.startsWith(u'#')) {
            (label.front() == u'@' ? button.is_default : button.is_escape) = true;
            label.remove(0, 1);
        }
        button.label = label;
        parsed.append(button);
    }
    return parsed;
}

}  // namespace

int ui_alert(Widget* parent, const char* title, const char* message, const char* buttons) {
    // It goes with its parent when that is closed under it; nobody has pressed a button then.
    const QPointer<QMessageBox> owned = new QMessageBox(qt(parent));
    QMessageBox& box = *owned;
    box.setObjectName(QStringLiteral("alert"));
    box.setWindowTitle(ui_text(title));
    box.setTextFormat(Qt::PlainText);
    box.setText(ui_message_text(message));
    box.setIcon(QMessageBox::NoIcon);
    const QList<AlertButton> parsed = parse_buttons(buttons);
    QList<QPushButton*> pressed;
    QPushButton* escape = nullptr;
    for (const AlertButton& button : parsed) {
        pressed.append(box.addButton(button.label, QMessageBox::AcceptRole));
        pressed.last()->setAutoDefault(true);
        if (button.is_default) box.setDefaultButton(pressed.last());
        if (button.is_escape) escape = pressed.last();
    }
    if (box.defaultButton() == nullptr) box.setDefaultButton(pressed.first());
    if (escape == nullptr) escape = pressed.last();
    box.setEscapeButton(escape);
    box.exec();
    const qsizetype escaped = pressed.indexOf(escape);
    if (!owned) return static_cast<int>(escaped) + 1;
    const qsizetype index = pressed.indexOf(static_cast<QPushButton*>(box.clickedButton()));
    delete owned;
    return static_cast<int>(index >= 0 ? index : escaped) + 1;
}

void ui_close_questions() {
    while (QWidget* question = QApplication::activeModalWidget()) {
        if (!question->close()) return;
    }
}

}  // namespace dorn
