#include "fileops/engine/prompts.h"

#include "fileops/engine/progress.h"
#include "ui/dialogs.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <functional>

namespace dorn {

namespace {

constexpr std::size_t kOldNameSize = 255;  // bytes
constexpr std::size_t kNewNameSize = 47;   // bytes
constexpr std::size_t kCharacterSize = 4;  // bytes of the longest

std::atomic<void (*)(Widget*)> sLongNameDialog{nullptr};

[[gnu::format(printf, 1, 0)]] std::string format_text(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

// Shows something through `door`, unless the operation is cancelled before it is its turn. The time
// until it is closed does not count.
template <typename Door>
void show(FileOp* op, Door door, const std::function<void()>& work) {
    timespec start;
    clock_gettime(CLOCK_MONOTONIC, &start);
    door([&] {
        if (op->cancelled == 0) work();
    });
    fop_shift_estimate(op, start);
}

// The button that begins with "#", perhaps behind "@"; without one the last. `buttons` is separated
// by "|".
int escape_button(const std::string& buttons) {
    int button = 1;
    bool begins = true;
    for (const char c : buttons) {
        if (begins && c == '#') return button;
        if (c == '|') ++button;
        begins = c == '|' || (begins && c == '@');
    }
    return button;
}

std::string base_name(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

std::string oldfile;
std::string newfile;
int do_rename = 0;

int fop_alert(FileOp* op, const char* title, const char* buttons, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string message = format_text(format, arguments);
    va_end(arguments);
    std::string labels = buttons;
    std::replace(labels.begin(), labels.end(), ',', '|');
    int button = escape_button(labels);
    if (op->cancelled != 0) return button;
    fop_redraw(op);
    show(op, ui_locked,
         [&] { button = ui_alert(op->display->panel, title, message.c_str(), labels.c_str()); });
    return button;
}

void fop_errinfo(FileOp* op, const char* title, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string message = format_text(format, arguments);
    va_end(arguments);
    show(op, ui_locked_if_free,
         [&] { ui_alert(op->display->panel, title, message.c_str(), "&Close"); });
}

void fop_ENOMEM(FileOp* op) {
    fop_errinfo(op, "Memory Allocation", "Out of memory!");
}

int FilenameTooLong(FileOp* op, const std::string& source, std::string* destination) {
    const auto dialog = sLongNameDialog.load();
    if (dialog == nullptr) return 0;
    int renamed = 0;
    show(op, ui_locked, [&] {
        oldfile = base_name(source).substr(0, kOldNameSize);
        newfile = fop_cut_name(base_name(*destination));
        do_rename = 0;
        dialog(op->display->panel);
        renamed = do_rename;
        if (renamed != 0) *destination = newfile;
    });
    return renamed;
}

std::string fop_cut_name(std::string name) {
    if (name.size() <= kNewNameSize) return name;
    std::size_t end = kNewNameSize;
    while (end > kNewNameSize - kCharacterSize && (name[end] & 0xC0) == 0x80)
        --end;
    name.resize((name[end] & 0xC0) == 0x80 ? kNewNameSize : end);
    return name;
}

void fop_set_long_name_cb(void (*dialog)(Widget* parent)) {
    sLongNameDialog = dialog;
}

}  // namespace dorn
