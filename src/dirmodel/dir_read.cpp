#include "dirmodel/dir_read.h"

#include "config/config.h"
#include "dirmodel/name_match.h"
#include "dirmodel/name_set.h"
#include "dirmodel/status_chain.h"
#include "ui/background.h"
#include "ui/dialogs.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <signal.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr int kWaitMs = 16;  // longest wait for the stream before the event loop is served
constexpr uint32_t kProgressMs = 300;
constexpr int32_t kCapacityStep = 128;

Timer sProgressTimer;  // beside the field "status2"
bool sReading = false;
bool sStopped = false;

// Makes a blocked status call return with EINTR; that is all it is for.
void alarm_int(int) {}

void install_alarm() {
    struct sigaction action {};
    action.sa_handler = alarm_int;
    sigaction(SIGALRM, &action, nullptr);
}

// Whether the coarse clock, which is much cheaper to read than the exact one, has gone on since the
// last call: it does so every few milliseconds.
bool clock_ticked() {
    static timespec sLast{};
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    if (now.tv_nsec == sLast.tv_nsec && now.tv_sec == sLast.tv_sec) return false;
    sLast = now;
    return true;
}

// What a read sets up and takes down again whichever way it ends.
class ReadScope {
  public:
    explicit ReadScope(DirCache* cache) {
        sReading = true;
        wtimer_attach(&sProgressTimer, kProgressMs, x_print_progress, cache);
    }
    ~ReadScope() {
        wtimer_detach(&sProgressTimer);
        sReading = false;
    }
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;
};

// Fills the cache from the stream, record by record.
class Reader {
  public:
    Reader(DirCache& cache, DirStream& stream) : cache_(cache), stream_(stream) {}

    void run();

  private:
    void take_entry(const RawDirEntry& raw);
    DirEntry* take_record();
    void release_held();
    void grow();
    void store(DirEntry* entry);

    DirCache& cache_;
    DirStream& stream_;
    NameSet names_;
    DirEntry* held_ = nullptr;  // the record of an entry that was not kept
};

void Reader::run() {
    for (bool more = true; more && !sStopped;) {
        const RawDirEntry* raw = nullptr;
        switch (dirstream_next(stream_, kWaitMs, &raw)) {
            case StreamState::Entry:
                take_entry(*raw);
                if (clock_ticked()) ui_background();
                break;
            case StreamState::Later:
                ui_background();
                break;
            case StreamState::Failed:
                cache_.read_error = dirstream_error(stream_);
                more = false;
                break;
            case StreamState::End:
                more = false;
                break;
        }
    }
    release_held();
}

void Reader::take_entry(const RawDirEntry& raw) {
    const std::string_view name = raw_name(raw);
    if (name.starts_with('.') && (gConfig->flags & kHideDotFiles) != 0) return;
    DirEntry* entry = take_record();
    held_ = entry;
    entry_fill(entry, raw, dirstream_fd(stream_));
    if (!is_directory(*entry) && es_strcmp(name.data(), cache_.filespec.c_str()) != 0) return;

    const std::string_view kept = name.substr(0, kNameSize - 1);
    kept.copy(entry->name, kept.size());
    entry->name[kept.size()] = '\0';
    if (!names_.add(kept, cache_.count, cache_.entries)) return;
    store(entry);
    held_ = nullptr;
}

// A clean record: the one held, else the last spare, else one never used.
DirEntry* Reader::take_record() {
    DirEntry* entry = held_;
    if (entry == nullptr && cache_.spare > 0) {
        DirEntry*& slot = cache_.entries[cache_.count + --cache_.spare];
        entry = slot;
        slot = nullptr;
    }
    if (entry == nullptr) return cache_.slabs.take();
    entry->name[0] = '\0';
    entry->flags = 0;
    entry->row = nullptr;
    return entry;
}

void Reader::store(DirEntry* entry) {
    if (cache_.count >= cache_.capacity) grow();
    DirEntry*& slot = cache_.entries[cache_.count];
    if (slot != nullptr) cache_.entries[cache_.count + cache_.spare] = slot;
    slot = entry;
    ++cache_.count;
    if (is_directory(*entry)) ++cache_.n_dirs;
    cache_.total_size = static_cast<int64_t>(static_cast<uint64_t>(cache_.total_size) +
                                             static_cast<uint64_t>(entry->size));
}

void Reader::grow() {
    const int32_t capacity = cache_.capacity + kCapacityStep;
    void* grown =
        std::realloc(cache_.entries, static_cast<std::size_t>(capacity) * sizeof *cache_.entries);
    if (grown == nullptr) std::_Exit(1);
    cache_.entries = static_cast<DirEntry**>(grown);
    std::fill(cache_.entries + cache_.capacity, cache_.entries + capacity, nullptr);
    cache_.capacity = capacity;
}

// Gives the held record back: to the spares, or, where they have no slot, to the slab it is fresh
// from.
void Reader::release_held() {
    if (held_ == nullptr) return;
    std::free(held_->link_text);
    held_->link_text = nullptr;
    held_->link_room = 0;
    if (cache_.count + cache_.spare < cache_.capacity) {
        cache_.entries[cache_.count + cache_.spare++] = held_;
    } else {
        cache_.slabs.put_back(held_);
    }
    held_ = nullptr;
}

void forget_entries(DirCache& cache) {
    cache.spare += cache.count;
    cache.n_selected = 0;
    cache.total_size = 0;
    cache.n_dirs = 0;
    cache.count = 0;
    cache.current = -1;
    cache.read_error = 0;
}

// Waits for the directory and makes it the working directory. 0 or an errno value.
int enter(DirStream& stream) {
    int opened = 0;
    while ((opened = dirstream_opened(stream, kWaitMs)) == 0) {
        if (sStopped) return ECANCELED;
        ui_background();
    }
    if (opened < 0) return dirstream_error(stream);
    return fchdir(dirstream_fd(stream)) == 0 ? 0 : errno;
}

}  // namespace

int dir_read(DirCache* cache, DirCompare sort_a, int sort_b) {
    if (sReading || sStopped) return -1;
    install_alarm();
    wprintf(w_instance("status1"), "Reading Directory");
    forget_entries(*cache);
    const ReadScope scope(cache);
    const DirStreamPtr stream = dirstream_open(cache->path.c_str(), gStatusLimitMs);
    cache->read_error = enter(*stream);
    if (cache->read_error != 0) return -1;
    Reader(*cache, *stream).run();
    dir_sort(cache, sort_a, sort_b);
    wtimer_trigger(&sProgressTimer);
    return 0;
}

void dir_read_stop(bool stop) {
    sStopped = stop;
}

void x_print_progress(Timer*, void* data) {
    wprintf(w_instance("status2"), "%d read", static_cast<const DirCache*>(data)->count);
}

}  // namespace dorn
