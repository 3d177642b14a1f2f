#include "support/operation.h"

#include "config/config.h"
#include "ui/widget.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace dorn {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::mutex sMutex;
std::condition_variable sEnded;
FileOp* sRunning = nullptr;
pid_t sThread = 0;  // of the operation that has ended
Clock::time_point sEnd;

void note_end(Widget*) {
    const std::lock_guard lock(sMutex);
    sRunning = nullptr;
    sThread = gettid();
    sEnd = Clock::now();
    sEnded.notify_all();
}

std::string content(const fs::path& file) {
    std::string bytes(fs::file_size(file), '\0');
    std::ifstream(file, std::ios::binary).read(bytes.data(), static_cast<long>(bytes.size()));
    return bytes;
}

std::string entry_text(const fs::directory_entry& entry) {
    switch (entry.symlink_status().type()) {
        case fs::file_type::directory:
            return "d";
        case fs::file_type::fifo:
            return "p";
        case fs::file_type::symlink:
            return "l" + fs::read_symlink(entry.path()).native();
        case fs::file_type::regular:
            return "f" + content(entry.path());
        default:
            return "?";
    }
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
    std::unique_lock lock(sMutex);
    sThread = 0;
    const Clock::time_point begin = Clock::now();
    sRunning = fop(request.kind, request.directory.c_str(), request.names,
                   request.destination.c_str(), request.flags, &display, request.on_item_done);
    if (sRunning == nullptr) return -1;
    sEnded.wait(lock, [] { return sThread != 0; });
    const fs::path thread = "/proc/self/task/" + std::to_string(sThread);
    while (fs::exists(thread))
        std::this_thread::yield();
    return std::chrono::duration<double, std::milli>(sEnd - begin).count();
}

FileOp* running_operation() {
    const std::lock_guard lock(sMutex);
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
    int number = 1;
    std::string text;
    for (const char c : buttons + "|") {
        if (c == '|') {
            if (text == label) return number;
            ++number;
            text.clear();
        } else if (c != '@' && c != '#' && c != '&') {
            text += c;
        }
    }
    return 0;
}

int open_descriptors() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

}  // namespace dorn
