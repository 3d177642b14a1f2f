#include "dirmodel/dir_sort.h"

#include "config/config.h"
#include "dirmodel/path_text.h"
#include "dirmodel/sort_names.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace dorn {

namespace {

// What a sort compares, beside the pointer: an entry's own memory is far away.
struct SortItem {
    DirEntry* entry;
    uint64_t name_key;  // the name's bytes behind what all names begin with, the first one highest
    int64_t value;      // what the primary order compares, where that is a number
    bool folder;
    bool digits;  // the name is of digits alone
};
static_assert(sizeof(SortItem) <= 32, "larger ones are sorted through pointers by the C library");

// How the primary order is computed from two items.
enum class Primary {
    Name,
    Smaller,     // 1 when a's value is smaller, else 0
    Difference,  // of the values, in 32 bits
    Entries,     // by the comparator
};

DirCompare _primary_cmp = nullptr;
DirCompare _secondary_cmp = nullptr;
int32_t _sort_direction = 1;
std::size_t sCommonLength = 0;  // bytes that all names begin with
Primary sPrimary = Primary::Entries;

// Sorted entries lie far apart in memory: one is asked for this many steps before it is needed.
constexpr int32_t kPrefetchAhead = 16;

void prefetch_entry(const DirCache& cache, int32_t index) {
    if (index < cache.count) __builtin_prefetch(cache.entries[index]->name);
}

// How many bytes all the names begin with.
std::size_t common_length(const DirCache& cache) {
    const char* first = cache.entries[0]->name;
    std::size_t length = std::strlen(first);
    for (int32_t i = 1; i < cache.count && length > 0; ++i) {
        prefetch_entry(cache, i + kPrefetchAhead);
        const char* name = cache.entries[i]->name;
        std::size_t same = 0;
        while (same < length && name[same] == first[same])
            ++same;
        length = same;
    }
    return length;
}

uint64_t name_key(const char* rest) {
    uint64_t key = 0;
    for (int shift = 56; shift >= 0 && *rest != '\0'; shift -= 8, ++rest) {
        key |= uint64_t{static_cast<unsigned char>(*rest)} << shift;
    }
    return key;
}

std::vector<SortItem> make_items(const DirCache& cache) {
    std::vector<SortItem> items;
    items.reserve(static_cast<std::size_t>(cache.count));
    sCommonLength = common_length(cache);
    for (int32_t i = 0; i < cache.count; ++i) {
        prefetch_entry(cache, i + kPrefetchAhead);
        DirEntry* entry = cache.entries[i];
        items.push_back({entry, name_key(entry->name + sCommonLength), 0, is_directory(*entry),
                         misc_all_digits(entry->name) == 1});
    }
    return items;
}

Primary primary_of(DirCompare compare) {
    if (compare == dir_cmp_name) return Primary::Name;
    if (compare == dir_cmp_size) return Primary::Smaller;
    const bool numbers = compare == dir_cmp_date || compare == dir_cmp_permissions ||
                         compare == dir_cmp_user || compare == dir_cmp_group;
    return numbers ? Primary::Difference : Primary::Entries;
}

// Owners and groups are compared by the places of their names.
void set_places(std::vector<SortItem>& items, int32_t FileStatus::*id, SortNames::Lookup lookup) {
    SortNames names(lookup);
    for (const SortItem& item : items)
        names.add(static_cast<uint32_t>(item.entry->*id));
    names.rank();
    for (SortItem& item : items)
        item.value = names.place(static_cast<uint32_t>(item.entry->*id));
}

template <typename Value>
void set_values(std::vector<SortItem>& items, Value FileStatus::*field) {
    for (SortItem& item : items)
        item.value = static_cast<int64_t>(item.entry->*field);
}

void set_primary(std::vector<SortItem>& items) {
    sPrimary = primary_of(_primary_cmp);
    if (_primary_cmp == dir_cmp_size) set_values(items, &FileStatus::size);
    if (_primary_cmp == dir_cmp_date) set_values(items, &FileStatus::mtime);
    if (_primary_cmp == dir_cmp_permissions) set_values(items, &FileStatus::mode);
    if (_primary_cmp == dir_cmp_user) set_places(items, &FileStatus::uid, dir_get_username);
    if (_primary_cmp == dir_cmp_group) set_places(items, &FileStatus::gid, dir_get_groupname);
}

// What dir_cmp_name answers.
int32_t compare_names(const SortItem& a, const SortItem& b) {
    if (a.digits && b.digits) return dir_cmp_name(a.entry, b.entry);
    if (a.name_key != b.name_key) return a.name_key < b.name_key ? -1 : 1;
    return std::strcmp(a.entry->name + sCommonLength, b.entry->name + sCommonLength);
}

// What the primary comparator answers, in the sign at least.
int32_t compare_primary(const SortItem& a, const SortItem& b) {
    switch (sPrimary) {
        case Primary::Name:
            return compare_names(a, b);
        case Primary::Smaller:
            return a.value < b.value ? 1 : 0;
        case Primary::Difference:
            return static_cast<int32_t>(a.value - b.value);
        case Primary::Entries:
            break;
    }
    return _primary_cmp(a.entry, b.entry);
}

int _qsort_cmp(const void* left, const void* right) {
    const auto& a = *static_cast<const SortItem*>(left);
    const auto& b = *static_cast<const SortItem*>(right);
    if (a.folder != b.folder && gConfig->dirs_first != 0) return a.folder ? -1 : 1;
    int32_t result = compare_primary(a, b);
    if (result == 0 && _secondary_cmp != nullptr) result = compare_names(a, b);
    // The least number has no opposite: it wraps to itself.
    return _sort_direction > 0 ? result : static_cast<int32_t>(0U - static_cast<uint32_t>(result));
}

}  // namespace

void dir_sort(DirCache* cache, DirCompare primary, int ascending) {
    if (primary == nullptr) return;
    _primary_cmp = primary;
    _secondary_cmp = primary == dir_cmp_name ? nullptr : dir_cmp_name;
    _sort_direction = ascending != 0 ? 1 : -1;
    if (cache->count < 2) return;
    std::vector<SortItem> items = make_items(*cache);
    set_primary(items);
    std::qsort(items.data(), items.size(), sizeof(SortItem), _qsort_cmp);
    DirEntry** slot = cache->entries;
    for (const SortItem& item : items)
        *slot++ = item.entry;
}

}  // namespace dorn
