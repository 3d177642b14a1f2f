// The modal alert behind every message and question.
//
// Its text has a fixed width, wraps anywhere and scrolls when it is long: a path of 4000 bytes can
// be read, and copied, in full, and the buttons stay where they are from one question to the next.
#include "ui/dialogs.h"
#include "ui/lock.h"
#include "ui/qt_widget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QStyle>
#include <QTextLayout>
#include <QTimer>

#include <cmath>

namespace dorn {

namespace {

constexpr int kTextCharacters = 64;  // width of the text
constexpr int kMostLines = 12;       // height of the text, from which on it scrolls

int sGraceMs = 0;

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

int line_count(const QPlainTextEdit* view, int width) {
    int lines = 0;
    const qreal inside = width - 2 * view->document()->documentMargin();
    for (const QString& paragraph : view->toPlainText().split(u'\n')) {
        QTextLayout layout(paragraph, view->font());
        QTextOption option;
        option.setWrapMode(view->wordWrapMode());
        layout.setTextOption(option);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        for (; line.isValid(); line = layout.createLine()) {
            line.setLineWidth(inside);
            ++lines;
        }
        layout.endLayout();
        if (paragraph.isEmpty()) ++lines;
    }
    return lines;
}

// The message as text that can be read, selected and scrolled; it looks like a label.
QPlainTextEdit* message_view(const QString& text, QWidget* parent) {
    auto* view = new QPlainTextEdit(text, parent);
    view->setObjectName(QStringLiteral("alert_text"));
    view->setAccessibleName(QStringLiteral("Message"));
    view->setReadOnly(true);
    view->setFrameShape(QFrame::NoFrame);
    // On the side where the layout begins, in the text's own direction.
    QTextOption option = view->document()->defaultTextOption();
    option.setAlignment(QStyle::visualAlignment(view->layoutDirection(), Qt::AlignLeft));
    option.setTextDirection(Qt::LayoutDirectionAuto);
    view->document()->setDefaultTextOption(option);
    view->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->viewport()->setAutoFillBackground(false);
    const int width = kTextCharacters * view->fontMetrics().averageCharWidth();
    const int lines = line_count(view, width);
    const bool scrolls = lines > kMostLines;
    view->setFocusPolicy(scrolls ? Qt::StrongFocus : Qt::ClickFocus);
    view->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    const double height = qMin(lines, kMostLines) * view->fontMetrics().lineSpacing() +
                          2 * view->document()->documentMargin();
    view->setFixedSize(width, static_cast<int>(std::ceil(height)));
    return view;
}

void show_text(QMessageBox* box, const char* message) {
    box->setTextFormat(Qt::PlainText);
    box->setText(ui_message_text(message));
    box->setAccessibleDescription(box->text());
    auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (label == nullptr) return;
    delete box->layout()->replaceWidget(label, message_view(box->text(), box));
    label->hide();
}

// The role keeps the buttons in their order on every desktop. Returns the escape button.
QPushButton* add_buttons(QMessageBox* box, const char* buttons, QList<QPushButton*>* added) {
    QPushButton* escape = nullptr;
    for (const AlertButton& button : parse_buttons(buttons)) {
        QPushButton* shown = box->addButton(button.label, QMessageBox::ActionRole);
        shown->setAutoDefault(true);
        added->append(shown);
        if (button.is_default) box->setDefaultButton(shown);
        if (button.is_escape) escape = shown;
    }
    if (box->defaultButton() == nullptr) box->setDefaultButton(added->first());
    if (escape == nullptr) escape = added->last();
    box->setEscapeButton(escape);
    return escape;
}

// A question of an operation comes when it likes: what the user is typing or clicking at that
// moment elsewhere must not answer it.
void wait_before_answers(QMessageBox* box, const QList<QPushButton*>& buttons) {
    if (sGraceMs == 0 || !ui_gate_is_held_by_other()) return;
    for (QPushButton* button : buttons)
        button->setEnabled(false);
    QTimer::singleShot(sGraceMs, box, [box, buttons] {
        for (QPushButton* button : buttons)
            button->setEnabled(true);
        box->defaultButton()->setFocus();
    });
}

// Over which window an alert stands. A question of an operation stands over the main window while
// that is there: the operations window may have come up a moment ago, before the window manager
// told where it put it, and the keyboard is to go back to the list afterwards.
QWidget* owner_of_alert(Widget* parent) {
    Widget* base = w_instance("base");
    const bool over_base = ui_gate_is_held_by_other() && base != nullptr && qt(base)->isVisible();
    return qt(over_base ? base : parent);
}

}  // namespace

int ui_alert(Widget* parent, const char* title, const char* message, const char* buttons) {
    // On the heap: it goes with its parent, and is then answered by its escape button.
    const QPointer<QMessageBox> box = new QMessageBox(owner_of_alert(parent));
    box->setObjectName(QStringLiteral("alert"));
    box->setWindowTitle(ui_text(title));
    box->setIcon(QMessageBox::NoIcon);
    show_text(box, message);
    QList<QPushButton*> added;
    const QPushButton* escape_button = add_buttons(box, buttons, &added);
    const qsizetype escape = added.indexOf(escape_button);
    wait_before_answers(box, added);
    box->defaultButton()->setFocus();
    QApplication::alert(box);
    box->exec();
    qsizetype index = -1;
    if (box) index = added.indexOf(static_cast<QPushButton*>(box->clickedButton()));
    delete box;
    return static_cast<int>(index >= 0 ? index : escape) + 1;
}

void ui_set_alert_grace(int ms) {
    sGraceMs = ms;
}

void ui_close_questions() {
    while (QWidget* question = QApplication::activeModalWidget()) {
        if (!question->close()) return;
    }
}

}  // namespace dorn
