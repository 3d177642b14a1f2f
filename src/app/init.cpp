#include "app/init.h"

#include "app/base.h"
#include "assoc/engine/association.h"
#include "config/config.h"
#include "config/history.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "platform/spare_thread.h"
#include "platform/spawn.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr int kAnswerMs = 10000;  // for a path on the command line that may lie on a dead mount

std::string current_directory() {
    std::array<char, kPathSize> path{};
    return getcwd(path.data(), path.size()) == nullptr ? "" : path.data();
}

// Reading a directory changes the working one, so what is kept must not depend on it.
std::string absolute(const std::string& path) {
    if (path.starts_with('/')) return path;
    const std::string here = current_directory();
    return here.empty() ? path : es_construct_fullpath(here.c_str(), path.c_str());
}

std::string start_candidate(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        if (argument[0] == '-') continue;
        return argument[0] == '\0' ? "" : absolute(argument);
    }
    return {};
}

// No window is up yet, so the wait for a dead mount serves no event loop.
bool answers_as_directory(const std::string& path) {
    auto answer = std::make_shared<int>(-1);
    const bool answered = spare_call(
        [path, answer] { *answer = fs_path_is_directory_here(path.c_str()); }, kAnswerMs);
    return answered && *answer > 0;
}

std::string unusable(const char* what, const std::string& directory) {
    std::fprintf(stderr, "DORN error: unable to %s config directory %s\n", what, directory.c_str());
    return {};
}

}  // namespace

std::string init_start_path(int argc, char** argv) {
    const std::string candidate = start_candidate(argc, argv);
    if (!candidate.empty() && answers_as_directory(candidate)) return candidate;
    const std::string here = current_directory();
    return here.empty() ? "/" : here;
}

std::string init_config_directory(const char* home) {
    const std::string directory =
        home == nullptr ? "/.or/dorn" : absolute(es_construct_fullpath(home, ".or/dorn"));
    struct stat status {};
    if (stat(directory.c_str(), &status) == -1) {
        if (errno != ENOENT && errno != ENOTDIR) return unusable("access", directory);
        if (mkdir(directory.c_str(), 0700) == -1) return unusable("create", directory);
        return directory;
    }
    if (!S_ISDIR(status.st_mode) || access(directory.c_str(), W_OK) == -1)
        return unusable("access", directory);
    return directory;
}

int init(int argc, char** argv) {
    setpgid(0, 0);
    orrin_append_adaptors_to_path();
    gStartPath = init_start_path(argc, argv);

    static std::string sConfigPath;
    sConfigPath = init_config_directory(std::getenv("HOME"));
    gConfigPath = sConfigPath.empty() ? nullptr : &sConfigPath;
    const char* directory = gConfigPath == nullptr ? nullptr : gConfigPath->c_str();

    gConfig = new Config{};  // lives for the whole run
    const uint32_t encoding = config_load(*gConfig, directory, "config.003");
    fname_set_translation(encoding, gConfig->alt_encoding);
    init_read_cboxs(directory);
    init_read_associations(directory, "associate.003");
    return 0;
}

}  // namespace dorn
