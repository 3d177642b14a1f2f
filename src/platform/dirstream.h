// A directory stream that delivers each entry's status with its name.
//
//     DirStreamPtr stream = dirstream_open(path);
//     while (dirstream_opened(*stream, 16) == 0) serve_the_event_loop();
//     const RawDirEntry* entry;
//     for (;;) switch (dirstream_next(*stream, 16, &entry)) { ... }
//
// A thread of the stream opens the directory, reads names in big blocks and asks for each entry's
// status relative to the directory's descriptor, a few blocks ahead of the reader. The reader never
// makes a system call that can hang: where the thread does not answer, dirstream_next says Later,
// and an entry whose status does not come within the stream's limit is delivered with ETIMEDOUT
// while a fresh thread goes on with the next one (a call stuck in a dead mount can't be
// interrupted, only left behind).
//
// A delivered entry is a RawDirEntry followed by its name, a NUL, and a chain of extra records,
// each an ExtraHeader and its data. The chain starts at (namelen + 28) & ~7 from the entry's start
// and each record at (previous start + data length + 8 + 7) & ~7; reclen bounds them all.
//
// One thread reads from a stream. All failures are told by errno values; nothing is thrown.
#pragma once

#include <cstdint>
#include <memory>

namespace dorn {

struct RawDirEntry {
    uint64_t ino;
    // errno of the failed status call, 0 when none has failed. With a kExtraLstat record it is that
    // of following the link: ENOENT where it dangles, ETIMEDOUT where its target hangs.
    int32_t error;
    uint32_t reserved;
    uint16_t reclen;   // bytes from the start of this record to the start of the next
    uint16_t namelen;  // bytes of the name, without its NUL
    char name[4];      // the first bytes of the name; it goes on behind the record
};
inline constexpr std::size_t kRawNameOffset = 20;

struct ExtraHeader {
    uint16_t length;  // bytes of data behind this header
    uint16_t type;    // one of the types below
    uint32_t reserved;
};
inline constexpr uint16_t kExtraStat = 1;   // followed status, a FileStatus
inline constexpr uint16_t kExtraLstat = 2;  // unfollowed status, a FileStatus
inline constexpr uint16_t kExtraLink = 3;   // target of a symbolic link, bytes without a NUL

class DirStream;
struct DirStreamCloser {
    void operator()(DirStream* stream) const;
};
/// Closing does not wait for a thread that is stuck in the system; that one cleans up by itself.
using DirStreamPtr = std::unique_ptr<DirStream, DirStreamCloser>;

enum class StreamState {
    Entry,   // an entry was delivered
    Later,   // nothing yet: serve the event loop and ask again
    End,     // every entry was delivered
    Failed,  // the directory could not be opened or read on; errno of it is in dirstream_error
};

inline constexpr int kStatusLimitMs = 10000;

/// Starts to open `path` (bytes as the file system has them, copied). `limit_ms` is how long the
/// system may take for one entry, for the opening or for a block of names before the thread is left
/// behind; tests shorten it. Never null: what fails, fails in dirstream_opened.
[[nodiscard]] DirStreamPtr dirstream_open(const char* path, int limit_ms = kStatusLimitMs);

/// Waits at most `wait_ms` for the directory to be open. 1: it is; 0: not yet; -1: it can't be
/// opened (dirstream_error says why; ETIMEDOUT when the system did not answer within the limit).
int dirstream_opened(DirStream& stream, int wait_ms);

/// The open directory's descriptor, owned by the stream; -1 while it isn't open.
int dirstream_fd(const DirStream& stream);

/// Takes the next entry, waiting at most `wait_ms` for it. "." and ".." are never delivered. With
/// Entry, `*entry` is valid until the next call for this stream.
StreamState dirstream_next(DirStream& stream, int wait_ms, const RawDirEntry** entry);

/// The errno value of the last failure, 0 when there was none.
int dirstream_error(const DirStream& stream);

/// For tests: a hook called on the stream's thread before each status call with the entry's name.
/// Set it before the stream is opened, clear it (null) afterwards.
void dirstream_set_test_hook(void (*hook)(const char* name));

}  // namespace dorn
