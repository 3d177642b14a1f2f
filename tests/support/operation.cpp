#include "support/operation.h"

#include "config/config.h"
#include "support/sandbox.h"
#include "ui/widget.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace dorn {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::atomic<FileOp*> sRunning = nullptr;
std::atomic<pid_t> sThread = 0;  // of the operation that has ended
Clock::time_point sEnd;

void note_end(Widget*) {
    sEnd = Clock::now();
    sThread = gettid();
    sThread.notify_all();
}

std::string entry_text(const fs::directory_entry& entry) {
    if (entry.is_symlink()) return ">" + fs::read_symlink(entry.path()).native();
    if (entry.is_directory()) return "/";
    if (entry.is_regular_file()) return "=" + read_file(entry.path());
    return entry.is_fifo() ? "|" : "?";
}

}  // namespace

double run_operation(const Request& request) {
    static Config no_settings{};
    if (gConfig == nullptr) gConfig = &no_settings;
    gDonePause = 0;
    fop_set_ended_cb(note_end);
    SlotDisplay display;
    display.panel = w_instance("slot");
    display.from_widget = w_instance("slot_from_text");
    sThread = 0;
    const Clock::time_point begin = Clock::now();
    sRunning = fop(request.kind, request.directory.c_str(), request.names,
                   request.destination.c_str(), request.flags, &display, request.on_item_done);
    if (sRunning == nullptr) return -1;
    sRunning.notify_all();
    sThread.wait(0);
    sRunning = nullptr;
    const fs::path thread = "/proc/self/task/" + std::to_string(sThread);
    while (fs::exists(thread))
        std::this_thread::yield();
    return std::chrono::duration<double, std::milli>(sEnd - begin).count();
}

FileOp* running_operation() {
    sRunning.wait(nullptr);
    return sRunning;
}

Tree tree_of(const std::string& directory) {
    Tree tree;
    if (!fs::exists(directory)) return tree;
    for (const auto& entry : fs::recursive_directory_iterator(directory))
        tree[entry.path().lexically_relative(directory)] = entry_text(entry);
    return tree;
}

int button_of(const std::string& buttons, const std::string& label) {
    std::istringstream stream(buttons);
    int number = 1;
    for (std::string text; std::getline(stream, text, '|'); ++number) {
        std::erase_if(text, [](char c) { return c == '@' || c == '#' || c == '&'; });
        if (text == label) return number;
    }
    return 0;
}

long open_descriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

}  // namespace dorn
