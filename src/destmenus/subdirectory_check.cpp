#include "destmenus/subdirectory_check.h"

#include "platform/spare_thread.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

namespace {

using Clock = std::chrono::steady_clock;

// Many enough that a thread is cheap, few enough that a menu that goes leaves little behind.
constexpr std::size_t kBatch = 512;
constexpr int kPollMs = 10;

struct DirCloser {
    void operator()(DIR* directory) const {
        closedir(directory);
    }
};
using DirHandle = std::unique_ptr<DIR, DirCloser>;

DirHandle open_directory(int parent, const char* path) {
    const int fd = openat(parent, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return nullptr;
    DirHandle directory(fdopendir(fd));
    if (!directory) close(fd);
    return directory;
}

bool is_subdirectory(DIR* directory, const dirent& entry, bool hide_dot) {
    const std::string_view name = entry.d_name;
    if (name == "." || name == ".." || (hide_dot && name.starts_with('.'))) return false;
    if (entry.d_type == DT_DIR) return true;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return false;
    struct stat status {};
    return fstatat(dirfd(directory), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// A run of names on a spare thread, which may be left behind; it writes each kind before it counts
// it as done.
struct Batch {
    SubdirectoryCheck check;
    std::vector<std::string> names;
    std::function<bool()> stopped;
    std::vector<DestKind> kinds;
    std::atomic<std::size_t> done{0};
    std::atomic<bool> left_behind{false};

    bool wanted() const {
        return !left_behind && !stopped();
    }
};

void work_through(Batch* batch) {
    const DirHandle parent = open_directory(AT_FDCWD, batch->check.path.c_str());
    for (std::size_t i = 0; i < batch->names.size() && batch->wanted(); ++i) {
        batch->kinds[i] = parent ? dest_kind_here(dirfd(parent.get()), batch->names[i].c_str(),
                                                  batch->check.hide_dot)
                                 : DestKind::Plain;
        batch->done.store(i + 1, std::memory_order_release);
    }
}

std::shared_ptr<Batch> make_batch(const SubdirectoryCheck& check,
                                  const std::vector<std::string>& names, std::size_t first,
                                  const std::function<bool()>& stopped) {
    auto batch = std::make_shared<Batch>();
    batch->check = check;
    const auto from = names.begin() + static_cast<std::ptrdiff_t>(first);
    const std::size_t count = std::min(kBatch, names.size() - first);
    batch->names.assign(from, from + static_cast<std::ptrdiff_t>(count));
    batch->stopped = stopped;
    batch->kinds.assign(count, DestKind::Unknown);
    return batch;
}

}  // namespace

DestKind dest_kind_here(int parent, const char* path, bool hide_dot) {
    const DirHandle directory = open_directory(parent, path);
    if (!directory) return DestKind::Plain;
    while (const dirent* entry = readdir(directory.get())) {
        if (is_subdirectory(directory.get(), *entry, hide_dot)) return DestKind::Opens;
    }
    return DestKind::Plain;
}

void check_subdirectories(
    const SubdirectoryCheck& check, const std::vector<std::string>& names,
    const std::function<bool()>& stopped,
    const std::function<void(std::size_t first, const std::vector<DestKind>& kinds)>& tell) {
    std::size_t first = 0;
    while (first < names.size() && !stopped()) {
        const std::shared_ptr<Batch> batch = make_batch(check, names, first, stopped);
        const SpareCall call([batch] { work_through(batch.get()); });
        std::size_t told = 0;
        Clock::time_point progress = Clock::now();
        for (bool ended = false; !ended;) {
            ended = call.done(kPollMs);
            if (stopped()) return;
            const std::size_t done = batch->done.load(std::memory_order_acquire);
            if (done > told) {
                const auto kinds = batch->kinds.begin();
                tell(first + told, {kinds + static_cast<std::ptrdiff_t>(told),
                                    kinds + static_cast<std::ptrdiff_t>(done)});
                told = done;
                progress = Clock::now();
            } else if (Clock::now() - progress > std::chrono::milliseconds(check.limit_ms)) {
                batch->left_behind = true;
                ++told;  // that one stays unknown
                break;
            }
        }
        first += told;
    }
}

}  // namespace dorn
