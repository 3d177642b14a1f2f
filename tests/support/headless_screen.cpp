#include "support/headless_screen.h"

#include "platform/spare_thread.h"
#include "ui/background.h"
#include "ui/dialogs.h"
#include "ui/lock.h"
#include "ui/timer.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>
#include <mutex>

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
    std::function<void(const headless::Alert&)> alert_hook;
    std::function<void()> background;
    int background_calls = 0;
    int redraws = 0;
};

// Workers come here, too: the record is touched under this mutex alone.
std::mutex sMutex;

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

// Records the alert and takes its answer from the script.
int record_alert(const headless::Alert& alert) {
    const std::lock_guard lock(sMutex);
    screen().alerts.push_back(alert);
    if (screen().answers.empty()) return escape_button(alert.buttons);
    const int button = screen().answers.front();
    screen().answers.pop_front();
    return button;
}

// The gate: works run on the calling thread, one at a time.
std::recursive_mutex sGate;

}  // namespace

namespace headless {

void reset() {
    const std::lock_guard lock(sMutex);
    screen() = Screen{};
}

std::vector<std::string> texts(const std::string& instance) {
    const std::lock_guard lock(sMutex);
    const auto found = screen().widgets.find(instance);
    return found == screen().widgets.end() ? std::vector<std::string>{} : found->second->texts;
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

int redraws() {
    const std::lock_guard lock(sMutex);
    return screen().redraws;
}

GateHeld::GateHeld() {
    sGate.lock();
}

GateHeld::~GateHeld() {
    sGate.unlock();
}

void on_background(std::function<void()> hook) {
    const std::lock_guard lock(sMutex);
    screen().background = std::move(hook);
}

int background_calls() {
    const std::lock_guard lock(sMutex);
    return screen().background_calls;
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
    std::function<void(const headless::Alert&)> hook;
    {
        const std::lock_guard lock(sMutex);
        hook = screen().alert_hook;
    }
    if (hook) hook(alert);
    return record_alert(alert);
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

void wblock(Widget* widget, int on) {
    if (widget != nullptr) widget->blocked = on == 1;
}

bool ui_is_blocked(const Widget* widget) {
    return widget != nullptr && widget->blocked;
}

void ui_background() {
    std::function<void()> hook;
    {
        const std::lock_guard lock(sMutex);
        ++screen().background_calls;
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
    const std::lock_guard lock(sMutex);
    ++screen().redraws;
    return true;
}

void ui_handed(const std::function<void()>& work) {
    static std::mutex lane;
    const std::lock_guard held(lane);
    work();
}

void ui_serve_gate() {}

struct Timer::Host {};
Timer::Timer() = default;
Timer::~Timer() = default;
void Timer::arm(uint32_t) {}

}  // namespace dorn
