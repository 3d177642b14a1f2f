#include "config/config.h"

#include "platform/whole_file.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace dorn {

static_assert(std::is_trivially_copyable_v<Config>);

Config* gConfig = nullptr;
uint32_t gOptions = ~kOptionProbeFiles;
const std::string* gConfigPath = nullptr;

namespace {

// Sets a text field: the text, then zeros to the field's end.
template <std::size_t kSize>
void set_text(char (&field)[kSize], std::string_view text) {
    std::fill(std::begin(field), std::end(field), '\0');
    text.copy(field, kSize - 1);
}

// The format check: settles `flags` and the listing options. The encoding bits to use, or 0.
uint32_t settle_flags(Config& config) {
    if ((config.flags & kFormatMark) != kFormatMark) {
        config.flags = config.flags == 0 ? kDefaultFlags : kDefaultFlags | kHideDotFiles;
    }
    if ((config.flags & kHideDotFiles) != 0) {
        gOptions &= ~kOptionDotEntries;
    } else {
        gOptions |= kOptionDotEntries;
    }
    return (config.flags & kFormatMark) == kFormatMark ? config.flags & kEncodingMask : 0;
}

void terminate_texts(Config& config) {
    config.edit_cmd[sizeof config.edit_cmd - 1] = '\0';
    config.print_cmd[sizeof config.print_cmd - 1] = '\0';
    config.term_cmd[sizeof config.term_cmd - 1] = '\0';
    config.hotlist_font[sizeof config.hotlist_font - 1] = '\0';
    config.list_font[sizeof config.list_font - 1] = '\0';
    config.alt_encoding[sizeof config.alt_encoding - 1] = '\0';
}

}  // namespace

void config_set_defaults(Config& config) {
    constexpr int32_t kColumnWidths[] = {125, 50, 105, 53, 53, 75};
    config.reserved0 = 1;
    config.dirs_first = 0;
    set_text(config.edit_cmd, "ored @");
    set_text(config.print_cmd, "lpr @");
    set_text(config.term_cmd, "orterm");
    set_text(config.hotlist_font, "TextFont08");
    set_text(config.list_font, "TextFont08");
    std::copy(std::begin(kColumnWidths), std::end(kColumnWidths), config.column_width);
    config.hotlist_width = 190;
    config.win_height = 410;
    config.win_width = 600;
    config.keyfind_timeout = 1500;
    config.flags = kDefaultFlags;
    config.save_on_exit = 1;
    config.show_hotlist = 1;
}

uint32_t config_parse(Config& config, std::string_view bytes) {
    config = Config{};
    std::memcpy(&config, bytes.data(), std::min(bytes.size(), sizeof config));
    if (bytes.size() < sizeof config) config_set_defaults(config);
    terminate_texts(config);
    return settle_flags(config);
}

uint32_t config_load(Config& config, const char* dir, const char* name) {
    std::string bytes;
    if (dir != nullptr) (void)read_whole_file(join_path(dir, name), sizeof config, &bytes);
    return config_parse(config, bytes);
}

int init_save_config(Config* config, const char* dir, const char* name) {
    if (dir == nullptr) return -1;
    Config record = *config;
    record.flags |= kFormatMark;
    const std::string_view bytes(reinterpret_cast<const char*>(&record), sizeof record);
    if (write_whole_file(join_path(dir, name), bytes) != 0) return -1;
    std::atomic_ref flags(config->flags);  // workers read it
    flags.store(record.flags, std::memory_order_relaxed);
    return 0;
}

}  // namespace dorn
