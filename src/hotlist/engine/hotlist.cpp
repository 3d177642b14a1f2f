#include "hotlist/engine/hotlist.h"

#include "dirmodel/path_text.h"
#include "platform/whole_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unordered_set>

namespace dorn {

HotlistTree gTree;

namespace {

// More than any list made by hand; it bounds what a damaged file can make start-up read.
constexpr std::size_t kMostFileBytes = std::size_t{64} << 20;

// Takes the next path off the front of `text`, with the newline that ends it.
std::string_view take_line(std::string_view* text) {
    const std::string_view window = text->substr(0, kHotlistLineSize + 1);
    const std::size_t newline = window.find('\n');
    const bool ended = newline != std::string_view::npos;
    const std::size_t length = ended ? newline : std::min(window.size(), kHotlistLineSize);
    const std::string_view line = text->substr(0, length);
    text->remove_prefix(ended ? length + 1 : length);
    return line.substr(0, line.find('\0'));
}

}  // namespace

bool hotlist_can_keep(std::string_view path) {
    return path.size() <= kHotlistLineSize && path.find('\n') == std::string_view::npos;
}

int hotlist_append(HotlistTree* list, const char* path) {
    if (!hotlist_can_keep(path)) return -1;
    std::vector<std::string>& entries = list->entries;
    if (std::find(entries.begin(), entries.end(), path) != entries.end()) return -1;
    entries.emplace_back(path);
    return 0;
}

int hotlist_erase(HotlistTree* list, const char* path) {
    std::vector<std::string>& entries = list->entries;
    const auto found = std::find(entries.begin(), entries.end(), path);
    if (found == entries.end()) return -1;
    entries.erase(found);
    return 0;
}

int tree_lookup(const char* path) {
    const std::vector<std::string>& entries = gTree.entries;
    return std::find(entries.begin(), entries.end(), path) != entries.end() ? 1 : 0;
}

std::vector<std::string> hotlist_parse(std::string_view text) {
    std::vector<std::string> paths;
    std::unordered_set<std::string> seen;
    while (!text.empty()) {
        std::string path(take_line(&text));
        if (seen.insert(path).second) paths.push_back(std::move(path));
    }
    return paths;
}

std::string hotlist_format(const std::vector<std::string>& paths) {
    std::string text;
    for (const std::string& path : paths)
        text.append(path).push_back('\n');
    return text;
}

std::vector<std::string> hotlist_read(const char* directory, const char* file_name, bool* ok) {
    *ok = false;
    errno = ENOENT;
    if (directory == nullptr) return {};
    std::string text;
    const std::string path = es_construct_fullpath(directory, file_name);
    *ok = read_whole_file(path, kMostFileBytes, &text) == 0;
    return *ok ? hotlist_parse(text) : std::vector<std::string>{};
}

int hotlist_write(const HotlistTree& list, const char* directory, const char* file_name) {
    if (directory == nullptr) return -1;
    return write_whole_file(es_construct_fullpath(directory, file_name),
                            hotlist_format(list.entries));
}

}  // namespace dorn
