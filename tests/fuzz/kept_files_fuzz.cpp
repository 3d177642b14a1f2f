// Arbitrary bytes as one of the files that dorn keeps, the first byte choosing which: what is read
// is bounded, and comes back as it was from being written.
#include "assoc/engine/association.h"
#include "config/config.h"
#include "config/history.h"
#include "hotlist/engine/hotlist.h"

#include <cstdlib>
#include <cstring>
#include <set>

namespace {

using namespace dorn;

void check(bool holds) {
    if (!holds) std::abort();
}

void read_associations(std::string_view bytes) {
    std::vector<Association> rows;
    assoc_parse(bytes, &rows);
    // A comment, or a line longer than the reader takes, is refused by the editor.
    std::erase_if(rows, [](const Association& row) {
        const std::string line = row.pattern + row.open + row.edit + row.view;
        check(line.find_first_of(std::string_view("\t\n\0", 3)) == std::string::npos);
        return line.size() + 4 > kAssocLineSize || row.pattern.starts_with('#');
    });
    std::vector<Association> again;
    check(assoc_parse(assoc_format(rows), &again) == 0);
    check(assoc_format(again) == assoc_format(rows));
}

void read_config(std::string_view bytes) {
    Config config;
    check((config_parse(config, bytes) & ~kEncodingMask) == 0);
    check(strnlen(config.edit_cmd, sizeof config.edit_cmd) < sizeof config.edit_cmd);
    check(strnlen(config.list_font, sizeof config.list_font) < sizeof config.list_font);
    check(config.alt_encoding[sizeof config.alt_encoding - 1] == '\0');
    // A whole record, which no fuzzer grows by itself in a short run: the bytes over and over.
    std::string record(bytes);
    while (!bytes.empty() && record.size() < sizeof(Config))
        record += bytes;
    if (record.size() > bytes.size()) read_config(record);
}

void read_history(std::string_view bytes) {
    const auto list = cl_parse(bytes);
    for (size_t n = 0; n < bytes.size() && n < 64; ++n) {
        const char* entry = cl_get(list.get(), bytes[n] & 31);
        const std::string text = entry == nullptr ? std::string(1, bytes[n]).c_str() : entry;
        cl_add(list.get(), text.c_str());
        check(cl_get(list.get(), 1) == text);
        cl_find_pattern(list.get(), text.c_str());
    }
    check(list->count >= 0 && list->count <= kHistorySlots);
}

void read_hotlist(std::string_view bytes) {
    const std::vector<std::string> paths = hotlist_parse(bytes);
    for (const std::string& path : paths)
        check(hotlist_can_keep(path) && path.find('\0') == std::string::npos);
    check(std::set<std::string>(paths.begin(), paths.end()).size() == paths.size());
    check(hotlist_parse(hotlist_format(paths)) == paths);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr void (*kReaders[])(std::string_view) = {read_associations, read_config, read_history,
                                                      read_hotlist};
    if (size > 0) kReaders[*data % 4]({reinterpret_cast<const char*>(data + 1), size - 1});
    return 0;
}
