// Regular files.
#include "fileops/engine/copy_entry.h"
#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr const char* kTitle = "Copy/Move";
constexpr const char* kUnwritable = "Error writing '%s'\n%s\n";

enum class Outcome {
    kCopied,
    kStopped,      // cancelled, or told to stop by a question
    kReadFailed,   // error tells with what
    kWriteFailed,  // the same
};

/// The content of a file on its way.
struct DataCopy {
    const EntryCopy& c;
    int in;
    int out;
    bool is_sparse;
    uint64_t data_end = 0;  // of a sparse file: where the run of data ends that is being read
    uint64_t copied = 0;    // bytes, holes included
    int error = 0;
};

/// Opens a file, again with fewer descriptors in use when there are none left.
Fd open_file(Worker& w, int dir, const char* name, int flags, mode_t mode = 0) {
    Fd fd = open_at(dir, name, flags, mode);
    if (fd || (errno != EMFILE && errno != ENFILE)) return fd;
    w.sources.drop();
    w.copies.drop();
    return open_at(dir, name, flags, mode);
}

/// Opens the entry, which has to be the file that its status is of; what has taken its place
/// meanwhile is neither read nor waited for.
Fd open_source(EntryCopy& c) {
    const bool follows = (c.w.op->flags & kFopLinksAsFiles) != 0;
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | (follows ? 0 : O_NOFOLLOW);
    Fd fd = open_file(c.w, c.from, c.name, flags);
    struct stat status;
    if (!fd || fstat(fd.get(), &status) != 0) return Fd();
    if (!S_ISREG(status.st_mode) || !is_same_file(status, c.source)) {
        errno = ESTALE;
        return Fd();
    }
    if (c.print == print_of(c.source)) c.print = print_of(status);
    status.st_size = c.source.st_size;  // what was counted
    c.source = status;
    return fd;
}

Fd make_file(EntryCopy& c) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    Fd fd = open_file(c.w, c.to, c.to_name, kFlags, c.source.st_mode & 0777);
    c.made = static_cast<bool>(fd);
    return fd;
}

/// Opens the existing file that the user was asked about, and no other, and truncates it.
Fd open_target(EntryCopy& c) {
    if (!S_ISREG(c.target.st_mode)) {
        errno = S_ISDIR(c.target.st_mode) ? EISDIR : EOPNOTSUPP;
        return Fd();
    }
    const int follow = S_ISLNK(c.target_self.st_mode) ? 0 : O_NOFOLLOW;
    Fd fd = open_file(c.w, c.to, c.to_name, O_WRONLY | O_CLOEXEC | O_NONBLOCK | follow);
    if (!fd && errno == ENOENT) return make_file(c);
    struct stat status;
    if (!fd || fstat(fd.get(), &status) != 0) return Fd();
    if (!is_same_file(status, c.target)) {
        errno = ESTALE;
        return Fd();
    }
    return ftruncate(fd.get(), 0) == 0 ? std::move(fd) : Fd();
}

/// Moves on to the next run of data. False at the end of the file, which may be behind a hole.
bool next_data(DataCopy& d) {
    const auto at = static_cast<off_t>(d.copied);
    // Before the data is looked for: what is appended in between is no hole.
    const off_t end = lseek(d.in, 0, SEEK_END);
    if (end < 0) {
        d.error = errno;
        return false;
    }
    const off_t data = lseek(d.in, at, SEEK_DATA);
    if (data < 0 && errno == ENXIO) {
        d.copied = static_cast<uint64_t>(std::max(end, at));
        if (ftruncate(d.out, static_cast<off_t>(d.copied)) != 0) d.error = errno;
        return false;
    }
    const off_t hole = data < 0 ? -1 : lseek(d.in, data, SEEK_HOLE);
    if (hole < 0 || lseek(d.out, data, SEEK_SET) < 0) {
        d.is_sparse = false;  // its file system can't tell
        lseek(d.out, at, SEEK_SET);
    } else {
        d.copied = static_cast<uint64_t>(data);
        d.data_end = static_cast<uint64_t>(hole);
    }
    lseek(d.in, static_cast<off_t>(d.copied), SEEK_SET);
    return true;
}

/// What is to become of a block for which there is no space: true to try again.
bool asks_to_retry(DataCopy& d, Outcome* outcome) {
    FileOp* op = d.c.w.op;
    show_entry(d.c);
    const int button =
        fop_alert(op, "Write error", "&Retry|&Skip|&Abort",
                  "Unable to write '%s'\nNo space left on device\n", shown(copy_path(d.c)).c_str());
    if (button == 1) return true;
    d.error = ENOSPC;
    *outcome = button == 2 ? Outcome::kWriteFailed : Outcome::kStopped;
    if (button != 2) op->cancelled = 1;
    return false;
}

Outcome write_block(DataCopy& d, std::size_t size) {
    const char* from = d.c.w.op->buffer;
    Outcome outcome = Outcome::kCopied;
    while (size > 0) {
        if (fop_pause_trap(d.c.w.op) != 0) return Outcome::kStopped;
        const ssize_t written = write(d.out, from, size);
        if (written > 0) {
            from += written;
            size -= static_cast<std::size_t>(written);
        } else if (written == 0) {
            d.error = EIO;  // it would be so for ever
            return Outcome::kWriteFailed;
        } else if (errno == ENOSPC) {
            if (!asks_to_retry(d, &outcome)) return outcome;
        } else if (errno != EINTR) {
            d.error = errno;
            return Outcome::kWriteFailed;
        }
    }
    return Outcome::kCopied;
}

Outcome copy_content(DataCopy& d) {
    FileOp* op = d.c.w.op;
    const auto most = static_cast<uint64_t>(op->buffer_size);
    for (;;) {
        if (fop_pause_trap(op) != 0) return Outcome::kStopped;
        if (d.is_sparse && d.copied >= d.data_end && !next_data(d))
            return d.error == 0 ? Outcome::kCopied : Outcome::kWriteFailed;
        const uint64_t size = d.is_sparse ? std::min(most, d.data_end - d.copied) : most;
        if (size == 0) continue;  // what was data has become a hole since
        const ssize_t got = read(d.in, op->buffer, size);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            d.error = errno;
            return Outcome::kReadFailed;
        }
        if (got == 0) return Outcome::kCopied;
        const Outcome outcome = write_block(d, static_cast<std::size_t>(got));
        if (outcome != Outcome::kCopied) return outcome;
        d.copied += static_cast<uint64_t>(got);
        show_progress(d.c, d.copied);
    }
}

/// Removes the copy's file, unless its name has come to mean another.
void unlink_copy(const EntryCopy& c, const struct stat& own) {
    struct stat there;
    if (fstatat(c.to, c.to_name, &there, AT_SYMLINK_NOFOLLOW) == 0 && is_same_file(own, there))
        unlinkat(c.to, c.to_name, 0);
}

/// Removes the copy that was begun. What a link led to is emptied, for its name is not known.
void remove_partial(const EntryCopy& c, Fd out) {
    if (!c.made && S_ISLNK(c.target_self.st_mode)) {
        static_cast<void>(ftruncate(out.get(), 0));
        return;
    }
    struct stat own;
    const bool is_known = fstat(out.get(), &own) == 0;
    out.close();
    if (is_known) unlink_copy(c, own);
}

int copy_opened(const EntryCopy& c, Fd in, Fd out) {
    const auto allocated = static_cast<off_t>(c.source.st_blocks) * 512;
    const bool is_sparse = c.source.st_size > c.w.op->buffer_size && allocated < c.source.st_size;
    DataCopy d{.c = c, .in = in.get(), .out = out.get(), .is_sparse = is_sparse};
    const Outcome outcome = copy_content(d);
    if (outcome != Outcome::kCopied) {
        in.close();
        remove_partial(c, std::move(out));
        if (outcome == Outcome::kStopped) return kStopAll;
        if (outcome == Outcome::kReadFailed)
            return ask_about(c, "Error reading '%s'\n%s\n", source_path(c), d.error);
        return ask_about(c, kUnwritable, copy_path(c), d.error);
    }
    const int result = finish_open(c, out.get());
    struct stat own;
    const bool is_known = fstat(out.get(), &own) == 0;
    if (out.close() == 0) {
        if (is_known) note_brought(c.w, own);
        return result;
    }
    // A disk may tell only here that it has not taken the data. Of a link's target the name isn't
    // known.
    const int error = errno;
    if (is_known) unlink_copy(c, own);
    return ask_about(c, kUnwritable, copy_path(c), error);
}

/// Has the user give a shorter name. False: the entry is to be skipped.
bool ask_new_name(EntryCopy& c) {
    show_entry(c);
    std::string name = copy_path(c);
    if (FilenameTooLong(c.w.op, source_path(c), &name) == 0) return false;
    c.new_name = name;
    c.to = AT_FDCWD;
    c.to_name = c.new_name.c_str();
    look_at_target(c);
    return true;
}

}  // namespace

int copy_regular(EntryCopy& c) {
    for (;;) {
        if (c.exists && is_own_target(c)) return refuse_into_itself(c.w);
        if (c.exists) {
            if (was_brought(c.w, c.target)) return ask_about(c, kUnwritable, copy_path(c), EEXIST);
            show_entry(c);
            const int answer = ask_overwrite(c.w, kTitle, copy_path(c));
            if (answer != kEntryDone) return answer;
        }
        Fd in = open_source(c);
        if (!in) {
            const int error = errno;
            return ask_about(c, "Unable to open '%s'\n%s\n", source_path(c), error);
        }
        Fd out = c.exists ? open_target(c) : make_file(c);
        if (out) return copy_opened(c, std::move(in), std::move(out));
        const int error = errno;
        if (error == EEXIST && !c.looked) {
            look_at_target(c);
            if (c.exists) continue;
        }
        if (error == ENAMETOOLONG && c.new_name.empty()) {
            if (ask_new_name(c)) continue;
            return kEntrySkipped;
        }
        return ask_about(c, kUnwritable, copy_path(c), error);
    }
}

}  // namespace dorn
