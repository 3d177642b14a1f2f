// The scan behind a submenu of directories: a thread that reads the subdirectories of one directory
// and then looks which of them have subdirectories of their own.
//
//     auto scan = std::make_shared<DestScan>();
//     scan->path = ...; scan->on_names = ...; scan->on_checked = ...;
//     if (dest_scan_start(scan) != 0) ...
//     ...
//     dest_scan_end(scan.get());
//
// The thread never waits for a file system that doesn't answer: what may hang is done by threads of
// the directory stream and by spare threads, which are left behind. So it ends within moments of
// being told to stop. It reaches the screen through the gate only, also while a question is up.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dorn {

enum class DestKind : uint8_t {
    Unknown,  // not looked at yet, or it did not answer in time
    Opens,    // has subdirectories
    Plain,    // has none, or can't be read
};

struct DestScan {
    // Set before the start, not changed until the end.
    std::string path;       // bytes
    bool hide_dot = false;  // names that begin with "." are passed over
    int limit_ms = 10000;   // how long the system may take for one entry
    // Called on the event loop, and not any more once `stop` is set. on_names comes with the sorted
    // names read so far, once or several times, the last time with `whole`; then on_checked comes
    // for runs of them, `first` being the index of the first. on_no_memory ends a scan.
    std::function<void(std::vector<std::string> names, bool whole)> on_names;
    std::function<void(std::size_t first, const std::vector<DestKind>& kinds)> on_checked;
    std::function<void()> on_no_memory;

    std::atomic<int32_t> stop{0};      // asks the thread to end
    std::atomic<int32_t> started{0};   // set before the thread is made
    std::atomic<int32_t> finished{0};  // the thread's last act, however it ends
};

/// Starts the thread. 0, or -1 when none can be made; `finished` is set then.
int dest_scan_start(const std::shared_ptr<DestScan>& scan);

/// Stops the scan and waits until it has finished, serving the gate meanwhile; its functions are
/// dropped. Event-loop thread. Null or not started: nothing.
void dest_scan_end(DestScan* scan);

/// The order of subdirectories: names of digits only by their value, others by their bytes. As an
/// order of names of both sorts it is not transitive, so use it with qsort alone.
int _list_cmp(const char* a, const char* b);

}  // namespace dorn
