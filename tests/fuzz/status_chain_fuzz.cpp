// Arbitrary bytes as a delivered entry: no record is read beyond its length.
#include "dirmodel/dir_read.h"
#include "dirmodel/status_chain.h"

#include <cstdlib>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < sizeof(dorn::RawDirEntry) || size > UINT16_MAX) return 0;
    // Of exactly that size, so that the sanitizer sees the first byte beyond.
    const std::unique_ptr<void, decltype(&std::free)> memory(std::malloc(size), std::free);
    auto* raw = static_cast<dorn::RawDirEntry*>(memory.get());
    std::memcpy(raw, data, size);
    raw->reclen = static_cast<uint16_t>(size);
    dorn::FileStatus status{};
    const int own = dorn::lstat_optimize(raw, &status);
    const int followed = dorn::stat_optimize(raw, &status);
    const bool link = own == 0 && (status.mode & dorn::kTypeMask) == dorn::kTypeLink;
    if (own == 0 && followed != 0 && !link) std::abort();
    if (own == 0) {
        dorn::DirEntry entry{};
        dorn::entry_fill(&entry, *raw, -1);
        std::free(entry.link_text);
    }
    return 0;
}
