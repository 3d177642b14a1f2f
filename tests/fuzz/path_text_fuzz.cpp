// Arbitrary texts as paths: the helpers stay inside them and come to rest.
#include "dirmodel/path_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string path = text.c_str();
    const std::string rest = text.substr(std::min(path.size() + 1, text.size())).c_str();
    const std::string joined = dorn::es_construct_fullpath(path.c_str(), rest.c_str());
    if (joined.size() > path.size() + rest.size() + 1) std::abort();
    if (joined.size() >= 3 && joined.ends_with('/')) std::abort();

    const std::string tidy = dorn::es_strip_pathname(path);
    if (tidy.find("//", 1) != std::string::npos) std::abort();
    if (tidy.size() > 1 && tidy.ends_with('/')) std::abort();

    std::string cut = path;
    for (size_t length = cut.size() + 1; length != cut.size();) {
        length = cut.size();
        if (dorn::es_remove_subdirectory(&cut) != cut.size() || cut.size() > length) std::abort();
        if (path.compare(0, cut.size(), cut) != 0) std::abort();
    }
    dorn::misc_all_digits(path.c_str());
    return 0;
}
