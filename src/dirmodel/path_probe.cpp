// Probes of one path: what the tree, the menus and start-up ask of a directory without reading it.
#include "dirmodel/dir_read.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "ui/background.h"

#include <algorithm>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace dorn {

namespace {

constexpr nlink_t kPlainLinks = 2;  // of a directory without subdirectories

struct DirCloser {
    void operator()(DIR* dir) const {
        closedir(dir);
    }
};
using DirHandle = std::unique_ptr<DIR, DirCloser>;

bool is_considered(const char* name, int flags) {
    if (name[0] != '.') return true;
    const bool itself = name[1] == '\0' || (name[1] == '.' && name[2] == '\0');
    return !itself && (flags & kCountDotDirectories) != 0;
}

// Whether the entry is a directory, after following a link.
bool leads_to_directory(const DirHandle& dir, const dirent& entry) {
    if (entry.d_type == DT_DIR) return true;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return false;
    struct stat status {};
    return fstatat(dirfd(dir.get()), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// Makes `probe` of `path` elsewhere, bounded in time; -1 when it does not answer.
int bounded_probe(std::string path, int (*probe)(const char*, int), int flags) {
    const auto result = std::make_shared<int>(-1);
    const auto work = [path = std::move(path), probe, flags, result] {
        *result = probe(path.c_str(), flags);
    };
    return ui_bounded(work, gStatusLimitMs) ? *result : -1;
}

}  // namespace

int fs_path_is_directory_here(const char* path) {
    struct stat status {};
    if (stat(path, &status) != 0) return -1;
    if (!S_ISDIR(status.st_mode)) return 0;
    const nlink_t links = status.st_nlink == 0 ? kPlainLinks : status.st_nlink;
    return static_cast<int>(std::min<nlink_t>(links, INT_MAX));
}

int fs_path_is_directory(const char* path) {
    const auto probe = [](const char* probed, int) { return fs_path_is_directory_here(probed); };
    return bounded_probe(path, probe, 0);
}

int fs_has_subdirectories_here(const char* path, int flags) {
    const int links = fs_path_is_directory_here(path);
    if (links > static_cast<int>(kPlainLinks)) return links;
    const DirHandle dir(opendir(path));
    if (!dir) return -1;
    while (const dirent* entry = readdir(dir.get())) {
        if (is_considered(entry->d_name, flags) && leads_to_directory(dir, *entry)) {
            return std::max(links, 1);
        }
    }
    return 0;
}

int fs_path_has_subdirectories(const char* dir, const char* name, int flags) {
    const std::string shown = es_construct_fullpath(dir, name);
    const char* path = fname_encode(shown.c_str());
    if (path == nullptr) return -2;
    if (std::string_view(path).size() >= kPathSize) return -1;
    return bounded_probe(path, fs_has_subdirectories_here, flags);
}

}  // namespace dorn
