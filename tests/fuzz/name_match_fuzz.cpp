// Arbitrary names and patterns: the matcher says what fnmatch says of a single pattern.
#include "dirmodel/name_match.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fnmatch.h>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Many stars take fnmatch exponential time.
    if (size > 2000) return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string name = text.c_str();
    const std::string patterns = text.substr(std::min(name.size() + 1, text.size())).c_str();
    if (std::count(patterns.begin(), patterns.end(), '*') > 4) return 0;
    const int result = dorn::es_strcmp(name.c_str(), patterns.c_str());
    if (patterns.find_first_of("|^") == std::string::npos) {
        const int expected = fnmatch(patterns.c_str(), name.c_str(), 0);
        if ((result == 0) != (expected == 0)) std::abort();
    }
    return 0;
}
