#include "platform/file_status.h"

#include <algorithm>
#include <limits>
#include <sys/sysmacros.h>

namespace dorn {

namespace {

uint32_t clamp_time(int64_t seconds) {
    constexpr int64_t latest = std::numeric_limits<uint32_t>::max();
    return static_cast<uint32_t>(std::clamp<int64_t>(seconds, 0, latest));
}

uint32_t clamp_32(uint64_t value) {
    return static_cast<uint32_t>(std::min<uint64_t>(value, std::numeric_limits<uint32_t>::max()));
}

constexpr uint32_t kBlockUnit = 512;  // bytes, the unit of the system's block counts

}  // namespace

FileStatus to_file_status(const struct stat& from) {
    FileStatus to{};
    to.ino = from.st_ino;
    to.size = from.st_size;
    to.dev = static_cast<uint32_t>(from.st_dev);
    to.rdev = static_cast<uint32_t>(from.st_rdev);
    to.uid = static_cast<int32_t>(from.st_uid);
    to.gid = static_cast<int32_t>(from.st_gid);
    to.mtime = clamp_time(from.st_mtime);
    to.atime = clamp_time(from.st_atime);
    to.ctime = clamp_time(from.st_ctime);
    to.mode = from.st_mode;
    to.nlink = clamp_32(from.st_nlink);
    to.blocksize = kBlockUnit;
    to.nblocks = clamp_32(static_cast<uint64_t>(from.st_blocks));
    to.blksize = static_cast<uint32_t>(from.st_blksize);
    to.blocks = static_cast<uint64_t>(from.st_blocks);
    return to;
}

FileStatus to_file_status(const struct statx& from) {
    FileStatus to{};
    to.ino = from.stx_ino;
    to.size = static_cast<int64_t>(from.stx_size);
    to.dev = static_cast<uint32_t>(makedev(from.stx_dev_major, from.stx_dev_minor));
    to.rdev = static_cast<uint32_t>(makedev(from.stx_rdev_major, from.stx_rdev_minor));
    to.uid = static_cast<int32_t>(from.stx_uid);
    to.gid = static_cast<int32_t>(from.stx_gid);
    to.mtime = clamp_time(from.stx_mtime.tv_sec);
    to.atime = clamp_time(from.stx_atime.tv_sec);
    to.ctime = clamp_time(from.stx_ctime.tv_sec);
    to.mode = from.stx_mode;
    to.nlink = from.stx_nlink;
    to.blocksize = kBlockUnit;
    to.nblocks = clamp_32(from.stx_blocks);
    to.blksize = from.stx_blksize;
    to.blocks = from.stx_blocks;
    return to;
}

}  // namespace dorn
