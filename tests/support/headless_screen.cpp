#include "support/headless_screen.h"

#include "platform/spare_thread.h"
#include "ui/background.h"
#include "ui/dialogs.h"
#include "ui/timer.h"

#include <cstdarg>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>

namespace dorn {

struct Widget {
    std::vector<std::string> texts;
    bool blocked = false;
};

namespace {

struct Screen {
    std::map<std::string, std::unique_ptr<Widget>> widgets;
    std::vector<headless::Alert> alerts;
    std::deque<int> answers;
    std::function<void()> background;
    int background_calls = 0;
};

Screen& screen() {
    static Screen the_screen;
    return the_screen;
}

[[gnu::format(printf, 1, 0)]] std::string format_text(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

int escape_button(const std::string& buttons) {
    int button = 1;
    bool marks = true;
    for (const char c : buttons) {
        if (c == '|') {
            ++button;
            marks = true;
        } else if (marks && c == '#') {
            return button;
        } else if (c != '@') {
            marks = false;
        }
    }
    return button;
}

}  // namespace

namespace headless {

void reset() {
    screen() = Screen{};
}

std::vector<std::string> texts(const std::string& instance) {
    const auto found = screen().widgets.find(instance);
    return found == screen().widgets.end() ? std::vector<std::string>{} : found->second->texts;
}

const std::vector<Alert>& alerts() {
    return screen().alerts;
}

void answer(std::vector<int> buttons) {
    screen().answers.assign(buttons.begin(), buttons.end());
}

void on_background(std::function<void()> hook) {
    screen().background = std::move(hook);
}

int background_calls() {
    return screen().background_calls;
}

}  // namespace headless

Widget* w_instance(const char* name) {
    std::unique_ptr<Widget>& widget = screen().widgets[name];
    if (!widget) widget = std::make_unique<Widget>();
    return widget.get();
}

int ui_alert(Widget*, const char* title, const char* message, const char* buttons) {
    screen().alerts.push_back({title, message, buttons});
    if (screen().answers.empty()) return escape_button(buttons);
    const int button = screen().answers.front();
    screen().answers.pop_front();
    return button;
}

int wreport(Widget* parent, const char* title, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string message = format_text(format, arguments);
    va_end(arguments);
    return ui_alert(parent, title, message.c_str(), "@#&Continue");
}

int wprintf(Widget* widget, const char* format, ...) {
    if (widget == nullptr) return -1;
    va_list arguments;
    va_start(arguments, format);
    widget->texts.push_back(format_text(format, arguments));
    va_end(arguments);
    return static_cast<int>(widget->texts.back().size());
}

void wblock(Widget* widget, int on) {
    if (widget != nullptr) widget->blocked = on == 1;
}

bool ui_is_blocked(const Widget* widget) {
    return widget != nullptr && widget->blocked;
}

void ui_background() {
    ++screen().background_calls;
    if (screen().background) screen().background();
}

bool ui_bounded(std::function<void()> work, int timeout_ms) {
    return spare_call(std::move(work), timeout_ms);
}

struct Timer::Host {};
Timer::Timer() = default;
Timer::~Timer() = default;
void Timer::arm(uint32_t) {}

}  // namespace dorn
