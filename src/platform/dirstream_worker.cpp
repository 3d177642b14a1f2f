#include "platform/dirstream_worker.h"

#include "platform/signals.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace dorn {

namespace {

bool is_dot_or_dot_dot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

/// Asks once for the status of `name`. 0 or an errno value.
int ask_once(int fd, const char* name, int flags, FileStatus* out) {
    struct statx status {};
    if (statx(fd, name, flags | AT_NO_AUTOMOUNT, STATX_BASIC_STATS, &status) == 0) {
        *out = to_file_status(status);
        return 0;
    }
    // A kernel without the call, or a container's filter that refuses it.
    if (errno != ENOSYS && errno != EPERM) return errno;
    struct stat plain {};
    if (fstatat(fd, name, &plain, flags | AT_NO_AUTOMOUNT) != 0) return errno;
    *out = to_file_status(plain);
    return 0;
}

int ask_status(int fd, const char* name, int flags, FileStatus* out) {
    int error = EINTR;
    while (error == EINTR)
        error = ask_once(fd, name, flags, out);
    return error;
}

/// The thread's work and what it keeps for itself.
class Producer {
  public:
    Producer(std::shared_ptr<StreamShared> shared, std::shared_ptr<StreamWorker> worker)
        : shared_(std::move(shared)),
          worker_(std::move(worker)),
          position_(unpack(worker_->progress.load()).position) {}

    void run() {
        if (!open_directory()) return;
        if (worker_->names == nullptr && !read_names()) return;
        do {
            if (!ask_for_names()) return;
        } while (read_names());
    }

  private:
    using Lock = std::unique_lock<std::mutex>;

    bool open_directory();
    bool read_names();
    bool ask_for_names();
    const FileStatus* ask(const char* name, int* error);
    bool finish_entry(uint32_t next, uint32_t length);
    bool queue_block();
    void end(const Lock& lock, int error);
    bool report(const Lock& lock, WorkerPhase phase);

    std::shared_ptr<StreamShared> shared_;
    std::shared_ptr<StreamWorker> worker_;
    int fd_ = -1;
    uint32_t position_;  // as in WorkerProgress, the next as well
    uint32_t filled_ = 0;
    FileStatus target_{};
};

/// Reports a change of phase, under the mutex. False when the worker has been given up.
bool Producer::report(const Lock&, WorkerPhase phase) {
    if ((worker_->progress.load() & kAbandoned) != 0) return false;
    worker_->progress.store(pack({phase, position_, filled_}));
    return true;
}

/// Opens the directory where no worker before has. False on failure and when given up.
bool Producer::open_directory() {
    {
        const Lock lock(shared_->mutex);
        fd_ = shared_->fd;
        if (fd_ >= 0) return true;
    }
    do {
        fd_ = open(shared_->path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    } while (fd_ < 0 && errno == EINTR);
    const int error = errno;
    const Lock lock(shared_->mutex);
    if (!report(lock, WorkerPhase::Resting)) {
        if (fd_ >= 0) close(fd_);
        return false;
    }
    if (fd_ < 0) {
        end(lock, error);
        return false;
    }
    shared_->fd = fd_;
    shared_->news.notify_one();
    return true;
}

/// Reads the next names. False at the end of the directory, on failure and when given up.
bool Producer::read_names() {
    StreamNames* names = nullptr;
    {
        const Lock lock(shared_->mutex);
        if (!report(lock, WorkerPhase::ReadingNames)) return false;
        // A worker that was given up may wake and read its names.
        if (worker_->names == nullptr || worker_->names_shared) {
            worker_->names = std::make_shared_for_overwrite<StreamNames>();
            worker_->names_shared = false;
        }
        if (worker_->block == nullptr) worker_->block = stream_take_block(*shared_);
        names = worker_->names.get();
    }
    ssize_t length = 0;
    do {
        length = getdents64(fd_, names->data, sizeof names->data);
    } while (length < 0 && errno == EINTR);
    const int error = length < 0 ? errno : 0;
    const Lock lock(shared_->mutex);
    if (length > 0) {
        names->length = static_cast<uint32_t>(length);
        position_ = 0;
        return report(lock, WorkerPhase::Asking);
    }
    if (report(lock, WorkerPhase::Resting)) end(lock, error);
    return false;
}

/// Makes the entries of the names read. False when given up.
bool Producer::ask_for_names() {
    const StreamNames& names = *worker_->names;
    StreamBlock* block = worker_->block.get();
    while (position_ < names.length) {
        uint32_t next = 0;
        const char* name = stream_name_at(names, position_, &worker_->facts.ino, &next);
        uint32_t length = 0;
        if (!is_dot_or_dot_dot(name) && std::strlen(name) <= kLongestName) {
            if (filled_ + kLongestEntry > kBlockBytes) {
                if (!queue_block()) return false;
                block = worker_->block.get();
            }
            int error = 0;
            const FileStatus* target = ask(name, &error);
            length = stream_put_entry(block->data + filled_, name, worker_->facts, target, error);
        }
        if (!finish_entry(next, length)) return false;
    }
    return true;
}

/// Fills the worker's facts for `name`. The followed status of a link whose target can be reached,
/// else null; the errno value of the call that failed in `*error`.
const FileStatus* Producer::ask(const char* name, int* error) {
    EntryFacts& facts = worker_->facts;
    facts.has_link = false;
    if (shared_->hook != nullptr) shared_->hook(name);
    facts.error = *error = ask_status(fd_, name, AT_SYMLINK_NOFOLLOW, &facts.lstat);
    if (*error != 0 || (facts.lstat.mode & kTypeMask) != kTypeLink) return nullptr;
    const ssize_t length = readlinkat(fd_, name, facts.link, sizeof facts.link);
    facts.has_link = length >= 0;
    facts.link_length = facts.has_link ? static_cast<uint16_t>(length) : uint16_t{0};
    // From here until the entry is finished the facts are only read.
    worker_->link_known.store(true, std::memory_order_release);
    if (shared_->hook != nullptr) shared_->hook(name);
    *error = ask_status(fd_, name, 0, &target_);
    return *error == 0 ? &target_ : nullptr;
}

/// Reports an entry of `length` bytes as finished; the name at `next` is the one to ask for then.
bool Producer::finish_entry(uint32_t next, uint32_t length) {
    worker_->link_known.store(false, std::memory_order_relaxed);
    uint64_t expected = pack({WorkerPhase::Asking, position_, filled_});
    position_ = next;
    filled_ += length;
    return worker_->progress.compare_exchange_strong(
        expected, pack({WorkerPhase::Asking, position_, filled_}));
}

/// Queues the block and waits for one to fill. False when given up.
bool Producer::queue_block() {
    Lock lock(shared_->mutex);
    if ((worker_->progress.load() & kAbandoned) != 0) return false;
    shared_->queue.push_back({std::move(worker_->block), filled_});
    shared_->news.notify_one();
    filled_ = 0;
    report(lock, WorkerPhase::Resting);
    shared_->space.wait(lock, [this] {
        return shared_->queue.size() < kMaxQueuedBlocks ||
               (worker_->progress.load() & kAbandoned) != 0;
    });
    worker_->block = stream_take_block(*shared_);
    return report(lock, WorkerPhase::Asking);
}

/// Queues what is left; nothing comes behind it.
void Producer::end(const Lock&, int error) {
    if (filled_ > 0) shared_->queue.push_back({std::move(worker_->block), filled_});
    worker_->block = nullptr;
    shared_->ended = true;
    shared_->error = error;
    shared_->news.notify_one();
}

/// Puts a record of the chain at `at`. Where the next one starts.
char* put_extra(char* at, uint16_t type, const void* data, uint16_t length) {
    const ExtraHeader header{length, type, 0};
    std::memcpy(at, &header, sizeof header);
    std::memcpy(at + sizeof header, data, length);
    return at + ((sizeof header + length + 7) & ~std::size_t{7});
}

}  // namespace

StreamShared::~StreamShared() {
    if (fd >= 0) close(fd);
}

bool stream_worker_start(std::shared_ptr<StreamShared> shared,
                         std::shared_ptr<StreamWorker> worker) {
    try {
        const SignalsBlocked blocked;
        std::thread([shared = std::move(shared), worker = std::move(worker)]() mutable {
            Producer(std::move(shared), std::move(worker)).run();
        }).detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

std::shared_ptr<StreamBlock> stream_take_block(StreamShared& shared) {
    if (shared.unused.empty()) return std::make_shared_for_overwrite<StreamBlock>();
    std::shared_ptr<StreamBlock> block = std::move(shared.unused.back());
    shared.unused.pop_back();
    return block;
}

const char* stream_name_at(const StreamNames& names, uint32_t position, uint64_t* ino,
                           uint32_t* next) {
    const char* at = names.data + position;
    uint16_t length = 0;
    std::memcpy(ino, at + offsetof(dirent64, d_ino), sizeof *ino);
    std::memcpy(&length, at + offsetof(dirent64, d_reclen), sizeof length);
    *next = position + length;
    return at + offsetof(dirent64, d_name);
}

uint32_t stream_put_entry(char* out, const char* name, const EntryFacts& facts,
                          const FileStatus* target, int error) {
    const std::size_t namelen = std::strlen(name);
    std::memcpy(out + kRawNameOffset, name, namelen + 1);
    char* at = out + ((namelen + 28) & ~std::size_t{7});
    if (facts.error == 0) at = put_extra(at, kExtraLstat, &facts.lstat, sizeof facts.lstat);
    if (target != nullptr) at = put_extra(at, kExtraStat, target, sizeof *target);
    if (facts.has_link) at = put_extra(at, kExtraLink, facts.link, facts.link_length);
    RawDirEntry head{};
    head.ino = facts.ino;
    head.error = error;
    head.reclen = static_cast<uint16_t>(at - out);
    head.namelen = static_cast<uint16_t>(namelen);
    std::memcpy(out, &head, kRawNameOffset);
    return head.reclen;
}

}  // namespace dorn
