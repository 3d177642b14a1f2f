// The per-user configuration record and its file, "config.003".
//
// The record is a file format: it is read and written byte for byte, in host byte order
// (little-endian), with no header and no checksum. Character arrays are NUL-terminated and written
// whole. What comes from disk is bounded and terminated before anything uses it; numbers are kept
// as they were read, so whoever uses a size or a time-out bounds it there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace dorn {

struct Config {
    int32_t reserved0;    // 1 in the defaults; nothing reads it
    int32_t dirs_first;   // non-zero: folders are listed before files
    char edit_cmd[2048];  // "@" stands for the selected names, as in the next one
    char print_cmd[1024];
    char term_cmd[1024];  // opens a terminal in the current directory
    char hotlist_font[255];
    char list_font[255];
    int32_t column_width[6];  // pixels; columns 1 to 6
    int32_t hotlist_width;    // pixels
    int32_t win_height;       // pixels
    int32_t win_width;        // pixels
    int32_t keyfind_timeout;  // milliseconds
    uint32_t flags;           // the bits below
    int32_t save_on_exit;     // non-zero: the record is written when the main window closes
    char show_hotlist;        // non-zero: the hotlist panel is shown
    char alt_encoding[1025];  // name of the alternate character set; empty: not specified
};
static_assert(sizeof(Config) == 5692);
static_assert(offsetof(Config, dirs_first) == 4);
static_assert(offsetof(Config, edit_cmd) == 8);
static_assert(offsetof(Config, print_cmd) == 2056);
static_assert(offsetof(Config, term_cmd) == 3080);
static_assert(offsetof(Config, hotlist_font) == 4104);
static_assert(offsetof(Config, list_font) == 4359);
static_assert(offsetof(Config, column_width) == 4616);
static_assert(offsetof(Config, hotlist_width) == 4640);
static_assert(offsetof(Config, win_height) == 4644);
static_assert(offsetof(Config, win_width) == 4648);
static_assert(offsetof(Config, keyfind_timeout) == 4652);
static_assert(offsetof(Config, flags) == 4656);
static_assert(offsetof(Config, save_on_exit) == 4660);
static_assert(offsetof(Config, show_hotlist) == 4664);
static_assert(offsetof(Config, alt_encoding) == 4665);

// Bits of Config::flags.
inline constexpr uint32_t kHideDotFiles = 0x1;
inline constexpr uint32_t kOverwriteNoPrompt = 0x2;
inline constexpr uint32_t kDeleteOnePrompt = 0x4;
inline constexpr uint32_t kDeleteOneReadOnly = 0x8;
inline constexpr uint32_t kDeleteOneNoPrompt = 0x10;
inline constexpr uint32_t kLinksPrompt = 0x20;
inline constexpr uint32_t kLinksAsLinks = 0x40;
inline constexpr uint32_t kLinksAsFiles = 0x80;
inline constexpr uint32_t kDeleteManyPrompt = 0x100;
inline constexpr uint32_t kDeleteManyNoPrompt = 0x200;
inline constexpr uint32_t kDeleteEachPrompt = 0x400;
inline constexpr uint32_t kDeleteEachReadOnly = 0x800;
inline constexpr uint32_t kDeleteEachNoPrompt = 0x1000;
inline constexpr uint32_t kEncodingTryUtf8 = 0x2000;
inline constexpr uint32_t kEncodingAlternate = 0x4000;
inline constexpr uint32_t kEncodingMask = kEncodingTryUtf8 | kEncodingAlternate;
inline constexpr uint32_t kOwnerErrorIgnore = 0x8000;
inline constexpr uint32_t kFormatMark = 0xFF000000;
inline constexpr uint32_t kDefaultFlags =
    kDeleteEachReadOnly | kDeleteManyPrompt | kLinksPrompt | kDeleteOnePrompt;
static_assert(kDefaultFlags == 0x924);

// Bits of gOptions that are tested somewhere. The word starts as 0xFFFFFBFF.
inline constexpr uint32_t kOptionDotEntries = 0x104;  // follow "Hide 'dot' Files", inverted
inline constexpr uint32_t kOptionInlineCompletion = 0x10;
inline constexpr uint32_t kOptionColourWebAddress = 0x20;
inline constexpr uint32_t kOptionProbeFiles = 0x400;  // initially clear
inline constexpr uint32_t kOptionTreeDotEntries = 0x800;
inline constexpr uint32_t kOptionTreeSorted = 0x1000;
inline constexpr uint32_t kOptionShowParent = 0x2000;

/// The live record. Set by start-up, never null afterwards; start-up, Preferences and closing write
/// to it.
extern Config* gConfig;

/// Listing option bits; written by config_load and by Preferences alone.
extern uint32_t gOptions;

/// The configuration directory; null when it can't be used (then nothing is read or saved). Set by
/// start-up.
extern const std::string* gConfigPath;

/// Puts the defaults of every field that has one into `config`; the others stay.
void config_set_defaults(Config& config);

/// Fills `config` from the bytes of a configuration file, as config_load does.
uint32_t config_parse(Config& config, std::string_view bytes);

/// Fills `config`, which is zeroed first, from the file `name` in the directory `dir`: the record
/// as read (every text terminated), or the defaults when the file can't be opened or is short, a
/// directory `dir` of null meaning just that. Then settles the format mark: bits of gOptions follow
/// "Hide 'dot' Files", and a record of another layout gets the default flags. Returns the encoding
/// bits to use for file names (kEncodingTryUtf8, kEncodingAlternate or 0). Never fails.
uint32_t config_load(Config& config, const char* dir, const char* name);

/// Writes `config` to the file `name` in `dir`, whole or not at all, with the format mark set in
/// the live record. 0, or -1 when it can't be written or `dir` is null.
int init_save_config(Config* config, const char* dir, const char* name);

}  // namespace dorn
