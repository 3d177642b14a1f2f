#include "wants_input.h"

#include "platform/fd.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/uio.h>
#include <termios.h>
#include <vector>

namespace dorn {
namespace {

/// A thread that is looked at.
struct Thread {
    pid_t process;
    std::string folder;  ///< its folder in /proc
    dev_t terminal;
};

/// The start of a small file in /proc; nothing when it can't be read.
std::optional<std::string> read_start(const std::string& path) {
    const Fd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) return std::nullopt;
    std::array<char, 4096> bytes;
    const ssize_t count = read(file.get(), bytes.data(), bytes.size());
    if (count < 0) return std::nullopt;
    return std::string(bytes.data(), static_cast<size_t>(count));
}

bool is_terminal(const Thread& thread, uint64_t fd) {
    struct stat status {};
    const std::string path =
        "/proc/" + std::to_string(thread.process) + "/fd/" + std::to_string(fd);
    return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) &&
           (status.st_rdev == thread.terminal || status.st_rdev == makedev(5, 0));
}

/// Copies bytes out of the other process; false when it does not allow it.
bool read_memory(const Thread& thread, uint64_t address, void* into, size_t size) {
    const iovec here{into, size};
    // The address is the other process's; as a pointer it is only handed to the kernel.
    void* place = nullptr;
    std::memcpy(&place, &address, sizeof place);
    const iovec there{place, size};
    return process_vm_readv(thread.process, &here, 1, &there, 1, 0) == static_cast<ssize_t>(size);
}

bool poll_waits_for_terminal(const Thread& thread, uint64_t address, uint64_t count) {
    std::vector<pollfd> set(std::min<uint64_t>(count, 1024));
    if (set.empty() || !read_memory(thread, address, set.data(), set.size() * sizeof set[0]))
        return false;
    return std::any_of(set.begin(), set.end(), [&](const pollfd& item) {
        return item.fd >= 0 && (item.events & POLLIN) != 0 &&
               is_terminal(thread, static_cast<uint64_t>(item.fd));
    });
}

bool select_waits_for_terminal(const Thread& thread, uint64_t count, uint64_t address) {
    fd_set set;
    FD_ZERO(&set);
    const uint64_t limit = std::min<uint64_t>(count, FD_SETSIZE);
    if (address == 0 || !read_memory(thread, address, &set, (limit + 63) / 64 * 8)) return false;
    for (uint64_t fd = 0; fd < limit; ++fd)
        if (FD_ISSET(static_cast<int>(fd), &set) && is_terminal(thread, fd)) return true;
    return false;
}

bool epoll_waits_for_terminal(const Thread& thread, uint64_t fd) {
    const std::optional<std::string> text =
        read_start("/proc/" + std::to_string(thread.process) + "/fdinfo/" + std::to_string(fd));
    if (!text) return false;
    // A line for each descriptor: "tfd: 0 events: 19 ...".
    constexpr const char* kItem = "\ntfd:";
    for (size_t at = text->find(kItem); at != std::string::npos; at = text->find(kItem, at + 1)) {
        uint64_t item = 0;
        uint32_t events = 0;
        if (std::sscanf(text->c_str() + at, "\ntfd: %" SCNu64 " events: %" SCNx32, &item,
                        &events) == 2 &&
            (events & EPOLLIN) != 0 && is_terminal(thread, item))
            return true;
    }
    return false;
}

bool call_waits_for_terminal(const Thread& thread, long call, uint64_t first, uint64_t second) {
    switch (call) {
        case SYS_read:
        case SYS_readv:
            return is_terminal(thread, first);
#ifdef SYS_poll
        case SYS_poll:
#endif
        case SYS_ppoll:
            return poll_waits_for_terminal(thread, first, second);
#ifdef SYS_select
        case SYS_select:
#endif
        case SYS_pselect6:
            return select_waits_for_terminal(thread, first, second);
#ifdef SYS_epoll_wait
        case SYS_epoll_wait:
#endif
        case SYS_epoll_pwait:
        case SYS_epoll_pwait2:
            return epoll_waits_for_terminal(thread, first);
        default:
            return false;
    }
}

/// The judgement from the name of the kernel function that the thread sleeps in: "0" when it runs
/// or the name is hidden.
InputWish wish_by_sleep(const Thread& thread) {
    const std::optional<std::string> place = read_start(thread.folder + "/wchan");
    if (!place || place->empty() || *place == "0") return InputWish::kUnknown;
    const bool reads = *place == "n_tty_read" || *place == "tty_read" || *place == "wait_woken";
    return reads && is_terminal(thread, 0) ? InputWish::kYes : InputWish::kNo;
}

InputWish thread_wish(const Thread& thread) {
    const std::optional<std::string> text = read_start(thread.folder + "/syscall");
    if (!text) {
        // Either hidden, or the thread has ended meanwhile.
        struct stat status {};
        if (stat(thread.folder.c_str(), &status) != 0) return InputWish::kNo;
        return wish_by_sleep(thread);
    }
    long call = -1;
    uint64_t first = 0;
    uint64_t second = 0;
    if (std::sscanf(text->c_str(), "%ld %" SCNx64 " %" SCNx64, &call, &first, &second) != 3)
        return InputWish::kNo;
    return call_waits_for_terminal(thread, call, first, second) ? InputWish::kYes : InputWish::kNo;
}

void append_children(const Thread& thread, std::vector<pid_t>& processes) {
    const std::optional<std::string> text = read_start(thread.folder + "/children");
    if (!text) return;
    for (const char* at = text->c_str();;) {
        char* end = nullptr;
        const long child = std::strtol(at, &end, 10);
        if (end == at) return;
        processes.push_back(static_cast<pid_t>(child));
        at = end;
    }
}

/// The folders of a process's threads.
std::vector<std::string> thread_folders(pid_t process) {
    const std::string path = "/proc/" + std::to_string(process) + "/task";
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
    std::vector<std::string> threads;
    if (!folder) return threads;
    while (const dirent* entry = readdir(folder.get()))
        if (entry->d_name[0] != '.') threads.push_back(path + "/" + entry->d_name);
    return threads;
}

}  // namespace

InputWish processes_want_input(pid_t top, dev_t terminal) {
    InputWish wish = thread_folders(top).empty() ? InputWish::kUnknown : InputWish::kNo;
    std::vector<pid_t> processes{top};
    for (size_t index = 0; index < processes.size(); ++index) {
        const pid_t process = processes[index];
        for (std::string& folder : thread_folders(process)) {
            const Thread thread{process, std::move(folder), terminal};
            const InputWish its = thread_wish(thread);
            if (its == InputWish::kYes) return its;
            if (its == InputWish::kUnknown) wish = its;
            append_children(thread, processes);
        }
    }
    return wish;
}

bool terminal_is_raw(int master) {
    termios modes{};
    return tcgetattr(master, &modes) == 0 && (modes.c_lflag & (ICANON | ECHO)) != (ICANON | ECHO);
}

}  // namespace dorn
