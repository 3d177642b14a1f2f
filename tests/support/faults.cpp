#include "support/faults.h"

#include <cerrno>
#include <condition_variable>
#include <cstdarg>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace dorn {

namespace {

std::mutex sMutex;
std::condition_variable sChanged;
bool sActive = false;
std::vector<Fault> sFaults;
std::map<std::string, int> sCalls;
int sHanging = 0;

/// Counts the call. Its fault, or 0 when it is to go through.
int fault_of(const char* call) {
    std::unique_lock lock(sMutex);
    if (!sActive) return 0;
    const int nth = ++sCalls[call];
    const int nth_of_all = ++sCalls["*"];
    int error = 0;
    for (const Fault& fault : sFaults) {
        const bool of_all = fault.call == "*";
        if (!of_all && fault.call != call) continue;
        if (fault.nth == 0 || fault.nth == (of_all ? nth_of_all : nth)) error = fault.error;
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
bool fails(const char* call) {
    const int error = fault_of(call);
    if (error > 0) errno = error;
    return error > 0;
}

}  // namespace

Faults::Faults(std::vector<Fault> faults) {
    const std::lock_guard lock(sMutex);
    sFaults = std::move(faults);
    sCalls.clear();
    sActive = true;
}

Faults::~Faults() {
    std::unique_lock lock(sMutex);
    sActive = false;
    sChanged.notify_all();
    sChanged.wait(lock, [] { return sHanging == 0; });
}

int Faults::calls(const std::string& call) const {
    const std::lock_guard lock(sMutex);
    return sCalls[call];
}

}  // namespace dorn

// The linker sends each call of `name` to __wrap_name, and __real_name to the system's.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
#define DORN_WRAP(result, name, parameters, arguments) \
    result __real_##name parameters;                   \
    result __wrap_##name parameters {                  \
        if (dorn::fails(#name)) return -1;             \
        return __real_##name arguments;                \
    }

extern "C" {
DORN_WRAP(int, access, (const char* path, int mode), (path, mode))
DORN_WRAP(int, fchmod, (int fd, mode_t mode), (fd, mode))
DORN_WRAP(int, fchown, (int fd, uid_t user, gid_t group), (fd, user, group))
DORN_WRAP(int, fsync, (int fd), (fd))
DORN_WRAP(int, ftruncate, (int fd, off_t length), (fd, length))
DORN_WRAP(int, rename, (const char* from, const char* to), (from, to))
DORN_WRAP(int, unlink, (const char* path), (path))
DORN_WRAP(ssize_t, getdents64, (int fd, void* buffer, size_t length), (fd, buffer, length))
DORN_WRAP(int, statx, (int fd, const char* path, int flags, unsigned mask, struct statx* status),
          (fd, path, flags, mask, status))

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (dorn::fails("open")) return -1;
    return __real_open(path, flags, mode);
}

// A close that fails has closed.
int __real_close(int fd);
int __wrap_close(int fd) {
    const int error = dorn::fault_of("close");
    const int result = __real_close(fd);
    if (error <= 0) return result;
    errno = error;
    return -1;
}

ssize_t __real_write(int fd, const void* data, size_t length);
ssize_t __wrap_write(int fd, const void* data, size_t length) {
    const int error = dorn::fault_of("write");
    if (error > 0) errno = error;
    if (error > 0) return -1;
    return __real_write(fd, data, error == dorn::kShort ? length / 2 : length);
}

ssize_t __real_read(int fd, void* data, size_t length);
ssize_t __wrap_read(int fd, void* data, size_t length) {
    const int error = dorn::fault_of("read");
    if (error > 0) errno = error;
    if (error > 0) return -1;
    return __real_read(fd, data, error == dorn::kShort ? length / 2 : length);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
