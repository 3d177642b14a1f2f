// Arbitrary names in every mode and several sets: what is shown is UTF-8, and a separator stays one
// in both directions.
#include "config/config.h"
#include "dirmodel/name_translation.h"
#include "platform/charset.h"

#include <algorithm>
#include <cstdlib>
#include <string>

static bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = dorn::utf8_sequence_length(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const char* const kSets[] = {"ISO-8859-1", "US-ASCII", "EUC-JP", "UTF-8",
                                        "windows-1252"};
    if (size < 1 || size > 3000) return 0;
    const uint32_t modes[] = {0, dorn::kEncodingTryUtf8, dorn::kEncodingAlternate};
    if (dorn::fname_set_translation(modes[data[0] % 3], kSets[data[0] / 3 % 5]) != 0) std::abort();
    const std::string name = std::string(reinterpret_cast<const char*>(data) + 1, size - 1).c_str();
    int count = -1;
    const std::string shown = dorn::fname_decode(name.c_str(), &count);
    if (count < 0 || !is_utf8(shown)) std::abort();
    const auto slashes = [](const std::string& text) {
        return std::count(text.begin(), text.end(), '/');
    };
    if (shown.size() < 900 && slashes(shown) != slashes(name)) std::abort();
    const char* disk = dorn::fname_encode(name.c_str());
    if (disk != nullptr && slashes(disk) != slashes(name)) std::abort();
    return 0;
}
