// Arbitrary bytes as the hotlist's file: every path fits a line, stands once, and survives writing.
#include "hotlist/engine/hotlist.h"

#include <cstdlib>
#include <set>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> paths = dorn::hotlist_parse(text);
    for (const std::string& path : paths) {
        if (!dorn::hotlist_can_keep(path) || path.find('\0') != std::string::npos) std::abort();
    }
    if (std::set<std::string>(paths.begin(), paths.end()).size() != paths.size()) std::abort();
    if (dorn::hotlist_parse(dorn::hotlist_format(paths)) != paths) std::abort();
    return 0;
}
