// What a copy gets last: owner, mode and times. The owner comes first, for changing it takes the
// set-id bits away, and the times last, for all else may change them.
#include "config/config.h"
#include "fileops/engine/copy_entry.h"
#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>

namespace dorn {

namespace {

constexpr mode_t kSetIds = S_ISUID | S_ISGID;

std::array<timespec, 2> times_of(const EntryCopy& c) {
    return {c.source.st_atim, c.source.st_mtim};
}

/// The setting, which the event-loop thread may change meanwhile.
bool is_owner_ignored() {
    if (gConfig == nullptr) return false;
    const uint32_t flags = std::atomic_ref(gConfig->flags).load(std::memory_order_relaxed);
    return (flags & kOwnerErrorIgnore) != 0;
}

/// What is to happen when the owner can't be changed. kEntryDone or kStopAll.
int ask_owner(const EntryCopy& c) {
    FileOp* op = c.w.op;
    if (is_owner_ignored()) op->flags |= kFopIgnoreOwner;
    if ((op->flags & kFopIgnoreOwner) != 0) return kEntryDone;
    show_entry(c);
    const int button =
        fop_alert(op, "Copy/Move", "&Ignore|&Abort", "Unable to change owner permissions '%s'\n",
                  shown(copy_path(c)).c_str());
    if (button != 1) return kStopAll;
    op->flags |= kFopIgnoreOwner;
    return kEntryDone;
}

}  // namespace

int finish_open(const EntryCopy& c, int fd) {
    const bool is_owned = fchown(fd, c.source.st_uid, c.source.st_gid) == 0;
    const int result = is_owned ? kEntryDone : ask_owner(c);
    const mode_t set_ids = c.source.st_mode & kSetIds;
    struct stat status;
    if (is_owned && c.made && set_ids != 0 && fstat(fd, &status) == 0)
        fchmod(fd, (status.st_mode & 07777) | set_ids);
    futimens(fd, times_of(c).data());
    return result;
}

int finish_at(const EntryCopy& c, int flags) {
    const bool is_owned = fchownat(c.to, c.to_name, c.source.st_uid, c.source.st_gid, flags) == 0;
    const int result = is_owned ? kEntryDone : ask_owner(c);
    utimensat(c.to, c.to_name, times_of(c).data(), flags);
    return result;
}

void close_copy_directory(Worker& w, int32_t group) {
    const Group* own = w.op->groups[group];
    const uint8_t kind = w.op->groups[own->parent]->kinds[own->parent_name];
    mode_t mode = own->copy_mode;
    const bool is_made = (kind & kEntryMade) != 0;
    if (!is_made && own->copy_inode == 0) return;
    if (is_made) {
        const int from = w.sources.of_group(group);
        struct stat source;
        if (from < 0 || fstat(from, &source) != 0) return;
        mode = source.st_mode & 0777;
    }
    const int to = w.copies.of_group(group);
    if (to >= 0) fchmodat(to, ".", mode, 0);
}

int finish_directory(Worker& w, int32_t group) {
    EntryCopy c{.w = w,
                .group = group,
                .index = kFinishDirectory,
                .from = w.sources.of_group(group),
                .name = ".",
                .source = {},
                .to = -1,
                .to_name = ".",
                .new_name = {}};
    if (c.from < 0 || fstat(c.from, &c.source) != 0) {
        const int error = errno;
        return ask_about(c, "Unable to stat '%s'\n%s\n", source_path(c), error);
    }
    show_progress(c, 0);
    c.to = w.copies.of_group(group);
    if (c.to < 0) return ask_about(c, "Unable to make '%s' directory\n", copy_path(c));
    const bool is_owned = fchownat(c.to, ".", c.source.st_uid, c.source.st_gid, 0) == 0;
    const int result = is_owned ? kEntryDone : ask_owner(c);
    const mode_t mode = c.source.st_mode & 07777;
    utimensat(c.to, ".", times_of(c).data(), 0);  // while it can still be searched
    fchmodat(c.to, ".", is_owned ? mode : mode & ~kSetIds, 0);
    return result;
}

}  // namespace dorn
