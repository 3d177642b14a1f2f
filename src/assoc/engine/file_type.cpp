#include "assoc/engine/file_type.h"

#include "platform/spawn.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <list>
#include <mutex>
#include <new>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr std::size_t kLineSize = 2048;

struct PipeRecord {
    FILE* stream = nullptr;
    pid_t process = -1;  // until the command is started
};

std::mutex popen_mutex;
// Never destroyed: at the program's end a thread that was left behind may still use it.
std::list<PipeRecord>& popen_list = *new std::list<PipeRecord>;
using PipePlace = std::list<PipeRecord>::iterator;

// Both ends of a pipe; what is still held is closed.
struct PipeEnds {
    std::array<int, 2> ends = {-1, -1};

    PipeEnds() = default;
    PipeEnds(const PipeEnds&) = delete;
    PipeEnds& operator=(const PipeEnds&) = delete;
    ~PipeEnds() {
        const int error = errno;
        for (const int end : ends) {
            if (end >= 0) close(end);
        }
        errno = error;
    }

    /// 0, or -1 with errno set. The ends are never standard descriptors, which the child's own
    /// would be put over.
    int make() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            ends = {-1, -1};
            return -1;
        }
        return std::all_of(ends.begin(), ends.end(), lift) ? 0 : -1;
    }

  private:
    static bool lift(int& end) {
        if (end > STDERR_FILENO) return true;
        const int lifted = fcntl(end, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (lifted < 0) return false;
        close(end);
        end = lifted;
        return true;
    }
};

std::string shell_program() {
    std::array<char, 256> folders{};
    const std::size_t size = confstr(_CS_PATH, folders.data(), folders.size());
    std::string shell;
    if (size > 0 && size <= folders.size()) shell = find_program("sh", folders.data());
    return shell.empty() ? "/bin/sh" : shell;
}

/// Makes the stream of the parent's end and starts the command at the other. 0, or -1 with errno
/// set; the stream, if there is one, is then the caller's to close.
int open_and_start(PipeRecord* made, PipeEnds* pipe, const char* command, bool reads) {
    int& own = pipe->ends[reads ? 0 : 1];
    made->stream = fdopen(own, reads ? "r" : "w");
    if (made->stream == nullptr) return -1;
    own = -1;  // the stream's
    SpawnFiles files;
    (reads ? files.output : files.input) = pipe->ends[reads ? 1 : 0];
    made->process = spawn_program(shell_program(), {"sh", "-c", command}, files);
    return made->process == -1 ? -1 : 0;
}

PipePlace add_record() {
    const std::lock_guard lock(popen_mutex);
    return popen_list.insert(popen_list.begin(), PipeRecord{});
}

void drop_record(PipePlace place) {
    const std::lock_guard lock(popen_mutex);
    popen_list.erase(place);
}

struct ModeWord {
    mode_t type;
    const char* word;
};
constexpr mode_t kNamedSpecialFile = 0050000;
constexpr mode_t kKestrelBit = 0040000;
constexpr mode_t kExecuteBits = 0111;
constexpr ModeWord kModeWords[] = {
    {S_IFIFO, "FIFO"},          {S_IFCHR, "Special File"},
    {S_IFDIR, "Directory"},     {S_IFBLK, "Block Special File"},
    {S_IFLNK, "Symbolic Link"}, {kNamedSpecialFile, "Special Named File"},
    {S_IFSOCK, "Socket"},
};

bool is_letter_or_digit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Whether a shell takes the bare path for nothing but words, none of which looks like an option.
bool may_go_bare(std::string_view path) {
    constexpr std::string_view others = "/_.,+-@%=: ";
    char before = ' ';
    for (const char c : path) {
        const bool harmless = is_letter_or_digit(c) || static_cast<unsigned char>(c) > 0x7F ||
                              others.find(c) != std::string_view::npos;
        if (!harmless || (c == '-' && before == ' ')) return false;
        before = c;
    }
    return true;
}

/// The first line that `file` prints for the path; empty when it prints none.
std::string first_line_of_file(const char* path) {
    FILE* stream = dorn::popen((std::string("file -L ") + path).c_str(), "r");
    if (stream == nullptr) return {};
    std::array<char, kLineSize> line{};
    const bool got = std::fgets(line.data(), static_cast<int>(line.size()), stream) != nullptr;
    dorn::pclose(stream);
    return got ? line.data() : "";
}

}  // namespace

FILE* popen(const char* command, const char* mode) {
    if (mode[0] != 'r' && mode[0] != 'w') {
        errno = EINVAL;
        return nullptr;
    }
    PipePlace place;
    try {
        place = add_record();
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return nullptr;
    }
    PipeEnds pipe;
    PipeRecord made;
    if (pipe.make() == 0 && open_and_start(&made, &pipe, command, mode[0] == 'r') == 0) {
        const std::lock_guard lock(popen_mutex);
        *place = made;
        return made.stream;
    }
    const int error = errno;
    drop_record(place);
    if (made.stream != nullptr) std::fclose(made.stream);
    errno = error;
    return nullptr;
}

int pclose(FILE* stream) {
    std::unique_lock lock(popen_mutex);
    const auto found =
        std::find_if(popen_list.begin(), popen_list.end(), [stream](const PipeRecord& record) {
            return record.stream == stream && stream != nullptr;
        });
    if (found == popen_list.end()) {
        errno = EINVAL;
        return -1;
    }
    const pid_t process = found->process;
    popen_list.erase(found);
    lock.unlock();
    std::fclose(stream);
    int status = 0;
    while (waitpid(process, &status, 0) == -1) {
        if (errno != EINTR) return -1;
    }
    return status;
}

const char* as_mode_word(uint32_t mode) {
    for (const ModeWord& row : kModeWords) {
        if ((mode & S_IFMT) == row.type) return row.word;
    }
    if ((mode & S_IFMT & kKestrelBit) != 0) return "Kestrel Special Type";
    if ((mode & kExecuteBits) != 0) return "Executable";
    return S_ISREG(mode) ? "Regular File" : nullptr;
}

int as_get_filetype(const char* path, uint32_t mode, std::string* out) {
    if (const std::string line = may_go_bare(path) ? first_line_of_file(path) : ""; !line.empty()) {
        const std::size_t colon = line.find(':');
        *out = colon == std::string::npos ? line : line.substr(std::min(colon + 2, line.size()));
        return 1;
    }
    const char* word = as_mode_word(mode);
    if (word == nullptr) return 0;
    *out = word;
    return 1;
}

}  // namespace dorn
