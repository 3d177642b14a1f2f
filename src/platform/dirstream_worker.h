// The producing side of a directory stream: the thread that opens the directory, reads names and
// asks for their statuses. Only dirstream.cpp includes this.
//
// How the two sides meet: the worker writes entries into a block and says after each one, by one
// atomic operation on `progress`, how far the block is filled. A full block is queued under the
// mutex. So the reader locks once a block, and a reader that finds nothing queued may still take
// what the block under way holds. A worker that makes no progress for too long is given up by
// setting the kAbandoned bit, which only succeeds while `progress` is as it was seen; from then on
// the worker's next report fails, and it ends without touching anything that others use.
#pragma once

#include "platform/dirstream.h"
#include "platform/file_status.h"

#include <atomic>
#include <climits>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace dorn {

inline constexpr uint32_t kBlockBytes = 64 * 1024;
inline constexpr uint32_t kNamesBytes = 128 * 1024;
inline constexpr std::size_t kMaxQueuedBlocks = 8;

/// Entries, one behind the other, each at a multiple of 8.
struct StreamBlock {
    alignas(8) char data[kBlockBytes];
};

/// What one reading of names gave: the system's records.
struct StreamNames {
    uint32_t length = 0;
    alignas(8) char data[kNamesBytes];
};

/// What a worker is doing; the reader gives it up only in the first three.
enum class WorkerPhase : uint32_t { Opening, ReadingNames, Asking, Resting };

/// The atomic word that a worker reports in.
struct WorkerProgress {
    WorkerPhase phase;
    uint32_t position;  // of the name being asked for, in its StreamNames
    uint32_t filled;    // bytes of finished entries in the worker's block
};
inline constexpr uint64_t kAbandoned = uint64_t{1} << 63;

constexpr uint64_t pack(const WorkerProgress& from) {
    return static_cast<uint64_t>(from.phase) << 56 | static_cast<uint64_t>(from.position) << 32 |
           from.filled;
}

constexpr WorkerProgress unpack(uint64_t word) {
    return {static_cast<WorkerPhase>(word >> 56 & 0x7F),
            static_cast<uint32_t>(word >> 32 & 0xFFFFFF), static_cast<uint32_t>(word)};
}

/// What is known of an entry itself, a link's target left aside.
struct EntryFacts {
    uint64_t ino = 0;
    int error = 0;  // errno of the unfollowed status call
    bool has_link = false;
    uint16_t link_length = 0;
    FileStatus lstat{};  // where error is 0
    char link[PATH_MAX];
};

struct StreamWorker {
    std::atomic<uint64_t> progress{pack({WorkerPhase::Opening, 0, 0})};
    EntryFacts facts;  // of the name being asked for
    // The link itself is known and only its target is being asked for: `facts` may be read by
    // whoever gives the worker up.
    std::atomic<bool> link_known{false};
    // Both guarded by the stream's mutex. `names` may be shared with a worker that was given up.
    std::shared_ptr<StreamBlock> block;
    std::shared_ptr<StreamNames> names;
    bool names_shared = false;
};

struct QueuedBlock {
    std::shared_ptr<StreamBlock> block;
    uint32_t filled;
};

/// What the reader and its workers share. Whoever lets go of it last closes the directory.
struct StreamShared {
    ~StreamShared();

    std::string path;  // set before the first worker starts, as the next
    void (*hook)(const char* name) = nullptr;

    std::mutex mutex;               // guards all that follows
    std::condition_variable news;   // for the reader: something was queued, opened or ended
    std::condition_variable space;  // for the worker: the queue has room, or it is given up
    int fd = -1;
    bool ended = false;  // nothing will be queued any more
    int error = 0;       // why it ended; 0 after the last entry
    std::deque<QueuedBlock> queue;
    std::vector<std::shared_ptr<StreamBlock>> unused;
};

/// Starts a thread for `worker`; one that has names goes on with the one in its progress, else it
/// begins by opening the directory. False when no thread can be made.
bool stream_worker_start(std::shared_ptr<StreamShared> shared,
                         std::shared_ptr<StreamWorker> worker);

/// A block to fill; called under the stream's mutex.
std::shared_ptr<StreamBlock> stream_take_block(StreamShared& shared);

/// The name at `position`, its inode number in `*ino` and the position of the one behind it in
/// `*next`.
const char* stream_name_at(const StreamNames& names, uint32_t position, uint64_t* ino,
                           uint32_t* next);

/// Writes the entry for `name` to `out`: with the facts' records where their error is 0, with
/// `target` as the followed status where it isn't null. Its length in bytes, at most kLongestEntry.
uint32_t stream_put_entry(char* out, const char* name, const EntryFacts& facts,
                          const FileStatus* target, int error);

// Longer names than any path has can't be asked for and don't occur.
inline constexpr uint32_t kLongestName = PATH_MAX - 1;
inline constexpr uint32_t kLongestEntry = 28 + kLongestName +
                                          2 * (sizeof(ExtraHeader) + sizeof(FileStatus)) +
                                          sizeof(ExtraHeader) + PATH_MAX + 8;
static_assert(kLongestEntry <= UINT16_MAX);

}  // namespace dorn
