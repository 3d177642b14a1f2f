// The status record that travels from the system to a list row.
//
// Fifteen fields, 72 bytes, in the order in which the directory stream delivers them, so that a
// status result is copied in whole. 64-bit times are clamped into the unsigned 32 bits, never
// wrapped: a file from before 1970 shows as 1970, one from after 2106 as 2106.
#pragma once

#include <cstddef>
#include <cstdint>
#include <sys/stat.h>

namespace dorn {

struct FileStatus {
    uint64_t ino;
    int64_t size;  // bytes
    uint32_t dev;
    uint32_t rdev;
    int32_t uid;     // -1: the attributes could not be read
    int32_t gid;     // -1: the attributes could not be read
    uint32_t mtime;  // seconds since the epoch, as the next two
    uint32_t atime;
    uint32_t ctime;
    uint32_t mode;  // type and permission bits
    uint32_t nlink;
    uint32_t blocksize;
    uint32_t nblocks;
    uint32_t blksize;
    uint64_t blocks;  // blocks allocated
};
static_assert(sizeof(FileStatus) == 72);
static_assert(offsetof(FileStatus, mode) == 44);
static_assert(offsetof(FileStatus, blocks) == 64);

// Type bits of FileStatus::mode.
inline constexpr uint32_t kTypeMask = 0xF000;
inline constexpr uint32_t kTypeDirectory = 0x4000;
inline constexpr uint32_t kTypeLink = 0xA000;

/// Whether `status` is of a directory (after following a link, where the caller followed it).
inline bool is_directory(const FileStatus& status) {
    return (status.mode & kTypeMask) == kTypeDirectory;
}

/// Copies what `from` holds into a FileStatus; times are clamped as described above.
FileStatus to_file_status(const struct stat& from);

/// The same from the record of statx, of which the basic fields must be filled.
FileStatus to_file_status(const struct statx& from);

}  // namespace dorn
