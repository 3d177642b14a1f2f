// The command `dorn` of an installation. The program itself is in the private folder of the
// adaptors and keeps its files in $HOME/.or/dorn, but does not make $HOME/.or, which belongs to the
// system it was made for. On this one nobody else makes it, and without it nothing would be saved.
// So this command does, however dorn is started, and becomes the program.

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t kFolderMode = 0777;  // less the user's mask
constexpr int kNotFound = 127;        // exit status, as a shell has it

// A failure is left for the program to tell, which finds its folder missing.
void make_settings_parent() {
    const char* home = std::getenv("HOME");
    if (home == nullptr || home[0] != '/') return;
    mkdir((std::string(home) + "/.or").c_str(), kFolderMode);
}

// Beside this command, wherever the installation lies and whatever link it was called by.
std::string program_path() {
    std::array<char, PATH_MAX> path;
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0 || static_cast<std::size_t>(length) == path.size()) return DORN_PROGRAM;
    const std::string command(path.data(), static_cast<std::size_t>(length));
    return command.substr(0, command.rfind('/') + 1) + DORN_PROGRAM;
}

}  // namespace

int main(int, char** argv) {
    make_settings_parent();
    const std::string program = program_path();
    execv(program.c_str(), argv);
    std::fprintf(stderr, "dorn: %s: %s\n", program.c_str(), std::strerror(errno));
    return kNotFound;
}
