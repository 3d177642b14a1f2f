#include "dirmodel/status_chain.h"

#include "dirmodel/dir_read.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

int gStatusLimitMs = kStatusLimitMs;

namespace {

constexpr std::size_t kChainAlignment = 8;

// Makes a call that blocks in the system return with EINTR when it takes too long.
class Alarm {
  public:
    Alarm() {
        alarm(static_cast<unsigned>(std::max(gStatusLimitMs / 1000, 1)));
    }
    ~Alarm() {
        alarm(0);
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
};

bool copy_status(const RawDirEntry& raw, uint16_t type, FileStatus* status) {
    const std::optional<std::string_view> data = find_extra(raw, type);
    if (!data || data->size() < sizeof *status) return false;
    std::memcpy(status, data->data(), sizeof *status);
    return true;
}

bool is_link(const FileStatus& status) {
    return (status.mode & kTypeMask) == kTypeLink;
}

// Asks the system for the status of `name` in the open directory. 0 or an errno value.
int ask_status(int directory, const char* name, int flags, FileStatus* status) {
    struct stat found {};
    const Alarm bound;
    if (fstatat(directory, name, &found, flags) != 0) return errno;
    *status = to_file_status(found);
    return 0;
}

bool ask_link(int directory, const char* name, DirEntry* entry) {
    char target[kLinkSize];
    const Alarm bound;
    const ssize_t length = readlinkat(directory, name, target, sizeof target);
    if (length < 0) return false;
    entry_set_link(entry, {target, static_cast<std::size_t>(length)});
    return true;
}

void fill_unreadable(DirEntry* entry, int error) {
    FileStatus& status = *entry;
    status = FileStatus{};
    status.uid = -1;
    status.gid = -1;
    entry->flags |= kEntryBroken;
    const bool timed_out = error == EINTR || error == ETIMEDOUT;
    entry_set_link(entry, timed_out ? "(unable to read - timeout)" : "(unable to read info)");
}

// The target's status, when it can be reached, and its text. `carried`: the stream has looked at
// the link, so what it does not carry could not be read.
void fill_link(DirEntry* entry, const RawDirEntry& raw, int directory, bool carried) {
    const char* name = raw_name(raw).data();
    bool reached = stat_optimize(&raw, entry) == 0;
    if (!reached && !carried) reached = ask_status(directory, name, 0, entry) == 0;

    bool text_read = false;
    if (const std::optional<std::string_view> target = find_extra(raw, kExtraLink)) {
        entry_set_link(entry, *target);
        text_read = true;
    } else if (!carried) {
        text_read = ask_link(directory, name, entry);
    }
    if (!text_read) entry_set_link(entry, "(unable to read link info)");
    if (!reached || !text_read) entry->flags |= kEntryBroken;
}

}  // namespace

std::optional<std::string_view> find_extra(const RawDirEntry& raw, uint16_t type) {
    const char* start = reinterpret_cast<const char*>(&raw);
    std::size_t at = (std::size_t{raw.namelen} + 28) & ~(kChainAlignment - 1);
    while (at + sizeof(ExtraHeader) <= raw.reclen) {
        ExtraHeader header;
        std::memcpy(&header, start + at, sizeof header);
        const std::size_t data = at + sizeof header;
        if (data + header.length > raw.reclen) break;
        if (header.type == type) return std::string_view(start + data, header.length);
        at = (data + header.length + kChainAlignment - 1) & ~(kChainAlignment - 1);
    }
    return std::nullopt;
}

int lstat_optimize(const RawDirEntry* dirent, FileStatus* entry) {
    return copy_status(*dirent, kExtraLstat, entry) ? 0 : -1;
}

int stat_optimize(const RawDirEntry* dirent, FileStatus* entry) {
    if (copy_status(*dirent, kExtraStat, entry)) return 0;
    FileStatus own;
    if (!copy_status(*dirent, kExtraLstat, &own) || is_link(own)) return -1;
    *entry = own;
    return 0;
}

void entry_fill(DirEntry* entry, const RawDirEntry& raw, int directory) {
    // The name will be cut, so the attributes must not pass for those of what the cut name means.
    if (raw.namelen >= kNameSize) return fill_unreadable(entry, ENAMETOOLONG);
    const bool carried = lstat_optimize(&raw, entry) == 0;
    if (!carried) {
        int error = raw.error;
        if (error == 0) {
            error = ask_status(directory, raw_name(raw).data(), AT_SYMLINK_NOFOLLOW, entry);
        }
        if (error != 0) return fill_unreadable(entry, error);
    }
    if (is_link(*entry)) fill_link(entry, raw, directory, carried);
}

}  // namespace dorn
