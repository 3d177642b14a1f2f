#include "support/headless_screen.h"

#include "platform/spare_thread.h"
#include "ui/background.h"
#include "ui/dialogs.h"
#include "ui/lock.h"
#include "ui/timer.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

namespace dorn {

struct Widget {
    std::vector<std::string> texts;
};

namespace {

struct Screen {
    std::map<std::string, std::unique_ptr<Widget>> widgets;
    std::vector<headless::Alert> alerts;
    std::deque<int> answers;
    std::function<void(const headless::Alert&)> alert_hook;
    std::function<void()> background;
};

// Workers come here, too: the record is touched under this mutex alone.
std::mutex sMutex;

Screen& screen() {
    static Screen the_screen;
    return the_screen;
}

[[gnu::format(printf, 1, 0)]] std::string format_text(const char* format, va_list arguments) {
    char* made = nullptr;
    if (vasprintf(&made, format, arguments) < 0) std::abort();
    const std::unique_ptr<char, decltype(&std::free)> text(made, std::free);
    return text.get();
}

// The button whose marks hold a "#", else the last one.
int escape_button(const std::string& buttons) {
    std::istringstream stream(buttons);
    int number = 0;
    for (std::string text; std::getline(stream, text, '|');) {
        ++number;
        if (text.substr(0, text.find_first_not_of("@#")).find('#') != text.npos) return number;
    }
    return number;
}

// The gate: works run on the calling thread, one at a time.
std::recursive_mutex sGate;

}  // namespace

namespace headless {

void reset() {
    const std::lock_guard lock(sMutex);
    screen() = Screen{};
}

std::vector<std::string> texts(const char* instance) {
    const Widget* widget = w_instance(instance);
    const std::lock_guard lock(sMutex);
    return widget->texts;
}

std::vector<Alert> alerts() {
    const std::lock_guard lock(sMutex);
    return screen().alerts;
}

void answer(std::vector<int> buttons) {
    const std::lock_guard lock(sMutex);
    screen().answers.assign(buttons.begin(), buttons.end());
}

void on_alert(std::function<void(const Alert&)> hook) {
    const std::lock_guard lock(sMutex);
    screen().alert_hook = std::move(hook);
}

void on_background(std::function<void()> hook) {
    const std::lock_guard lock(sMutex);
    screen().background = std::move(hook);
}

}  // namespace headless

Widget* w_instance(const char* name) {
    const std::lock_guard lock(sMutex);
    std::unique_ptr<Widget>& widget = screen().widgets[name];
    if (!widget) widget = std::make_unique<Widget>();
    return widget.get();
}

int ui_alert(Widget*, const char* title, const char* message, const char* buttons) {
    const headless::Alert alert{title, message, buttons};
    std::unique_lock lock(sMutex);
    if (const auto hook = screen().alert_hook) {
        lock.unlock();
        hook(alert);
        lock.lock();
    }
    screen().alerts.push_back(alert);
    if (screen().answers.empty()) return escape_button(alert.buttons);
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
    const std::string text = format_text(format, arguments);
    va_end(arguments);
    const std::lock_guard lock(sMutex);
    widget->texts.push_back(text);
    return static_cast<int>(text.size());
}

void wtip(Widget*, const char*) {}

void wpercent(Widget* widget, int percent) {
    wprintf(widget, "%d", percent);
}

void ui_background() {
    std::function<void()> hook;
    {
        const std::lock_guard lock(sMutex);
        hook = screen().background;
    }
    if (hook) hook();
}

bool ui_bounded(std::function<void()> work, int timeout_ms) {
    return spare_call(std::move(work), timeout_ms);
}

struct GateTicket::State {
    std::atomic<bool> closed{false};
};

GateTicket::GateTicket() : state_(std::make_shared<State>()) {}

void GateTicket::close() {
    state_->closed = true;
}

void ui_locked(const std::function<void()>& work) {
    const std::lock_guard held(sGate);
    work();
}

bool ui_locked_if_free(const std::function<void()>& work) {
    const std::unique_lock held(sGate, std::try_to_lock);
    if (held) work();
    return held.owns_lock();
}

bool ui_try_locked(const GateTicket& ticket, std::function<void()> work) {
    const std::unique_lock held(sGate, std::try_to_lock);
    if (!held || ticket.state()->closed) return false;
    work();
    return true;
}

void ui_handed(const std::function<void()>& work) {
    static std::mutex lane;
    const std::lock_guard held(lane);
    work();
}

struct Timer::Host {};
Timer::Timer() = default;
Timer::~Timer() = default;
void Timer::arm(uint32_t) {}

}  // namespace dorn
