#include "platform/whole_file.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr int kMaxLinks = 40;   // links followed one after the other, as the system does
constexpr int kMaxNames = 100;  // temporaries tried before the folder counts as full of them

/// The folder part of `path`, as a text to put a name behind ("" for a plain name).
std::string folder_of(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

/// Follows `path` while it is a symbolic link, also one to a file that is yet to be made. 0, or -1
/// with errno set.
int follow_links(std::string* path) {
    for (int i = 0; i < kMaxLinks; ++i) {
        std::array<char, PATH_MAX> target;
        const ssize_t length = readlink(path->c_str(), target.data(), target.size());
        if (length < 0) return errno == EINVAL || errno == ENOENT ? 0 : -1;
        const std::string text(target.data(), static_cast<std::size_t>(length));
        *path = text.front() == '/' ? text : folder_of(*path) + text;
    }
    errno = ELOOP;
    return -1;
}

int write_all(int fd, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = write(fd, content.data(), content.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return -1;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

/// Closes `fd` and passes on `result`, or -1 when the close itself fails. errno is of the first
/// failure. (A close that is interrupted has closed.)
int close_with(int fd, int result) {
    const int before = errno;
    const bool closed = close(fd) == 0 || errno == EINTR;
    if (result != 0) errno = before;
    return closed ? result : -1;
}

/// Writes over the file at `target`. It is cut only after the content is there, so that a full
/// disk meets blocks the file already has.
int write_in_place(const std::string& target, std::string_view content) {
    const int fd = open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (fd < 0) return -1;
    int result = write_all(fd, content);
    struct stat status {};
    if (result == 0) result = fstat(fd, &status);
    if (result == 0 && S_ISREG(status.st_mode)) {
        result = ftruncate(fd, static_cast<off_t>(content.size()));
        if (result == 0) result = fsync(fd);
    }
    return close_with(fd, result);
}

/// Makes an empty file of an unused name in `folder`. Its descriptor, or -1 with errno set.
int make_temporary(const std::string& folder, std::string* name) {
    for (int i = 0; i < kMaxNames; ++i) {
        *name = folder + ".dorn." + std::to_string(getpid()) + "." + std::to_string(i);
        const int fd = open(name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) return fd;
    }
    return -1;
}

/// Gives the temporary the mode and, where that is allowed, the owner of the file it replaces.
int take_over_mode(int fd, const struct stat& old) {
    [[maybe_unused]] const int owner_kept = fchown(fd, old.st_uid, old.st_gid);
    return fchmod(fd, old.st_mode & 07777);
}

}  // namespace

int write_whole_file(const std::string& path, std::string_view content) {
    std::string target = path;
    if (follow_links(&target) != 0) return -1;
    struct stat old {};
    const bool exists = stat(target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) return write_in_place(target, content);
    // A file that its owner has made read-only stays as it is, though a rename could replace it.
    if (exists && access(target.c_str(), W_OK) != 0) return -1;

    std::string temporary;
    const int fd = make_temporary(folder_of(target), &temporary);
    if (fd < 0) {
        const bool refused = errno == EACCES || errno == EROFS || errno == EPERM;
        return refused ? write_in_place(target, content) : -1;
    }
    int result = exists ? take_over_mode(fd, old) : 0;
    if (result == 0) result = write_all(fd, content);
    if (result == 0) result = fsync(fd);
    result = close_with(fd, result);
    if (result == 0) result = rename(temporary.c_str(), target.c_str());
    if (result == 0) return 0;
    const int error = errno;
    unlink(temporary.c_str());
    errno = error;
    return -1;
}

int read_whole_file(const std::string& path, std::size_t limit, std::string* content) {
    content->clear();
    // Without O_NONBLOCK the open would wait for the writer of a FIFO.
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return -1;
    struct stat status {};
    int result = fstat(fd, &status);
    if (result == 0 && !S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        result = -1;
    }
    std::array<char, 65536> part;
    while (result == 0 && content->size() < limit) {
        const std::size_t wanted = std::min(part.size(), limit - content->size());
        const ssize_t got = read(fd, part.data(), wanted);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) result = -1;
        if (got <= 0) break;
        content->append(part.data(), static_cast<std::size_t>(got));
    }
    if (result != 0) content->clear();
    const int error = errno;
    close(fd);
    errno = error;
    return result;
}

std::string join_path(const std::string& directory, const std::string& name) {
    return directory.ends_with('/') ? directory + name : directory + "/" + name;
}

}  // namespace dorn
