// Arbitrary bytes as the configuration file: every text ends within its field, the flags are
// settled.
#include "config/config.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void parse(std::string_view bytes) {
    dorn::Config config;
    const uint32_t encoding = dorn::config_parse(config, bytes);
    if ((encoding & ~dorn::kEncodingMask) != 0) std::abort();
    if (strnlen(config.edit_cmd, sizeof config.edit_cmd) == sizeof config.edit_cmd) std::abort();
    if (strnlen(config.list_font, sizeof config.list_font) == sizeof config.list_font) std::abort();
    if (config.alt_encoding[sizeof config.alt_encoding - 1] != '\0') std::abort();
    const bool hidden = (config.flags & dorn::kHideDotFiles) != 0;
    if (hidden != ((dorn::gOptions & dorn::kOptionDotEntries) == 0)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    parse(bytes);
    // A whole record, which no fuzzer grows by itself in a short run: the bytes over and over, the
    // first four of them as the flags.
    std::string record;
    while (!bytes.empty() && record.size() < sizeof(dorn::Config))
        record += bytes;
    record.resize(sizeof(dorn::Config));
    if (bytes.size() >= 4)
        bytes.substr(0, 4).copy(record.data() + offsetof(dorn::Config, flags), 4);
    parse(record);
    return 0;
}
