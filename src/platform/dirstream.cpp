#include "platform/dirstream.h"

#include "platform/dirstream_worker.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <utility>

namespace dorn {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Lock = std::unique_lock<std::mutex>;

// How long a waiting reader leaves the block under way alone: the pace at which a slow directory
// is seen to grow, also where the caller waits for longer.
constexpr milliseconds kLookAgain{16};

std::atomic<void (*)(const char*)> sTestHook{nullptr};

}  // namespace

/// The reading side; only the thread that reads touches it.
class DirStream {
  public:
    DirStream(const char* path, int limit_ms);
    ~DirStream();
    DirStream(const DirStream&) = delete;
    DirStream& operator=(const DirStream&) = delete;

    int opened(int wait_ms);
    StreamState next(int wait_ms, const RawDirEntry** entry);

    int fd = -1;
    int error = 0;

  private:
    StreamState more(int wait_ms);
    bool take_queued(const Lock& lock);
    bool take_under_way(const Lock& lock);
    bool stuck(const Lock& lock);
    void give_up(const Lock& lock, const WorkerProgress& progress);
    void leave_name(const Lock& lock, uint32_t position);
    void start_worker(const Lock& lock);
    void read_from(const Lock& lock, std::shared_ptr<StreamBlock> block);

    std::shared_ptr<StreamShared> shared_ = std::make_shared<StreamShared>();
    std::shared_ptr<StreamWorker> worker_ = std::make_shared<StreamWorker>();
    milliseconds limit_;
    std::shared_ptr<StreamBlock> block_;  // the one being read
    bool whole_ = false;                  // its worker has finished with it
    uint32_t at_ = 0;                     // where the next entry starts
    uint32_t filled_ = 0;                 // the end of the entries that may be read
    uint64_t seen_ = 0;                   // the worker's progress as it was ...
    Clock::time_point seen_since_;        // ... first seen then
};

DirStream::DirStream(const char* path, int limit_ms) : limit_(limit_ms) {
    shared_->path = path;
    shared_->hook = sTestHook.load();
    const Lock lock(shared_->mutex);
    start_worker(lock);
}

DirStream::~DirStream() {
    const Lock lock(shared_->mutex);
    worker_->progress.fetch_or(kAbandoned);
    shared_->space.notify_all();
}

void DirStream::start_worker(const Lock&) {
    seen_ = worker_->progress.load();
    seen_since_ = Clock::now();
    if (stream_worker_start(shared_, worker_)) return;
    shared_->ended = true;
    shared_->error = EAGAIN;
}

int DirStream::opened(int wait_ms) {
    if (fd >= 0) return 1;
    const Clock::time_point until = Clock::now() + milliseconds(wait_ms);
    Lock lock(shared_->mutex);
    for (;;) {
        fd = shared_->fd;
        if (fd >= 0) return 1;
        if (shared_->ended) break;
        if (stuck(lock)) continue;
        const Clock::time_point now = Clock::now();
        if (now >= until) return 0;
        shared_->news.wait_until(lock, std::min(until, now + kLookAgain));
    }
    error = shared_->error;
    return -1;
}

StreamState DirStream::next(int wait_ms, const RawDirEntry** entry) {
    if (at_ == filled_) {
        const StreamState state = more(wait_ms);
        if (state != StreamState::Entry) return state;
    }
    const auto* found = reinterpret_cast<const RawDirEntry*>(block_->data + at_);
    at_ += found->reclen;
    *entry = found;
    return StreamState::Entry;
}

/// Waits for entries to read.
StreamState DirStream::more(int wait_ms) {
    Lock lock(shared_->mutex);
    if (take_queued(lock)) return StreamState::Entry;
    const Clock::time_point until = Clock::now() + milliseconds(wait_ms);
    for (;;) {
        const Clock::time_point now = Clock::now();
        const Clock::time_point look = std::min(until, now + kLookAgain);
        while (shared_->queue.empty() && !shared_->ended)
            if (shared_->news.wait_until(lock, look) == std::cv_status::timeout) break;
        if (take_queued(lock)) return StreamState::Entry;
        if (shared_->ended) break;
        if (take_under_way(lock)) return StreamState::Entry;
        if (stuck(lock)) continue;
        if (now >= until) return StreamState::Later;
    }
    error = shared_->error;
    return error == 0 ? StreamState::End : StreamState::Failed;
}

/// Takes the next block from the queue, which may be the rest of the one being read.
bool DirStream::take_queued(const Lock& lock) {
    while (!shared_->queue.empty()) {
        QueuedBlock queued = std::move(shared_->queue.front());
        shared_->queue.pop_front();
        shared_->space.notify_one();
        if (queued.block != block_) read_from(lock, std::move(queued.block));
        whole_ = true;
        filled_ = queued.filled;
        if (at_ < filled_) return true;
    }
    return false;
}

/// Takes the entries that the block under way holds so far.
bool DirStream::take_under_way(const Lock& lock) {
    if (worker_->block == nullptr) return false;
    const uint32_t filled = unpack(worker_->progress.load()).filled;
    if (filled == 0) return false;
    if (worker_->block != block_) read_from(lock, worker_->block);
    filled_ = filled;
    return at_ < filled_;
}

/// Goes over to `block`. The one read before is used again if its worker has finished with it; one
/// that has been given up might still write there.
void DirStream::read_from(const Lock&, std::shared_ptr<StreamBlock> block) {
    if (whole_ && block_ != nullptr) shared_->unused.push_back(std::move(block_));
    block_ = std::move(block);
    whole_ = false;
    at_ = filled_ = 0;
}

/// Looks whether the worker has been in one call for too long; it is given up then. Called with
/// everything taken that the worker has finished.
bool DirStream::stuck(const Lock& lock) {
    uint64_t word = worker_->progress.load();
    const Clock::time_point now = Clock::now();
    if (word != seen_ || unpack(word).phase == WorkerPhase::Resting) {
        seen_ = word;
        seen_since_ = now;
        return false;
    }
    if (now - seen_since_ < limit_) return false;
    if (!worker_->progress.compare_exchange_strong(word, word | kAbandoned)) return false;
    give_up(lock, unpack(word));
    return true;
}

/// Goes on without the worker, which had got as far as `progress`.
void DirStream::give_up(const Lock& lock, const WorkerProgress& progress) {
    if (progress.phase == WorkerPhase::Asking) {
        leave_name(lock, progress.position);
        return;
    }
    shared_->ended = true;
    shared_->error = ETIMEDOUT;
}

/// Queues an entry for the name at `position` with what its worker knew of it, and has a fresh
/// worker go on behind it.
void DirStream::leave_name(const Lock& lock, uint32_t position) {
    const bool link_known = worker_->link_known.load(std::memory_order_acquire);
    auto fresh = std::make_shared<StreamWorker>();
    EntryFacts facts;
    facts.error = ETIMEDOUT;
    if (link_known) facts = worker_->facts;
    uint32_t next = 0;
    const char* name = stream_name_at(*worker_->names, position, &facts.ino, &next);
    auto block = std::make_shared_for_overwrite<StreamBlock>();
    const uint32_t length = stream_put_entry(block->data, name, facts, nullptr, ETIMEDOUT);
    shared_->queue.push_back({std::move(block), length});

    fresh->names = worker_->names;
    fresh->names_shared = true;
    fresh->block = stream_take_block(*shared_);
    fresh->progress = pack({WorkerPhase::Asking, next, 0});
    worker_ = std::move(fresh);
    start_worker(lock);
}

void DirStreamCloser::operator()(DirStream* stream) const {
    delete stream;
}

DirStreamPtr dirstream_open(const char* path, int limit_ms) {
    return DirStreamPtr(new DirStream(path, limit_ms));
}

int dirstream_opened(DirStream& stream, int wait_ms) {
    return stream.opened(wait_ms);
}

int dirstream_fd(const DirStream& stream) {
    return stream.fd;
}

StreamState dirstream_next(DirStream& stream, int wait_ms, const RawDirEntry** entry) {
    return stream.next(wait_ms, entry);
}

int dirstream_error(const DirStream& stream) {
    return stream.error;
}

void dirstream_set_test_hook(void (*hook)(const char* name)) {
    sTestHook.store(hook);
}

}  // namespace dorn
