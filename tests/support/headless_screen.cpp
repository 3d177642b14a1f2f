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
#include <memory>
#include <mutex>
#include <sstream>

namespace dorn {

headless::Screen gScreen;

namespace {

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

Widget* w_instance(const char* name) {
    return &gScreen.widgets[name];
}

int ui_alert(Widget*, const char* title, const char* message, const char* buttons) {
    const headless::Alert alert{title, message, buttons};
    if (gScreen.on_alert) gScreen.on_alert(alert);
    gScreen.alerts.push_back(alert);
    if (gScreen.answers.empty()) return escape_button(alert.buttons);
    const int button = gScreen.answers.front();
    gScreen.answers.pop_front();
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
    widget->texts.push_back(text);
    return static_cast<int>(text.size());
}

void wtip(Widget*, const char*) {}

void wpercent(Widget* widget, int percent) {
    wprintf(widget, "%d", percent);
}

void ui_background() {
    if (gScreen.on_background) gScreen.on_background();
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
