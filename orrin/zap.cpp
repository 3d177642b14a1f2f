// Sends a signal to the caller's processes of one name: zap [-f] [-s SIGNAL] name
//
// A process is the caller's when their real user ids are the same; root's is no exception, so that
// a signal meant for one's own programs never reaches another user's.
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <getopt.h>
#include <memory>
#include <optional>
#include <string>
#include <strings.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int kSomeSignalled = 0;
constexpr int kNoneSignalled = 1;
constexpr int kWrongUsage = 2;
// What the system keeps of a process's name.
constexpr std::size_t kNameLength = 15;

constexpr const char* kUsage =
    "usage: zap [-f] [-s SIGNAL] name\n"
    "Sends the signal (TERM without -s) to each process of this user whose program has the name.\n"
    "  -s  a name as TERM or SIGTERM, or a number\n"
    "  -f  accepted; zap never asks\n"
    "Exit status: 0 when a process was signalled, 1 when none was, 2 for wrong usage.\n";

std::optional<int> signal_number(const std::string& text) {
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size())
        return number >= 0 && number < NSIG ? std::optional(number) : std::nullopt;
    const char* name = text.c_str();
    if (strncasecmp(name, "SIG", 3) == 0) name += 3;
    for (int i = 1; i < NSIG; ++i) {
        const char* candidate = sigabbrev_np(i);
        if (candidate != nullptr && strcasecmp(name, candidate) == 0) return i;
    }
    return std::nullopt;
}

/// The beginning of /proc/PID/FILE, which holds what is asked of it; empty when the process is
/// gone.
std::string proc_text(pid_t pid, const char* file) {
    const std::string path = "/proc/" + std::to_string(pid) + "/" + file;
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return {};
    char text[2048];
    const ssize_t length = read(descriptor, text, sizeof text);
    close(descriptor);
    return {text, static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

/// The first word behind `key` in the text of /proc/PID/status. The name of the process stands
/// there too, but with its newlines escaped.
std::string status_word(const std::string& status, const std::string& key) {
    const std::size_t line = status.find("\n" + key + ":\t");
    if (line == std::string::npos) return {};
    const std::size_t begin = line + key.size() + 3;
    return status.substr(begin, status.find_first_of("\t \n", begin) - begin);
}

bool is_wanted(pid_t pid, const std::string& name) {
    if (proc_text(pid, "comm") != name + "\n") return false;
    const std::string status = proc_text(pid, "status");
    const std::string state = status_word(status, "State");
    return state != "Z" && state != "X" && status_word(status, "Uid") == std::to_string(getuid());
}

/// True when the signal was sent. The descriptor is opened before the last look at the process, so
/// what is signalled is what was looked at, even when the number passes to another process.
bool signal_process(pid_t pid, const std::string& name, int signal) {
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (descriptor < 0) {
        // A kernel or a sandbox without these descriptors; any other error means it is gone.
        if (errno != ENOSYS && errno != EPERM) return false;
        return is_wanted(pid, name) && kill(pid, signal) == 0;
    }
    const bool sent =
        is_wanted(pid, name) && syscall(SYS_pidfd_send_signal, descriptor, signal, nullptr, 0) == 0;
    close(descriptor);
    return sent;
}

int zap(const std::string& name, int signal) {
    const std::unique_ptr<DIR, int (*)(DIR*)> processes(opendir("/proc"), closedir);
    if (!processes) {
        std::perror("zap: /proc");
        return kNoneSignalled;
    }
    int result = kNoneSignalled;
    while (const dirent* entry = readdir(processes.get())) {
        const char* end = entry->d_name + std::strlen(entry->d_name);
        pid_t pid = 0;
        if (std::from_chars(entry->d_name, end, pid).ptr != end || pid == getpid()) continue;
        if (is_wanted(pid, name) && signal_process(pid, name, signal)) result = kSomeSignalled;
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    constexpr option kLongOptions[] = {{"help", no_argument, nullptr, 'h'}, {}};
    int signal = SIGTERM;
    for (int letter = 0; (letter = getopt_long(argc, argv, "fs:", kLongOptions, nullptr)) != -1;) {
        if (letter == 'h') {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (letter == 'f') continue;
        const std::optional<int> number =
            letter == 's' ? signal_number(optarg) : std::optional<int>();
        if (!number) {
            if (letter == 's') std::fputs("zap: there is no such signal\n", stderr);
            std::fputs(kUsage, stderr);
            return kWrongUsage;
        }
        signal = *number;
    }
    const std::string name = argc - optind == 1 ? argv[optind] : "";
    if (name.empty()) {
        std::fputs(kUsage, stderr);
        return kWrongUsage;
    }
    return zap(name.substr(0, kNameLength), signal);
}
