#include "dialogs/property_change.h"

#include "dirmodel/path_text.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <grp.h>
#include <limits>
#include <optional>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr uint32_t kPermissionMask = 07777;
constexpr std::size_t kAccountRoom = 65536;  // bytes that one account's record may take

bool exists(int directory, const char* name) {
    return faccessat(directory, name, F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

// Where the file system can't rename without replacing, looking first is the next best.
PropertyError rename_entry(int directory, const char* from, const char* to) {
    if (renameat2(directory, from, directory, to, RENAME_NOREPLACE) == 0)
        return PropertyError::None;
    const bool unsupported = errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
    if (errno == EEXIST || exists(directory, to)) return PropertyError::NameExists;
    if (unsupported && renameat(directory, from, directory, to) == 0) return PropertyError::None;
    return PropertyError::Rename;
}

// All digits as a number; nothing for others, nor beyond what an id can be.
std::optional<uint32_t> numeric_id(const std::string& text) {
    if (misc_all_digits(text.c_str()) == 0) return std::nullopt;
    errno = 0;
    const unsigned long value = std::strtoul(text.c_str(), nullptr, 10);
    if (errno != 0 || value >= std::numeric_limits<uint32_t>::max()) return std::nullopt;
    return static_cast<uint32_t>(value);
}

std::optional<uint32_t> user_id(const std::string& text) {
    std::vector<char> room(kAccountRoom);
    passwd record{};
    passwd* found = nullptr;
    getpwnam_r(text.c_str(), &record, room.data(), room.size(), &found);
    return found != nullptr ? std::optional<uint32_t>(found->pw_uid) : numeric_id(text);
}

std::optional<uint32_t> group_id(const std::string& text) {
    std::vector<char> room(kAccountRoom);
    group record{};
    group* found = nullptr;
    getgrnam_r(text.c_str(), &record, room.data(), room.size(), &found);
    return found != nullptr ? std::optional<uint32_t>(found->gr_gid) : numeric_id(text);
}

PropertyError change_name(PropertyWork& work, const std::string& name) {
    const std::string& wanted = work.change.name;
    if (wanted.empty() || wanted == name) return PropertyError::None;
    work.step = PropertyError::Rename;
    const PropertyError error = rename_entry(work.directory.fd(), name.c_str(), wanted.c_str());
    work.renamed = error == PropertyError::None;
    return error;
}

PropertyError change_owners(PropertyWork& work, const PropertyTarget& target, const char* name) {
    const PropertyChange& change = work.change;
    if (change.owner.empty() && change.group.empty()) return PropertyError::None;
    work.step = PropertyError::Owner;
    const auto own_uid = static_cast<uint32_t>(target.uid);
    const auto own_gid = static_cast<uint32_t>(target.gid);
    const auto uid = change.owner.empty() ? own_uid : user_id(change.owner);
    if (!uid) return PropertyError::Owner;
    work.step = PropertyError::Group;
    const auto gid = change.group.empty() ? own_gid : group_id(change.group);
    if (!gid) return PropertyError::Group;
    if (*uid == own_uid && *gid == own_gid) return PropertyError::None;
    work.step = PropertyError::Ownership;
    const int result = fchownat(work.directory.fd(), name, *uid, *gid, 0);
    return result == 0 ? PropertyError::None : PropertyError::Ownership;
}

PropertyError change_mode(PropertyWork& work, const PropertyTarget& target, const char* name) {
    const uint32_t mode = (target.mode & ~kPermissionMask) | work.change.mode_bits;
    if (mode == target.mode) return PropertyError::None;
    work.step = PropertyError::Mode;
    const int result = fchmodat(work.directory.fd(), name, mode & kPermissionMask, 0);
    return result == 0 ? PropertyError::None : PropertyError::Mode;
}

}  // namespace

PropertyError x_prop_done_one(PropertyWork& work, const PropertyTarget& target) {
    PropertyError error = change_name(work, target.name);
    const char* name = work.renamed ? work.change.name.c_str() : target.name.c_str();
    if (error == PropertyError::None && !work.stop) error = change_owners(work, target, name);
    if (error == PropertyError::None && !work.stop) error = change_mode(work, target, name);
    return error;
}

void PropertyWork::run() {
    error = PropertyError::None;
    while (!at_end() && !stop && error == PropertyError::None) {
        error = x_prop_done_one(*this, targets[done]);
        ++done;
    }
}

}  // namespace dorn
