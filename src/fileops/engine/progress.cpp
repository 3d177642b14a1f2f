#include "fileops/engine/progress.h"

#include "dirmodel/name_translation.h"
#include "fileops/engine/worker.h"
#include "ui/dialogs.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <unistd.h>

namespace dorn {

namespace {

constexpr int64_t kSecond = 1000000000;         // nanoseconds
constexpr int64_t kRedrawEvery = kSecond / 10;  // nanoseconds
constexpr int64_t kSeenEvery = 16'000'000;      // nanoseconds; a screen shows no more
constexpr useconds_t kPauseLook = 50000;        // microseconds between looks at `paused`
constexpr double kShortest = 0.001;             // seconds from which a rate can be told
constexpr std::size_t kShownPath = 60;          // bytes of a path in its line
constexpr std::size_t kFirstSeparatorFrom = 2;  // bytes of a path's start that are no head
constexpr std::ptrdiff_t kRoomForHead = 6;      // bytes of `max` that the end leaves

int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * kSecond + time.tv_nsec;
}

timespec monotonic() {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

// Runs some milliseconds behind, and costs next to nothing.
timespec coarse() {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return time;
}

bool is_due(const FileOp* op, int64_t every) {
    return nanoseconds(coarse()) - nanoseconds(op->last_redraw) >= every;
}

void store(std::string& text, const char* given) {
    if (given != nullptr) text = given;
}

// One of the two lines: the label, and the path as it fits.
std::string line(const std::string& label, std::string path) {
    path.resize(std::strlen(shrink_name(path.data(), kShownPath)));
    return label + fname_decode(path.c_str(), nullptr);
}

std::string count_text(const FileOp* op) {
    const int32_t shown = std::min(op->files_done, op->total_files - 1) + 1;
    return std::to_string(shown) + " of " + std::to_string(op->total_files);
}

}  // namespace

void fop_redraw(FileOp* op) {
    const int error = errno;
    const SlotDisplay& display = *op->display;
    const bool handed = ui_try_locked(
        display.ticket,
        [title = display.title_text, from = display.from_widget, to = display.to_widget,
         count = display.count_text, bar = display.progress_bar, time = display.time_text,
         title_text = display.title, from_text = line(display.from_label, display.from_text),
         to_text = line(display.to_label, display.to_text), from_tip = shown(display.from_text),
         to_tip = shown(display.to_text), count_shown = count_text(op), percent = display.percent,
         time_shown = time_left_text(display.time_left)] {
            wprintf(title, "%s", title_text.c_str());
            wprintf(from, "%s", from_text.c_str());
            wprintf(to, "%s", to_text.c_str());
            wtip(from, from_tip.c_str());
            wtip(to, to_tip.c_str());
            wprintf(count, "%s", count_shown.c_str());
            wpercent(bar, percent);
            wprintf(time, "%s", time_shown.c_str());
        });
    if (handed) op->last_redraw = coarse();
    errno = error;
}

void fop_update_info(FileOp* op, const char* title, const char* from_label, const char* from_text,
                     const char* to_label, const char* to_text, int32_t percent,
                     int32_t time_left) {
    SlotDisplay& display = *op->display;
    store(display.title, title);
    store(display.from_label, from_label);
    store(display.from_text, from_text);
    store(display.to_label, to_label);
    store(display.to_text, to_text);
    if (percent == kPercentNone) display.percent = 0;
    if (percent >= 0) display.percent = std::min(percent, 100);
    if (time_left != kTimeKeep) display.time_left = time_left;
    const int64_t every = percent == kPercentKeep ? kSeenEvery : kRedrawEvery;
    if (time_left == 0 || is_due(op, every)) fop_redraw(op);
}

bool fop_redraw_due(const FileOp* op) {
    return is_due(op, kRedrawEvery);
}

int32_t fop_calc_time_left(FileOp* op, uint64_t done, uint64_t total) {
    const int64_t now = nanoseconds(monotonic());
    if (nanoseconds(op->eta_start) == 0) {
        op->eta_start = {now / kSecond, now % kSecond};
        return -1;
    }
    const double elapsed = static_cast<double>(now - nanoseconds(op->eta_start)) / kSecond;
    if (elapsed <= kShortest) return -2;
    if (done == 0) return -1;
    const double rate = static_cast<double>(done) / elapsed;
    const double left = done < total ? static_cast<double>(total - done) : 0;
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::min(left / rate + 1.0, static_cast<double>(kMost)));
}

void fop_shift_estimate(FileOp* op, const timespec& start) {
    const int64_t begun = nanoseconds(op->eta_start);
    if (begun == 0) return;
    const int64_t shifted = begun + nanoseconds(monotonic()) - nanoseconds(start);
    op->eta_start = {shifted / kSecond, shifted % kSecond};
}

char* shrink_name(char* text, std::size_t max) {
    const std::size_t length = std::strlen(text);
    if (length <= max) return text;
    const char* colon = std::strchr(text, ':');
    const std::size_t start = colon == nullptr ? 0 : static_cast<std::size_t>(colon - text);
    if (start + kFirstSeparatorFrom >= length) return text;
    char* head = std::strchr(text + start + kFirstSeparatorFrom, '/');
    if (head == nullptr) return text;
    const std::ptrdiff_t room = static_cast<std::ptrdiff_t>(max) - kRoomForHead;
    const char* end = text + length;
    const char* rest = head;
    while (rest != end && end - rest >= room) {
        const char* next = std::strchr(rest + 1, '/');
        rest = next == nullptr ? end : next;
    }
    if (rest - head < 2) return text;  // "*" and the rest would be longer than what they replace
    head[1] = '*';
    std::memmove(head + 2, rest, static_cast<std::size_t>(end - rest) + 1);
    return text;
}

std::string time_left_text(int32_t seconds) {
    if (seconds <= 0) return " ";
    if (seconds < 60) return std::to_string(seconds) + " seconds";
    const bool hours = seconds >= 3600;
    char text[32];
    std::snprintf(text, sizeof text, "%d:%02d %s", seconds / (hours ? 3600 : 60),
                  hours ? seconds % 3600 / 60 : seconds % 60, hours ? "hours" : "minutes");
    return text;
}

int fop_pause_trap(FileOp* op) {
    if (op->cancelled != 0) return 1;
    if (op->paused == 0) return 0;
    const timespec start = monotonic();
    fop_redraw(op);
    while (op->paused != 0 && op->cancelled == 0)
        usleep(kPauseLook);
    fop_shift_estimate(op, start);
    return op->cancelled != 0 ? 1 : 0;
}

}  // namespace dorn
