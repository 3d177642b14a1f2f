#include "fileops/engine/tree_dirs.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace dorn {

namespace {

constexpr int kNone = -1;
constexpr int kOpenForUse = O_PATH | O_DIRECTORY | O_CLOEXEC;

/// Whether to keep a directory that lies so many levels above the one asked for, 1 being that
/// itself. Further up they lie further apart, so that the way down a deep chain is never long.
bool is_landmark(std::size_t levels) {
    constexpr std::size_t kLandmarks[] = {1, 2, 8, 32, 128, 512};
    return std::ranges::count(kLandmarks, levels) != 0;
}

}  // namespace

Fd open_at(int directory, const char* name, int flags, mode_t mode) {
    int fd;
    do {
        fd = openat(directory, name, flags, mode);
    } while (fd < 0 && errno == EINTR);
    return Fd(fd);
}

Fd open_directory(const std::string& path) {
    if (path.size() < PATH_MAX) return open_at(AT_FDCWD, path.c_str(), kOpenForUse);
    Fd at = open_at(AT_FDCWD, path.front() == '/' ? "/" : ".", kOpenForUse);
    std::size_t begin = path.find_first_not_of('/');
    while (at && begin != std::string::npos) {
        // As many whole components as go into one call.
        std::size_t end =
            path.size() - begin < PATH_MAX ? path.size() : path.rfind('/', begin + PATH_MAX - 2);
        if (end == std::string::npos || end <= begin) end = path.find('/', begin);
        const std::string piece = path.substr(begin, end - begin);
        at = open_at(at.get(), piece.c_str(), kOpenForUse);
        begin = path.find_first_not_of('/', end);
    }
    return at;
}

void TreeDirs::set_root(Fd root, std::string name) {
    root_error_ = errno;
    root_ = std::move(root);
    root_name_ = std::move(name);
}

const char* TreeDirs::name_of(int32_t group, int32_t index) const {
    if (group == 0 && !root_name_.empty()) return root_name_.c_str();
    return op_->groups[group]->names[index];
}

TreeDirs::Kept* TreeDirs::find(int32_t group) {
    const auto at = std::ranges::find(kept_, group, &Kept::group);
    if (at == kept_.end()) return nullptr;
    at->used = ++clock_;
    return at;
}

void TreeDirs::keep(int32_t group, Fd fd) {
    Kept* place = std::ranges::min_element(kept_, {}, &Kept::used);
    *place = Kept{group, ++clock_, std::move(fd)};
    last_ = group;
}

void TreeDirs::drop() {
    for (Kept& kept : kept_) {
        if (kept.group != last_) kept = Kept{};
    }
}

bool TreeDirs::is_same(const struct stat& status, int32_t group) const {
    Group* met = op_->groups[group];
    if (side_ == Side::kSource)
        return FileId{status.st_dev, status.st_ino} == FileId{met->device, met->inode};
    if (met->copy_inode == 0) {
        met->copy_device = status.st_dev;
        met->copy_inode = status.st_ino;
    }
    return FileId{status.st_dev, status.st_ino} == FileId{met->copy_device, met->copy_inode};
}

Fd TreeDirs::open_below(int parent, int32_t group) {
    const Group* own = op_->groups[group];
    const uint8_t kind = op_->groups[own->parent]->kinds[own->parent_name];
    const bool follows =
        side_ == Side::kSource ? (kind & kEntryFollowed) != 0 : (kind & kEntryMade) == 0;
    const char* name = name_of(own->parent, own->parent_name);
    const int flags = kOpenForUse | (follows ? 0 : O_NOFOLLOW);
    Fd fd = open_at(parent, name, flags);
    if (!fd && (errno == EMFILE || errno == ENFILE)) {
        drop();
        fd = open_at(parent, name, flags);
    }
    if (!fd) return fd;
    struct stat status;
    if (fstat(fd.get(), &status) != 0) return Fd();
    if (is_same(status, group)) return fd;
    errno = ESTALE;
    return Fd();
}

int32_t TreeDirs::nearest_kept(int32_t group) {
    int32_t nearest = 0;
    for (int32_t g = group; g > 0; g = op_->groups[g]->parent) {
        if (find(g) != nullptr && nearest == 0) nearest = g;
        if (nearest == group) break;
    }
    return nearest;
}

int TreeDirs::of_group(int32_t group) {
    const int32_t nearest = nearest_kept(group);
    std::vector<int32_t> missing;
    for (int32_t g = group; g != nearest; g = op_->groups[g]->parent)
        missing.push_back(g);
    const Kept* kept = find(nearest);
    if (kept != nullptr) last_ = nearest;
    int at = kept != nullptr ? kept->fd.get() : root_.get();
    if (at == kNone) errno = root_error_;
    Fd step;
    for (; at != kNone && !missing.empty(); missing.pop_back()) {
        Fd fd = open_below(at, missing.back());
        at = fd.get();
        if (at != kNone && is_landmark(missing.size()))
            keep(missing.back(), std::move(fd));
        else
            step = std::move(fd);
    }
    return at;
}

}  // namespace dorn
