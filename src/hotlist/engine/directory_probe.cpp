#include "hotlist/engine/directory_probe.h"

#include "dirmodel/dir_read.h"

#include <cerrno>
#include <sys/stat.h>

namespace dorn {

DirectoryKind directory_kind_here(const std::string& path, int flags) {
    const int subdirectories = fs_has_subdirectories_here(path.c_str(), flags);
    if (subdirectories > 0) return DirectoryKind::Branch;
    if (subdirectories == 0) return DirectoryKind::Leaf;
    struct stat status;
    const bool missing = stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
    return missing ? DirectoryKind::Missing : DirectoryKind::Unopenable;
}

}  // namespace dorn
