#include "ui/dialogs.h"

#include "platform/charset.h"
#include "ui/elided_label.h"
#include "ui/qt_widget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QScreen>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace dorn {

namespace {

[[gnu::format(printf, 1, 0)]] std::string format_text(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

constexpr std::size_t kReportSize = 256;

// Takes an incomplete UTF-8 character off the end of a message that was cut.
void end_between_characters(std::array<char, kReportSize>* message) {
    std::size_t start = kReportSize - 1;
    do {
        --start;
    } while (start > 0 && ((*message)[start] & 0xC0) == 0x80);
    const std::string_view last(message->data() + start, kReportSize - 1 - start);
    if ((last[0] & 0xC0) == 0xC0 && utf8_sequence_length(last) == 0) (*message)[start] = '\0';
}

}  // namespace

int wreport(Widget* parent, const char* title, const char* format, ...) {
    std::array<char, kReportSize> message;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(message.data(), message.size(), format, arguments);
    va_end(arguments);
    if (length >= static_cast<int>(kReportSize)) end_between_characters(&message);
    return ui_alert(parent, title, message.data(), "@#&Continue");
}

int wask(Widget* parent, const char* title, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string message = format_text(format, arguments);
    va_end(arguments);
    return ui_alert(parent, title, message.c_str(), "@&Yes|#&No");
}

int wprintf(Widget* widget, const char* format, ...) {
    if (widget == nullptr) return -1;
    va_list arguments;
    va_start(arguments, format);
    const std::string bytes = format_text(format, arguments);
    va_end(arguments);
    const QString text = ui_text(bytes.c_str());
    QWidget* target = qt(widget);
    if (target->isWindow())
        target->setWindowTitle(text);
    else if (auto* pane = qobject_cast<QGroupBox*>(target))
        pane->setTitle(text);
    else if (auto* label = qobject_cast<QLabel*>(target))
        label->setText(text);
    else if (auto* field = qobject_cast<QLineEdit*>(target))
        field->setText(text);
    else if (auto* button = qobject_cast<QAbstractButton*>(target))
        button->setText(text);
    return static_cast<int>(bytes.size());
}

void wtip(Widget* widget, const char* text) {
    if (auto* label = dynamic_cast<ElidedLabel*>(qt(widget)); label != nullptr)
        label->setToolTip(ui_text(text));
}

void wpercent(Widget* widget, int percent) {
    if (auto* bar = qobject_cast<QProgressBar*>(qt(widget)); bar != nullptr)
        bar->setValue(qBound(0, percent, 100));
}

Area centred_area(const Area& parent, const Area& child, const Area& console) {
    constexpr int kEndMargin = 25;
    constexpr int kStartMargin = 10;
    auto place = [](int start, int length, int own, int console_start, int console_length) {
        int at = start + (length - own) / 2;
        const int console_end = console_start + console_length;
        if (at + own > console_end) at = console_end - own - kEndMargin;
        if (at < console_start) at = console_start + kStartMargin;
        return static_cast<int>(static_cast<int16_t>(at));
    };
    return {place(parent.x, parent.width, child.width, console.x, console.width),
            place(parent.y, parent.height, child.height, console.y, console.height), child.width,
            child.height};
}

void wcenter(Widget* parent, Widget* child) {
    if (parent == nullptr || child == nullptr) return;
    auto area = [](const QRect& r) { return Area{r.x(), r.y(), r.width(), r.height()}; };
    const QWidget* over = qt(parent)->window();
    const QRect around = over->frameGeometry();
    const QRect console = over->screen()->availableGeometry();
    const Area at = centred_area(area(around), area(qt(child)->frameGeometry()), area(console));
    qt(child)->move(at.x, at.y);
}

void wfocus(Widget* widget) {
    if (widget == nullptr) return;
    QWidget* window = qt(widget)->window();
    window->raise();
    window->activateWindow();
    qt(widget)->setFocus(Qt::OtherFocusReason);
}

void misc_give_focus(Widget* widget) {
    if (widget == nullptr) return;
    // The keyboard is never taken from an alert, nor from another program that the user works in.
    const bool free = QApplication::activeModalWidget() == nullptr &&
                      QGuiApplication::applicationState() == Qt::ApplicationActive;
    QWidget* base = qt(w_instance("base"));
    if (free && base != nullptr && !base->isActiveWindow()) {
        base->raise();
        base->activateWindow();
    }
    qt(widget)->setFocus(Qt::OtherFocusReason);
}

Widget* wrecursive_find_child_class(Widget* widget, const char* class_name) {
    if (widget == nullptr) return nullptr;
    QWidget* top = qt(widget);
    if (qstrcmp(top->metaObject()->className(), class_name) == 0) return widget;
    for (QObject* child : top->children()) {
        if (!child->isWidgetType()) continue;
        Widget* found =
            wrecursive_find_child_class(handle(static_cast<QWidget*>(child)), class_name);
        if (found != nullptr) return found;
    }
    return nullptr;
}

void ui_bell() {
    QApplication::beep();
}

}  // namespace dorn
