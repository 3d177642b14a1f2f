#include "platform/spawn.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <spawn.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

extern char** environ;

namespace dorn {

namespace {

constexpr std::string_view kOrrinFolder = "/usr/orrin/bin/";
// Seen from the program's folder: in an installation, in a build tree.
constexpr const char* kAdaptorFolders[] = {".", "../orrin"};
constexpr const char* kRunning = "/proc/self/exe";
constexpr int kFirstOwnDescriptor = 3;

std::string sAdaptors;    // their folder; empty while none was found
std::mutex sEnvironment;  // held while `environ` is written, or read for a start

bool is_executable_file(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

std::string running_executable() {
    std::array<char, PATH_MAX> path;
    const ssize_t length = readlink(kRunning, path.data(), path.size());
    if (length <= 0 || static_cast<std::size_t>(length) == path.size()) return {};
    return std::string(path.data(), static_cast<std::size_t>(length));
}

std::string search_path() {
    const std::lock_guard lock(sEnvironment);
    if (const char* path = std::getenv("PATH")) return path;
    std::array<char, 256> standard{};
    confstr(_CS_PATH, standard.data(), standard.size());
    return standard.data();
}

/// Settings of a start: the dispositions, the mask, the group and the descriptors of the child.
class Settings {
  public:
    explicit Settings(const SpawnFiles& files) {
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        // A group of its own: an interrupt typed at the terminal that dorn was started from is not
        // for the editor somebody opened.
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
        posix_spawn_file_actions_init(&actions_);
        error_ = map(files.input, STDIN_FILENO);
        if (error_ == 0) error_ = map(files.output, STDOUT_FILENO);
        if (error_ == 0)
            error_ = posix_spawn_file_actions_addclosefrom_np(&actions_, kFirstOwnDescriptor);
    }
    ~Settings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    /// 0 or an errno value.
    int start(const char* path, char* const* arguments, char* const* environment,
              pid_t* process) const {
        if (error_ != 0) return error_;
        return posix_spawn(process, path, &actions_, &attributes_, arguments, environment);
    }

  private:
    int map(int from, int to) {
        return from < 0 ? 0 : posix_spawn_file_actions_adddup2(&actions_, from, to);
    }

    posix_spawnattr_t attributes_;
    posix_spawn_file_actions_t actions_;
    int error_ = 0;
};

std::vector<char*> pointers_to(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    return pointers;
}

}  // namespace

void set_environment(const char* name, const std::string& value) {
    const std::lock_guard lock(sEnvironment);
    setenv(name, value.c_str(), 1);
}

std::string find_program(const std::string& name, const std::string& folders) {
    std::string_view rest = folders;
    for (;;) {
        const std::size_t end = rest.find(':');
        std::string path(rest.substr(0, end));
        if (path.empty()) path = ".";
        path += "/" + name;
        if (is_executable_file(path)) return path;
        if (end == std::string_view::npos) return {};
        rest.remove_prefix(end + 1);
    }
}

std::string orrin_program(const std::string& program) {
    if (program.empty()) return {};
    if (program.find('/') == std::string::npos) return find_program(program, search_path());
    if (is_executable_file(program)) return program;
    if (!program.starts_with(kOrrinFolder)) return {};
    const std::string name = program.substr(program.rfind('/') + 1);
    if (name.empty()) return {};
    if (name == "dorn") {
        const std::string running = running_executable();
        if (is_executable_file(running)) return running;
        // Deleted, or replaced by another build. The child that executes it runs the same file.
        if (is_executable_file(kRunning)) return kRunning;
    }
    return find_program(name, search_path());
}

void orrin_append_adaptors_to_path() {
    const std::string running = running_executable();
    const std::string folder = running.substr(0, running.rfind('/') + 1);
    for (const char* adaptors : kAdaptorFolders) {
        std::array<char, PATH_MAX> path;
        if (realpath((folder + adaptors).c_str(), path.data()) == nullptr) continue;
        if (!is_executable_file(std::string(path.data()) + "/orterm")) continue;
        sAdaptors = path.data();
        const std::string before = search_path();
        // Inherited from the window that started this one, it is there already.
        if ((":" + before + ":").find(std::string(":") + path.data() + ":") == std::string::npos)
            set_environment("PATH", before + ":" + path.data());
        return;
    }
}

std::string orrin_adaptor(const std::string& name) {
    return sAdaptors.empty() ? std::string() : find_program(name, sAdaptors);
}

int spawn_program(const std::string& path, const std::vector<std::string>& arguments,
                  const SpawnFiles& files, const std::vector<std::string>& variables) {
    std::vector<char*> words = pointers_to(arguments);
    words.push_back(nullptr);
    std::vector<char*> environment = pointers_to(variables);
    const std::lock_guard lock(sEnvironment);
    for (char** inherited = environ; *inherited != nullptr; ++inherited)
        environment.push_back(*inherited);
    environment.push_back(nullptr);
    pid_t process = -1;
    const int error =
        Settings(files).start(path.c_str(), words.data(), environment.data(), &process);
    if (error == 0) return process;
    errno = error;
    return -1;
}

}  // namespace dorn
