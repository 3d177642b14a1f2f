// The scan: what the chosen names hold, breadth first, one group a directory.
#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"
#include "fileops/engine/worker.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <new>

namespace dorn {

namespace {

constexpr const char* kTitle = "File Scan";
constexpr const char* kReadTitle = "Dir Reading";

bool is_dot_or_dot_dot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

/// What the listing says of an entry's type, as far as a removal has to know it.
uint8_t kind_of(unsigned char listed) {
    switch (listed) {
        case DT_DIR:
            return kEntryKnown | kEntryDirectory;
        case DT_REG:
        case DT_LNK:
        case DT_FIFO:
            return kEntryKnown;
        default:
            return 0;
    }
}

/// Asks how links are copied, once an operation. 0, or -1 to stop.
int ask_links(Worker& w) {
    if ((w.op->flags & (kFopLinksAsFiles | kFopLinksAsLinks)) != 0) return 0;
    const int button = fop_alert(w.op, w.verb->title, "&Files|@&Links|#&Abort",
                                 "Symbolic links detected in the file list\n"
                                 "What do you want to %s ?",
                                 w.verb->in_question);
    if (button == 1) w.op->flags |= kFopLinksAsFiles;
    if (button == 2) w.op->flags |= kFopLinksAsLinks;
    return button == 1 || button == 2 ? 0 : -1;
}

/// Adds what one block of a listing holds to w.names, each with its kind in front. How many.
int32_t take_names(Worker& w, const char* block, std::size_t size) {
    int32_t count = 0;
    for (std::size_t at = 0; at < size;) {
        const auto* entry = reinterpret_cast<const dirent64*>(block + at);
        at += entry->d_reclen;
        if (is_dot_or_dot_dot(entry->d_name)) continue;
        w.names.push_back(static_cast<char>(kind_of(entry->d_type)));
        w.names.insert(w.names.end(), entry->d_name,
                       entry->d_name + std::strlen(entry->d_name) + 1);
        ++count;
    }
    return count;
}

/// Reads a directory to its end. kEntryDone, kEntrySkipped when the listing broke off and the user
/// goes on with what there is, or kStopAll.
int read_names(Worker& w, int fd, int32_t group, int32_t index, int32_t* count) {
    FileOp* op = w.op;
    w.names.clear();
    for (;;) {
        if (fop_pause_trap(op) != 0) return kStopAll;
        const ssize_t size = getdents64(fd, op->buffer, static_cast<std::size_t>(op->buffer_size));
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) {
            const int error = errno;
            return ask_skip(w, kReadTitle, "Unable to read '%s' directory\n%s\n",
                            source_path_of(w, group, index), error);
        }
        if (size == 0) return kEntryDone;
        const int32_t taken = take_names(w, op->buffer, static_cast<std::size_t>(size));
        *count += taken;
        op->total_files += taken;
        fop_update_info(op, "Scanning", nullptr, nullptr, nullptr, nullptr, kPercentKeep,
                        kTimeKeep);
    }
}

/// Puts w.names into the group's arrays, which lie behind it, the names last.
void fill_group(Group* group, const std::vector<char>& names, bool has_prints) {
    const auto count = static_cast<std::size_t>(group->count);
    group->names = reinterpret_cast<char**>(group + 1);
    char* rest = reinterpret_cast<char*>(group->names + count);
    if (has_prints) {
        group->prints = reinterpret_cast<uint64_t*>(rest);
        rest = reinterpret_cast<char*>(group->prints + count);
    }
    group->kinds = reinterpret_cast<uint8_t*>(rest);
    char* text = rest + count;
    const char* from = names.data();
    for (std::size_t i = 0; i < count; ++i) {
        group->kinds[i] = static_cast<uint8_t>(*from++);
        const std::size_t size = std::strlen(from) + 1;
        group->names[i] = static_cast<char*>(std::memcpy(text, from, size));
        text += size;
        from += size;
    }
}

/// Room for one more group in op->groups. False: no memory.
bool make_room(Worker& w) {
    if (w.op->group_count < w.group_capacity) return true;
    const int32_t capacity = w.group_capacity * 2;
    void* groups = alloc_realloc(w.op->allocations, w.op->groups,
                                 static_cast<std::size_t>(capacity) * sizeof(Group*));
    if (groups == nullptr) return false;
    w.op->groups = static_cast<Group**>(groups);
    w.group_capacity = capacity;
    return true;
}

/// Appends the group of the names read, one block of memory in all. Null: no memory.
Group* add_group(Worker& w, int32_t count) {
    const bool has_prints = w.op->kind == kFopMove;
    const auto names = static_cast<std::size_t>(count);
    const std::size_t each = sizeof(char*) + (has_prints ? sizeof(uint64_t) : 0);
    void* block =
        make_room(w) ? std::calloc(1, sizeof(Group) + names * each + w.names.size()) : nullptr;
    if (block == nullptr) return nullptr;
    if (alloc_add(w.op->allocations, block) == nullptr) {
        std::free(block);
        return nullptr;
    }
    auto* group = new (block) Group{};
    group->count = count;
    fill_group(group, w.names, has_prints);
    w.op->groups[w.op->group_count++] = group;
    return group;
}

/// Whether the directory, met behind a link, is one that holds the link.
bool leads_back(Worker& w, int32_t group, const struct stat& status) {
    for (int32_t g = group; g >= 0; g = w.op->groups[g]->parent) {
        const Group* own = w.op->groups[g];
        if (FileId{own->device, own->inode} == FileId{status.st_dev, status.st_ino}) return true;
    }
    if (w.source_chain.empty()) w.source_chain = chain_of(w.sources.of_group(0));
    return is_in_chain(w.source_chain, status);
}

/// Asks about a directory that can't be listed. It stays in the list and is made, empty; a move
/// leaves it where it is.
int skip_listing(Worker& w, int32_t group, int32_t index, int error) {
    const int answer = ask_skip(w, kReadTitle, "Unable to open '%s' directory\n%s\n",
                                source_path_of(w, group, index), error);
    if (answer == kStopAll) return -1;
    if (w.op->kind != kFopMove) return 0;
    w.op->groups[group]->kinds[index] |= kEntryKept;
    keep_parents(w, group);
    return 0;
}

/// Lists the directory `index` of the group into a group of its own. 0, or -1 to stop.
int scan_directory(Worker& w, int32_t group, int32_t index) {
    FileOp* op = w.op;
    const bool is_followed = (op->groups[group]->kinds[index] & kEntryFollowed) != 0;
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (is_followed ? 0 : O_NOFOLLOW);
    const char* name = op->groups[group]->names[index];
    Fd fd = open_at(w.sources.of_group(group), name, flags);
    struct stat status;
    if (!fd || fstat(fd.get(), &status) != 0) return skip_listing(w, group, index, errno);
    const bool is_behind_link = is_followed || op->groups[group]->behind_link;
    if (is_behind_link && leads_back(w, group, status)) {
        if (skip_listing(w, group, index, ELOOP) != 0) return -1;
        empty_entry(w, group, index);
        return 0;
    }
    if (op->kind != kFopDelete && is_in_chain(w.destination_chain, status))
        return refuse_into_itself(w);
    int32_t count = 0;
    const int result = read_names(w, fd.get(), group, index, &count);
    if (result == kStopAll) return -1;
    Group* own = add_group(w, count);
    if (own == nullptr) {
        fop_ENOMEM(op);
        return -1;
    }
    op->groups[group]->kinds[index] |= kEntryListed;
    own->parent = group;
    own->parent_name = index;
    own->device = status.st_dev;
    own->inode = status.st_ino;
    own->incomplete = result == kEntrySkipped || op->groups[group]->incomplete;
    own->behind_link = is_behind_link;
    w.sources.keep(op->group_count - 1, std::move(fd));
    return 0;
}

/// Takes an entry off the list because its status can't be had. 0, or -1 to stop.
int skip_status(Worker& w, int32_t group, int32_t index, int error) {
    const int answer =
        ask_skip(w, kTitle, "Unable to stat '%s'\n%s\n", source_path_of(w, group, index), error);
    if (answer == kStopAll) return -1;
    empty_entry(w, group, index);
    keep_parents(w, group);
    return 0;
}

bool is_copied_type(mode_t mode) {
    return S_ISREG(mode) || S_ISFIFO(mode) || S_ISLNK(mode) || S_ISDIR(mode);
}

/// Looks at one entry. 0, or -1 to stop.
int scan_entry(Worker& w, int32_t group, int32_t index) {
    FileOp* op = w.op;
    Group* own = op->groups[group];
    const int dir = w.sources.of_group(group);
    struct stat status;
    if (fstatat(dir, own->names[index], &status, AT_SYMLINK_NOFOLLOW) != 0)
        return skip_status(w, group, index, errno);
    uint8_t kind = kEntryKnown | (S_ISDIR(status.st_mode) ? kEntryDirectory : 0);
    if (S_ISLNK(status.st_mode) && op->kind != kFopDelete) {
        if (ask_links(w) != 0) return -1;
        if ((op->flags & kFopLinksAsFiles) != 0) {
            kind |= kEntryFollowed;
            if (fstatat(dir, own->names[index], &status, 0) != 0)
                return skip_status(w, group, index, errno);
        }
    }
    own->kinds[index] = kind;
    if (!is_copied_type(status.st_mode)) {
        empty_entry(w, group, index);
        if (op->kind == kFopMove) keep_parents(w, group);
        return 0;
    }
    op->total_bytes += static_cast<uint64_t>(status.st_size);
    own->bytes += static_cast<uint64_t>(status.st_size);
    return S_ISDIR(status.st_mode) ? scan_directory(w, group, index) : 0;
}

int scan_group(Worker& w, int32_t group) {
    const Group* own = w.op->groups[group];
    enter_group(w, group);
    if (own->count > 0 && w.sources.of_group(group) < 0) {
        const int error = errno;
        if (ask_skip(w, kTitle, "Unable to stat '%s'\n%s\n", w.source_path, error) == kStopAll)
            return -1;
        empty_group(w, group, 0);
        return 0;
    }
    for (int32_t i = 0; i < own->count; ++i) {
        if (fop_pause_trap(w.op) != 0) return -1;
        if (own->names[i][0] == '\0') continue;
        // A removal needs no more than the type, which most file systems list with the name.
        const uint8_t kind = own->kinds[i];
        const bool is_listed = w.op->kind == kFopDelete && (kind & kEntryKnown) != 0;
        if (is_listed && (kind & kEntryDirectory) == 0) continue;
        if ((is_listed ? scan_directory(w, group, i) : scan_entry(w, group, i)) != 0) return -1;
    }
    return 0;
}

}  // namespace

int fop_build_filelist(Worker& w) {
    for (int32_t group = 0; group < w.op->group_count; ++group) {
        if (scan_group(w, group) != 0) return -1;
    }
    return 0;
}

}  // namespace dorn
