// Groups, their entries and their paths.
#include "fileops/engine/worker.h"

#include <algorithm>
#include <fcntl.h>

namespace dorn {

namespace {

uint64_t mixed(uint64_t value) {
    value ^= value >> 31;
    value *= 0x9E3779B97F4A7C15U;
    return value ^ (value >> 29);
}

}  // namespace

const std::string& _build_path(std::string& out, std::string_view directory,
                               std::string_view name) {
    out = directory == "/" ? std::string_view() : directory;
    const bool ends = out.ends_with('/');
    const bool begins = name.starts_with('/');
    if (ends && begins) name.remove_prefix(1);
    if (!ends && !begins) out += '/';
    out += name;
    if (out.size() > 1 && out.ends_with('/')) out.pop_back();
    return out;
}

std::string group_path(const FileOp* op, int32_t group) {
    std::vector<int32_t> chain;
    for (int32_t g = group; g > 0; g = op->groups[g]->parent)
        chain.push_back(g);
    std::string path = op->groups[0]->directory;
    for (; !chain.empty(); chain.pop_back()) {
        const Group* own = op->groups[chain.back()];
        if (!path.ends_with('/')) path += '/';
        path += op->groups[own->parent]->names[own->parent_name];
    }
    return path;
}

Group* group_below(const FileOp* op, int32_t parent, int32_t index) {
    const auto is_before = [&](const Group* group, int32_t) {
        return group->parent != parent ? group->parent < parent : group->parent_name < index;
    };
    Group** end = op->groups + op->group_count;
    Group** found = std::lower_bound(op->groups, end, index, is_before);
    if (found == end || (*found)->parent != parent || (*found)->parent_name != index)
        return nullptr;
    return *found;
}

void enter_group(Worker& w, int32_t group) {
    w.source_path = group_path(w.op, group);
    w.copy_path = copy_path_of(w, w.source_path);
}

std::string source_path_of(const Worker& w, int32_t group, int32_t index) {
    if (index == kFinishDirectory) return w.source_path;
    std::string path;
    return _build_path(path, w.source_path, w.op->groups[group]->names[index]);
}

std::string copy_path_of(const Worker& w, const std::string& source_path) {
    const auto prefix = static_cast<std::size_t>(w.op->prefix_length);
    std::string path;
    return _build_path(path, w.op->destination,
                       std::string_view(source_path).substr(std::min(prefix, source_path.size())));
}

void empty_entry(Worker& w, int32_t group, int32_t index) {
    w.op->groups[group]->names[index][0] = '\0';
}

void empty_group(Worker& w, int32_t group, int32_t first) {
    for (int32_t i = first; i < w.op->groups[group]->count; ++i)
        empty_entry(w, group, i);
    if (first < w.op->groups[group]->count) keep_parents(w, group);
}

void keep_parents(Worker& w, int32_t group) {
    for (const Group* own = w.op->groups[group]; own->parent >= 0;) {
        Group* parent = w.op->groups[own->parent];
        uint8_t& kind = parent->kinds[own->parent_name];
        if ((kind & kEntryKept) != 0) return;
        kind |= kEntryKept;
        own = parent;
    }
}

uint64_t print_of(const struct stat& status) {
    uint64_t print = mixed(status.st_dev);
    for (const uint64_t part :
         {static_cast<uint64_t>(status.st_ino), static_cast<uint64_t>(status.st_mode & S_IFMT),
          static_cast<uint64_t>(status.st_size), static_cast<uint64_t>(status.st_mtim.tv_sec),
          static_cast<uint64_t>(status.st_mtim.tv_nsec)})
        print = mixed(print + part + 1);
    return print | 1;
}

void note_brought(Worker& w, const struct stat& status) {
    w.brought.insert(mixed(mixed(status.st_dev) + status.st_ino));
}

bool was_brought(const Worker& w, const struct stat& status) {
    return w.brought.contains(mixed(mixed(status.st_dev) + status.st_ino));
}

std::vector<FileId> chain_of(int directory) {
    std::vector<FileId> chain;
    Fd at = open_at(directory, ".", O_PATH | O_DIRECTORY | O_CLOEXEC);
    struct stat status;
    while (at && fstat(at.get(), &status) == 0) {
        const FileId id{status.st_dev, status.st_ino};
        if (!chain.empty() && chain.back() == id) break;  // the root is above itself
        chain.push_back(id);
        at = open_at(at.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC);
    }
    return chain;
}

bool is_in_chain(const std::vector<FileId>& chain, const struct stat& status) {
    for (const FileId& id : chain) {
        if (id == FileId{status.st_dev, status.st_ino}) return true;
    }
    return false;
}

bool is_same_file(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace dorn
