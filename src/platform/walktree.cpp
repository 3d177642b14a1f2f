#include "platform/walktree.h"

#include "platform/whole_file.h"

#include <cstring>
#include <dirent.h>
#include <memory>
#include <string>
#include <vector>

namespace dorn {

namespace {

struct DirCloser {
    void operator()(DIR* dir) const {
        closedir(dir);
    }
};
using DirHandle = std::unique_ptr<DIR, DirCloser>;

bool is_dot_or_dot_dot(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

/// Calls `callback` for what `dir` holds and adds its directories to `pending`.
int walk_one(DIR* dir, const std::string& path, WalkCallback callback, void* data,
             std::vector<std::string>* pending) {
    while (const dirent* entry = readdir(dir)) {
        if (is_dot_or_dot_dot(entry->d_name)) continue;
        std::string full = join_path(path, entry->d_name);
        struct stat status {};
        const bool known = lstat(full.c_str(), &status) == 0;
        const int result = callback(full.c_str(), known ? &status : nullptr, data);
        if (result != 0) return result;
        if (known && S_ISDIR(status.st_mode)) pending->push_back(std::move(full));
    }
    return 0;
}

}  // namespace

int misc_walktree(const char* path, WalkCallback callback, void* data) {
    DirHandle dir(opendir(path));
    if (dir == nullptr) return -1;
    std::vector<std::string> pending;
    int result = walk_one(dir.get(), path, callback, data, &pending);
    while (result == 0 && !pending.empty()) {
        const std::string next = std::move(pending.back());
        pending.pop_back();
        dir.reset(opendir(next.c_str()));
        if (dir != nullptr) result = walk_one(dir.get(), next, callback, data, &pending);
    }
    return result;
}

}  // namespace dorn
