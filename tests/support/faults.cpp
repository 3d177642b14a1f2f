#include "support/faults.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdarg>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace dorn {

namespace {

struct Counted {
    Fault fault;
    int calls = 0;  // that it is for
};

std::mutex sMutex;
std::condition_variable sChanged;
bool sActive = false;
std::vector<Counted> sFaults;
int sCalls = 0;
int sHanging = 0;
thread_local bool sInHook = false;

/// The base name of what a call is for.
std::string subject(const char* path) {
    return std::filesystem::path(path == nullptr ? "" : path).filename();
}
std::string subject(int fd) {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), ignored).filename();
}

template <typename Subject>
bool is_for(const Fault& fault, const char* call, Subject what) {
    const bool is_other = fault.call[0] == '!' && fault.call.substr(1) != call;
    if (fault.call != "*" && fault.call != call && !is_other) return false;
    return fault.name.empty() || fault.name == subject(what);
}

/// Counts the call. Its fault, or 0 when it is to go through.
template <typename Subject>
int fault_of(const char* call, Subject what) {
    if (sInHook) return 0;
    std::unique_lock lock(sMutex);
    if (!sActive) return 0;
    ++sCalls;
    int error = 0;
    std::function<void()> before;
    for (Counted& counted : sFaults) {
        const Fault& fault = counted.fault;
        if (!is_for(fault, call, what)) continue;
        ++counted.calls;
        if (fault.nth != 0 && fault.nth != counted.calls) continue;
        if (fault.error != 0) error = fault.error;
        if (fault.before) before = fault.before;
    }
    if (before) {
        lock.unlock();
        sInHook = true;
        before();
        sInHook = false;
        lock.lock();
    }
    if (error == kDie) _exit(9);
    if (error != kHang) return error;
    ++sHanging;
    sChanged.wait(lock, [] { return !sActive; });
    --sHanging;
    sChanged.notify_all();
    return 0;
}

/// Whether the call fails; errno says with what.
template <typename Subject>
bool fails(const char* call, Subject what) {
    const int before = errno;
    const int error = fault_of(call, what);
    errno = error > 0 ? error : before;
    return error > 0;
}

/// How long to sleep instead, in microseconds.
useconds_t cut_sleep(useconds_t time) {
    constexpr useconds_t kMoment = 1000;
    const std::lock_guard lock(sMutex);
    return sActive ? std::min(time, kMoment) : time;
}

}  // namespace

Faults::Faults(std::vector<Fault> faults) {
    const std::lock_guard lock(sMutex);
    sFaults.clear();
    for (Fault& fault : faults)
        sFaults.push_back({std::move(fault)});
    sCalls = 0;
    sActive = true;
}

Faults::~Faults() {
    std::unique_lock lock(sMutex);
    sActive = false;
    sChanged.notify_all();
    sChanged.wait(lock, [] { return sHanging == 0; });
}

int Faults::calls() {
    const std::lock_guard lock(sMutex);
    return sCalls;
}

}  // namespace dorn

// The linker sends each call of `name` to __wrap_name, and __real_name to the system's. `subject`
// is the parameter that says which file it is for: a descriptor, or the path p.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
#define DORN_WRAP(result, name, parameters, arguments, subject) \
    result __real_##name parameters;                            \
    result __wrap_##name parameters {                           \
        if (dorn::fails(#name, subject)) return -1;             \
        return __real_##name arguments;                         \
    }

extern "C" {
DORN_WRAP(int, access, (const char* p, int mode), (p, mode), p)
DORN_WRAP(int, fchmod, (int fd, mode_t mode), (fd, mode), fd)
DORN_WRAP(int, fchmodat, (int at, const char* p, mode_t mode, int f), (at, p, mode, f), p)
DORN_WRAP(int, fchown, (int fd, uid_t user, gid_t group), (fd, user, group), fd)
DORN_WRAP(int, fchownat, (int at, const char* p, uid_t u, gid_t g, int f), (at, p, u, g, f), p)
DORN_WRAP(int, fstat, (int fd, struct stat* status), (fd, status), fd)
DORN_WRAP(int, fstatat, (int at, const char* p, struct stat* s, int f), (at, p, s, f), p)
DORN_WRAP(int, fsync, (int fd), (fd), fd)
DORN_WRAP(int, ftruncate, (int fd, off_t length), (fd, length), fd)
DORN_WRAP(int, futimens, (int fd, const timespec* times), (fd, times), fd)
DORN_WRAP(ssize_t, getdents64, (int fd, void* buffer, size_t length), (fd, buffer, length), fd)
DORN_WRAP(off_t, lseek, (int fd, off_t offset, int whence), (fd, offset, whence), fd)
DORN_WRAP(int, mkdirat, (int at, const char* p, mode_t mode), (at, p, mode), p)
DORN_WRAP(int, mkfifoat, (int at, const char* p, mode_t mode), (at, p, mode), p)
DORN_WRAP(ssize_t, readlinkat, (int at, const char* p, char* to, size_t n), (at, p, to, n), p)
DORN_WRAP(int, rename, (const char* p, const char* to), (p, to), p)
DORN_WRAP(int, renameat, (int a, const char* p, int b, const char* to), (a, p, b, to), p)
DORN_WRAP(int, renameat2, (int a, const char* p, int b, const char* to, unsigned f),
          (a, p, b, to, f), p)
DORN_WRAP(int, stat, (const char* p, struct stat* status), (p, status), p)
DORN_WRAP(int, statx, (int at, const char* p, int f, unsigned mask, struct statx* s),
          (at, p, f, mask, s), p)
DORN_WRAP(int, symlinkat, (const char* target, int at, const char* p), (target, at, p), p)
DORN_WRAP(int, unlink, (const char* p), (p), p)
DORN_WRAP(int, unlinkat, (int at, const char* p, int f), (at, p, f), p)
DORN_WRAP(int, utimensat, (int at, const char* p, const timespec* t, int f), (at, p, t, f), p)

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define DORN_WRAP_OPEN(name, parameters, arguments)                                          \
    int __real_##name parameters;                                                            \
    int __wrap_##name parameters {                                                           \
        va_list more;                                                                        \
        va_start(more, flags);                                                               \
        const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0; \
        va_end(more);                                                                        \
        if (dorn::fails(#name, path)) return -1;                                             \
        return __real_##name arguments;                                                      \
    }
DORN_WRAP_OPEN(open, (const char* path, int flags, ...), (path, flags, mode))
DORN_WRAP_OPEN(openat, (int at, const char* path, int flags, ...), (at, path, flags, mode))

// A close that fails has closed.
int __real_close(int fd);
int __wrap_close(int fd) {
    const int error = dorn::fault_of("close", fd);
    const int result = __real_close(fd);
    if (error <= 0) return result;
    errno = error;
    return -1;
}

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage)
#define DORN_WRAP_TRANSFER(name, pointer)                                                  \
    ssize_t __real_##name(int fd, pointer data, size_t length);                            \
    ssize_t __wrap_##name(int fd, pointer data, size_t length) {                           \
        const int error = dorn::fault_of(#name, fd);                                       \
        if (error > 0) return (errno = error, -1);                                         \
        return __real_##name(fd, data, error == dorn::kShort ? (length + 1) / 2 : length); \
    }
DORN_WRAP_TRANSFER(write, const void*)
DORN_WRAP_TRANSFER(read, void*)

int __real_usleep(useconds_t time);
int __wrap_usleep(useconds_t time) {
    return __real_usleep(dorn::cut_sleep(time));
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
