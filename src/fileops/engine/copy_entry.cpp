#include "fileops/engine/copy_entry.h"

#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr const char* kTitle = "Copy/Move";

/// Whether nothing can have the copy's name yet, since its directory was made by this operation.
bool is_in_made_directory(const Worker& w, int32_t group) {
    const Group* own = w.op->groups[group];
    return group > 0 && (w.op->groups[own->parent]->kinds[own->parent_name] & kEntryMade) != 0;
}

/// Frees the copy's name for something without content. In a directory made by this operation it
/// is free, or holds another entry's copy, where names differ in their case only.
void free_target(const EntryCopy& c) {
    if (c.looked && !was_brought(c.w, c.target_self)) unlinkat(c.to, c.to_name, 0);
}

/// Whether the link leads to the very file whose place its copy would take.
bool leads_to_target(const EntryCopy& c) {
    struct stat end;
    return c.looked && fstatat(c.from, c.name, &end, 0) == 0 && is_same_file(end, c.target_self);
}

int copy_fifo(EntryCopy& c) {
    if (c.exists && !S_ISFIFO(c.target.st_mode))
        return ask_about(c, "The '%s' is not a FIFO\n", copy_path(c));
    if (c.exists && is_own_target(c)) return refuse_into_itself(c.w);
    const mode_t mode = c.source.st_mode & 0777;
    free_target(c);
    if (mkfifoat(c.to, c.to_name, mode) != 0)
        return ask_about(c, "Unable to make '%s' FIFO\n", copy_path(c));
    return finish_at(c, AT_SYMLINK_NOFOLLOW);
}

/// Goes on with the directory that was made for the entry.
int take_made(const EntryCopy& c) {
    uint8_t& kind = c.w.op->groups[c.group]->kinds[c.index];
    kind |= kEntryMade;
    // One that could not be listed gets no content, and no other last touch.
    if ((kind & kEntryListed) == 0)
        fchmodat(c.to, c.to_name, c.source.st_mode & 0777, AT_SYMLINK_NOFOLLOW);
    return finish_at(c, AT_SYMLINK_NOFOLLOW);
}

int copy_directory(EntryCopy& c) {
    if (!c.exists) {
        if (mkdirat(c.to, c.to_name, 0777) == 0) return take_made(c);
        const bool appeared = errno == EEXIST && !c.looked;
        if (appeared) look_at_target(c);
        if (!appeared || !c.exists)
            return ask_about(c, "Unable to make '%s' directory\n", copy_path(c));
    }
    if (!S_ISDIR(c.target.st_mode))
        return ask_about(c, "The '%s' is not a directory\n", copy_path(c));
    const int follow = S_ISLNK(c.target_self.st_mode) ? 0 : AT_SYMLINK_NOFOLLOW;
    if (Group* below = group_below(c.w.op, c.group, c.index)) {
        below->copy_device = c.target.st_dev;
        below->copy_inode = c.target.st_ino;
        below->copy_mode = static_cast<uint16_t>(c.target.st_mode & 07777);
        fchmodat(c.to, c.to_name, 0777, follow);  // it is about to receive content
    }
    return finish_at(c, follow);
}

int copy_link(EntryCopy& c) {
    if ((c.looked && is_own_target(c)) || leads_to_target(c)) return refuse_into_itself(c.w);
    FileOp* op = c.w.op;
    const auto room = static_cast<std::size_t>(op->buffer_size - 1);
    const ssize_t length = readlinkat(c.from, c.name, op->buffer, room);
    if (length < 0) return ask_about(c, "Unable to read link '%s'\n", source_path(c));
    op->buffer[length] = '\0';
    free_target(c);
    if (symlinkat(op->buffer, c.to, c.to_name) == 0) return finish_at(c, AT_SYMLINK_NOFOLLOW);
    show_entry(c);
    const int button =
        fop_alert(op, kTitle, "&Continue|&Abort", "Unable to create symbolic link '%s' to\n'%s'\n",
                  shown(copy_path(c)).c_str(), shown(op->buffer).c_str());
    return button == 1 ? kEntrySkipped : kStopAll;
}

/// Makes the destination that is to be the copy of the one chosen directory.
int make_destination(EntryCopy& c) {
    FileOp* op = c.w.op;
    if (mkdirat(c.to, c.to_name, 0777) != 0) {
        fop_errinfo(op, "Make Directory", "Unable to create '%s' directory\n",
                    shown(op->destination).c_str());
        return kStopAll;
    }
    op->flags &= ~kFopMakeDestination;
    return kEntryDone;
}

/// Whether the entry has become a directory, or is none any more, since the scan.
bool has_turned(const EntryCopy& c, uint8_t kind) {
    const bool is_directory = S_ISDIR(c.source.st_mode);
    if ((kind & kEntryListed) != 0) return !is_directory;
    return is_directory && (kind & (kEntryDirectory | kEntryFollowed)) == 0;
}

/// Reads the status of the entry. False: errno is set.
bool look_at_source(EntryCopy& c) {
    const bool follows = (c.w.op->flags & kFopLinksAsFiles) != 0;
    if (fstatat(c.from, c.name, &c.source, follows ? 0 : AT_SYMLINK_NOFOLLOW) != 0) return false;
    const uint8_t kind = c.w.op->groups[c.group]->kinds[c.index];
    if (has_turned(c, kind)) {
        errno = ESTALE;
        return false;
    }
    if (c.w.op->kind != kFopMove) return true;
    struct stat self = c.source;
    if ((kind & kEntryFollowed) != 0 && fstatat(c.from, c.name, &self, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    c.print = print_of(self);
    return true;
}

int copy_by_type(EntryCopy& c) {
    switch (c.source.st_mode & S_IFMT) {
        case S_IFIFO:
            return copy_fifo(c);
        case S_IFDIR:
            return copy_directory(c);
        case S_IFLNK:
            return copy_link(c);
        case S_IFREG:
            return copy_regular(c);
        default:
            return kEntrySkipped;  // a device or socket that has taken the place of something else
    }
}

int copy_entry(EntryCopy& c) {
    FileOp* op = c.w.op;
    if ((op->flags & kFopMakeDestination) != 0) {
        if (make_destination(c) != kEntryDone) return kStopAll;
        show_progress(c, 0);
        return take_made(c);
    }
    show_progress(c, 0);
    if (!is_in_made_directory(c.w, c.group)) look_at_target(c);
    return copy_by_type(c);
}

}  // namespace

void look_at_target(EntryCopy& c) {
    c.looked = true;
    c.target_self = {};
    c.exists = fstatat(c.to, c.to_name, &c.target_self, AT_SYMLINK_NOFOLLOW) == 0;
    c.target = c.target_self;
    if (c.exists && S_ISLNK(c.target.st_mode))
        c.exists = fstatat(c.to, c.to_name, &c.target, 0) == 0;
}

bool is_own_target(const EntryCopy& c) {
    return is_same_file(c.source, c.target_self) || (c.exists && is_same_file(c.source, c.target));
}

std::string source_path(const EntryCopy& c) {
    return source_path_of(c.w, c.group, c.index);
}

std::string copy_path(const EntryCopy& c) {
    return c.new_name.empty() ? copy_path_of(c.w, source_path(c)) : c.new_name;
}

void show_progress(const EntryCopy& c, uint64_t copied) {
    FileOp* op = c.w.op;
    if (!fop_redraw_due(op)) return;
    const auto size = static_cast<uint64_t>(c.source.st_size);
    const uint64_t counted = c.index == kFinishDirectory ? 0 : size;
    const uint64_t done = op->bytes_done - counted + std::min(copied, counted);
    fop_update_info(op, nullptr, "From: ", source_path(c).c_str(), "  To: ", copy_path(c).c_str(),
                    percent_of(done, op->total_bytes),
                    fop_calc_time_left(op, done, op->total_bytes));
}

void show_entry(const EntryCopy& c) {
    fop_update_info(c.w.op, nullptr, "From: ", source_path(c).c_str(),
                    "  To: ", copy_path(c).c_str(), kPercentKeep, kTimeKeep);
}

int ask_about(const EntryCopy& c, std::string_view text, const std::string& path, int error) {
    show_entry(c);
    return ask_skip(c.w, kTitle, text, path, error);
}

int fop_copy_file(Worker& w, int32_t group, int32_t index) {
    if (index == kFinishDirectory) return finish_directory(w, group);
    FileOp* op = w.op;
    EntryCopy c{.w = w,
                .group = group,
                .index = index,
                .from = w.sources.of_group(group),
                .name = w.sources.name_of(group, index),
                .source = {},
                .to = w.copies.of_group(group),
                .to_name = w.copies.name_of(group, index),
                .new_name = {}};
    if (!look_at_source(c)) {
        const int error = errno;
        return ask_about(c, "Unable to stat '%s'\n%s\n", source_path(c), error);
    }
    const auto size = static_cast<uint64_t>(c.source.st_size);
    op->bytes_done += size;
    op->total_bytes = std::max(op->total_bytes, op->bytes_done);
    const int result = copy_entry(c);
    if (result == kEntrySkipped) {
        op->bytes_done -= size;
        op->total_bytes -= size;
    }
    if (result == kEntryDone && op->kind == kFopMove) op->groups[group]->prints[index] = c.print;
    return result;
}

}  // namespace dorn
