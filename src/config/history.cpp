#include "config/history.h"

#include "platform/whole_file.h"

#include <algorithm>
#include <cstring>

namespace dorn {

std::unique_ptr<HistoryList> gPathList;
std::unique_ptr<HistoryList> gSpecList;
std::unique_ptr<HistoryList> gPatternList;
std::unique_ptr<HistoryList> gWithList;
std::unique_ptr<HistoryList> gCopyList;

namespace {

constexpr std::size_t kPieceSize =
    1022;  // bytes of the longest piece read at once, newline included

constexpr char kPathFile[] = "goto.001";
constexpr char kSpecFile[] = "fspec.001";
constexpr char kPatternFile[] = "pattern.001";
constexpr char kWithFile[] = "with.001";
constexpr char kCopyFile[] = "copy.001";

// Whether a line of the file gives back that text.
bool is_kept(const std::string& text) {
    return text.size() < kPieceSize && text.find('\n') == std::string::npos;
}

// The slot of the n-th entry, counting from 0 at the newest.
int slot_of(const HistoryList& list, int n) {
    return (list.head + n) % kHistorySlots;
}

const std::string& entry(const HistoryList& list, int n) {
    return list.slots[static_cast<std::size_t>(slot_of(list, n))];
}

// The entry's place from the newest, or -1.
int find_entry(const HistoryList& list, std::string_view text) {
    for (int n = 0; n < list.count; ++n) {
        if (entry(list, n) == text) return n;
    }
    return -1;
}

void add_first(HistoryList& list, const char* text) {
    if (list.count > 0) list.head = (list.head + kHistorySlots - 1) % kHistorySlots;
    list.slots[static_cast<std::size_t>(list.head)] = text;
    list.count = std::min(list.count + 1, kHistorySlots);
}

// Makes the entry in `slot` the newest; the others keep their order. Where the ring has wrapped the
// entries between the slot and the head move away from the head, and the head steps back.
void move_to_front(HistoryList& list, int slot) {
    const auto at = [&list](int index) { return list.slots.begin() + index; };
    if (slot < list.head) {
        std::rotate(at(slot), at(slot + 1), at(list.head));
        --list.head;
    } else {
        std::rotate(at(list.head), at(slot), at(slot + 1));
    }
}

std::string_view take_piece(std::string_view& content) {
    const std::size_t newline = content.substr(0, kPieceSize).find('\n');
    const std::size_t length =
        newline == std::string_view::npos ? std::min(content.size(), kPieceSize) : newline + 1;
    std::string_view piece = content.substr(0, length);
    content.remove_prefix(length);
    piece = piece.substr(0, piece.find('\0'));
    if (piece.ends_with('\n')) piece.remove_suffix(1);
    return piece;
}

const char* without_web_prefix(const char* text) {
    const char* after = cl_is_web_address(text);
    return after == nullptr ? text : after;
}

}  // namespace

std::unique_ptr<HistoryList> cl_parse(std::string_view content) {
    auto list = std::make_unique<HistoryList>();
    while (!content.empty() && list->count < kHistorySlots) {
        list->slots[static_cast<std::size_t>(list->count++)] = take_piece(content);
    }
    list->flags |= kHistoryChanged;
    return list;
}

std::unique_ptr<HistoryList> cl_read(const char* directory, const char* file_name) {
    std::string content;
    if (directory != nullptr && file_name != nullptr) {
        (void)read_whole_file(join_path(directory, file_name), kHistorySlots * kPieceSize,
                              &content);
    }
    return cl_parse(content);
}

void cl_save(const HistoryList* list, const char* directory, const char* file_name) {
    if (list == nullptr || directory == nullptr || file_name == nullptr) return;
    std::string content;
    for (int n = 0; n < list->count; ++n) {
        if (is_kept(entry(*list, n))) content += entry(*list, n) + "\n";
    }
    (void)write_whole_file(join_path(directory, file_name), content);
}

void cl_add(HistoryList* list, const char* text) {
    if (list == nullptr || text == nullptr) return;
    const int found = find_entry(*list, text);
    if (found == 0) return;
    if (found > 0) {
        move_to_front(*list, slot_of(*list, found));
    } else {
        add_first(*list, text);
    }
    list->flags |= kHistoryChanged;
}

const char* cl_get(const HistoryList* list, int n) {
    if (list == nullptr || n < 1 || n > list->count) return nullptr;
    return entry(*list, n - 1).c_str();
}

void cl_destroy(std::unique_ptr<HistoryList> list) {
    list.reset();
}

const char* cl_is_web_address(const char* text) {
    constexpr std::string_view kPrefixes[] = {"http://", "ftp://", "gopher://", "file://"};
    if (text == nullptr) return nullptr;
    for (const std::string_view prefix : kPrefixes) {
        if (std::strncmp(text, prefix.data(), prefix.size()) == 0) return text + prefix.size();
    }
    return nullptr;
}

const char* cl_find_pattern(const HistoryList* list, const char* text) {
    if (list == nullptr || text == nullptr) return nullptr;
    const char* wanted = without_web_prefix(text);
    const std::size_t length = std::strlen(wanted);
    for (int n = 0; n < list->count; ++n) {
        const char* candidate = without_web_prefix(entry(*list, n).c_str());
        if (std::strncmp(candidate, wanted, length) == 0) return candidate;
    }
    return nullptr;
}

void init_read_cboxs(const char* directory) {
    gPathList = cl_read(directory, kPathFile);
    gSpecList = cl_read(directory, kSpecFile);
    gWithList = cl_read(directory, kWithFile);
    gCopyList = cl_read(directory, kCopyFile);
    gPatternList = cl_read(directory, kPatternFile);
    if (gSpecList->count == 0) cl_add(gSpecList.get(), "*");
}

void init_save_cboxs(const char* directory) {
    cl_save(gPathList.get(), directory, kPathFile);
    cl_save(gSpecList.get(), directory, kSpecFile);
    cl_save(gPatternList.get(), directory, kPatternFile);
}

void init_destroy_cboxs() {
    cl_destroy(std::move(gPathList));
    cl_destroy(std::move(gSpecList));
    cl_destroy(std::move(gWithList));
    cl_destroy(std::move(gCopyList));
    cl_destroy(std::move(gPatternList));
}

}  // namespace dorn
