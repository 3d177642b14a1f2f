// Arbitrary bytes as the configuration file: every text ends within its field, the flags are
// settled.
#include "config/config.h"

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    dorn::Config config;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const uint32_t encoding = dorn::config_parse(config, bytes);
    if ((encoding & ~dorn::kEncodingMask) != 0) std::abort();
    if (strnlen(config.edit_cmd, sizeof config.edit_cmd) == sizeof config.edit_cmd) std::abort();
    if (strnlen(config.list_font, sizeof config.list_font) == sizeof config.list_font) std::abort();
    if (config.alt_encoding[sizeof config.alt_encoding - 1] != '\0') std::abort();
    const bool hidden = (config.flags & dorn::kHideDotFiles) != 0;
    if (hidden != ((dorn::gOptions & dorn::kOptionDotEntries) == 0)) std::abort();
    return 0;
}
