#include "destmenus/dest_scan.h"

#include "destmenus/subdirectory_check.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/path_text.h"
#include "dirmodel/status_chain.h"
#include "platform/dirstream.h"
#include "platform/signals.h"
#include "ui/lock.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <pthread.h>
#include <unistd.h>

namespace dorn {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Names = std::vector<std::string>;
using ScanPtr = std::shared_ptr<DestScan>;

constexpr std::size_t kStackSize = 65536;  // bytes
constexpr int kPollMs = 10;                // how soon a waiting thread sees that it is to stop
constexpr useconds_t kEndPollUs = 1000;
// What has been read is shown after this time, and again each time that twice as much has passed.
constexpr milliseconds kFirstShowing{40};

// Has the event loop run `work`, unless the scan is stopped by then. False once it is.
bool deliver(const DestScan& scan, const std::function<void()>& work) {
    if (scan.stop != 0) return false;
    ui_handed([&] {
        if (scan.stop == 0) work();
    });
    return scan.stop == 0;
}

int compare_names(const void* a, const void* b) {
    return _list_cmp(*static_cast<const char* const*>(a), *static_cast<const char* const*>(b));
}

Names sorted(const Names& names) {
    std::vector<const char*> order;
    order.reserve(names.size());
    for (const std::string& name : names)
        order.push_back(name.c_str());
    if (order.empty()) return {};  // qsort takes no null pointer
    std::qsort(order.data(), order.size(), sizeof(const char*), compare_names);
    return {order.begin(), order.end()};
}

bool show(const DestScan& scan, const Names& names, bool whole) {
    Names shown = sorted(names);
    return deliver(scan, [&] { scan.on_names(std::move(shown), whole); });
}

bool is_subdirectory(const RawDirEntry& entry, bool hide_dot) {
    if (hide_dot && raw_name(entry).starts_with('.')) return false;
    FileStatus status{};
    return stat_optimize(&entry, &status) == 0 && is_directory(status);
}

// The names in the order of the disk, shown in between where reading takes long; nothing when the
// scan is stopped. A directory that can't be read has none.
std::optional<Names> read_names(const DestScan& scan) {
    Names names;
    std::size_t shown = 0;
    milliseconds pause = kFirstShowing;
    Clock::time_point next_showing = Clock::now() + pause;
    const DirStreamPtr stream = dirstream_open(scan.path.c_str(), scan.limit_ms);
    int opened = 0;
    while ((opened = dirstream_opened(*stream, kPollMs)) == 0) {
        if (scan.stop != 0) return std::nullopt;
    }
    while (opened == 1) {
        if (scan.stop != 0) return std::nullopt;
        const RawDirEntry* entry = nullptr;
        const StreamState state = dirstream_next(*stream, kPollMs, &entry);
        if (state == StreamState::End || state == StreamState::Failed) break;
        if (state == StreamState::Entry && is_subdirectory(*entry, scan.hide_dot))
            names.emplace_back(raw_name(*entry));
        if (names.size() == shown || Clock::now() < next_showing) continue;
        if (!show(scan, names, false)) return std::nullopt;
        shown = names.size();
        next_showing = Clock::now() + (pause *= 2);
    }
    return names;
}

void look_at_children(const ScanPtr& scan, const Names& names) {
    const auto stopped = [scan] { return scan->stop != 0; };
    const auto tell = [&scan](std::size_t first, const std::vector<DestKind>& kinds) {
        deliver(*scan, [&] { scan->on_checked(first, kinds); });
    };
    check_subdirectories({scan->path, scan->hide_dot, scan->limit_ms}, names, stopped, tell);
}

void scan_directory(const ScanPtr& scan) {
    std::optional<Names> names = read_names(*scan);
    if (!names) return;
    *names = sorted(*names);
    if (show(*scan, *names, true)) look_at_children(scan, *names);
}

void* dtm_scanning_thread(void* argument) {
    const std::unique_ptr<ScanPtr> owned(static_cast<ScanPtr*>(argument));
    const ScanPtr& scan = *owned;
    try {
        scan_directory(scan);
    } catch (const std::bad_alloc&) {
        deliver(*scan, [&scan] { scan->on_no_memory(); });
    }
    scan->finished = 1;
    return nullptr;
}

// 0, or the error number; the thread takes `argument` over.
int start_thread(ScanPtr* argument) {
    pthread_attr_t attributes;
    if (const int error = pthread_attr_init(&attributes); error != 0) return error;
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    int error = pthread_attr_setstacksize(&attributes, kStackSize);
    const SignalsBlocked blocked;
    pthread_t thread{};
    if (error == 0) error = pthread_create(&thread, &attributes, dtm_scanning_thread, argument);
    pthread_attr_destroy(&attributes);
    return error;
}

}  // namespace

int dest_scan_start(const std::shared_ptr<DestScan>& scan) {
    auto argument = std::make_unique<ScanPtr>(scan);
    scan->started = 1;
    if (start_thread(argument.get()) == 0) {
        static_cast<void>(argument.release());
        return 0;
    }
    scan->finished = 1;
    return -1;
}

void dest_scan_end(DestScan* scan) {
    if (scan == nullptr || scan->started == 0) return;
    scan->stop = 1;
    for (;;) {
        ui_serve_gate();
        if (scan->finished != 0) break;
        usleep(kEndPollUs);
    }
    scan->on_names = nullptr;
    scan->on_checked = nullptr;
    scan->on_no_memory = nullptr;
}

int _list_cmp(const char* a, const char* b) {
    if (misc_all_digits(a) == 0 || misc_all_digits(b) == 0) return std::strcmp(a, b);
    const long long left = std::strtoll(a, nullptr, 10);
    const long long right = std::strtoll(b, nullptr, 10);
    return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace dorn
