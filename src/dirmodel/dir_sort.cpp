#include "dirmodel/dir_sort.h"

#include "config/config.h"
#include "dirmodel/path_text.h"
#include "dirmodel/sort_names.h"

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

namespace dorn {

namespace {

DirCompare _primary_cmp = nullptr;
DirCompare _secondary_cmp = nullptr;
int32_t _sort_direction = 1;

// The names of every owner or group among the entries, while a sort by one of these runs.
std::optional<SortNames> sNames;

// a - b, wrapped into 32 bits.
int32_t difference(uint32_t a, uint32_t b) {
    return static_cast<int32_t>(a - b);
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// An empty name counts as all digits.
bool all_digits(const char* name) {
    return name[0] == '\0' || (is_digit(name[0]) && misc_all_digits(name) == 1);
}

// Compares digit texts by value, of any length: the difference where it fits 32 bits.
int32_t compare_numbers(const char* a, const char* b) {
    const std::string_view left(a + std::strspn(a, "0"));
    const std::string_view right(b + std::strspn(b, "0"));
    constexpr std::size_t kSafeDigits = 9;
    if (left.size() <= kSafeDigits && right.size() <= kSafeDigits) {
        return std::atoi(left.data()) - std::atoi(right.data());
    }
    if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
    return left.compare(right);
}

int32_t compare_ids(uint32_t a, uint32_t b, SortNames::Lookup lookup) {
    if (a == b) return 0;
    if (sNames) return std::strcmp(sNames->find(a), sNames->find(b));
    char name_a[kIdNameSize];
    char name_b[kIdNameSize];
    lookup(a, name_a);
    lookup(b, name_b);
    return std::strcmp(name_a, name_b);
}

uint32_t user_of(const DirEntry& entry) {
    return static_cast<uint32_t>(entry.uid);
}

uint32_t group_of(const DirEntry& entry) {
    return static_cast<uint32_t>(entry.gid);
}

// Looks up the names that the comparisons to come will ask for.
void collect_names(const DirCache& cache, DirCompare primary) {
    if (primary != dir_cmp_user && primary != dir_cmp_group) return;
    const bool users = primary == dir_cmp_user;
    sNames.emplace(users ? dir_get_username : dir_get_groupname);
    for (int32_t i = 0; i < cache.count; ++i) {
        sNames->add(users ? user_of(*cache.entries[i]) : group_of(*cache.entries[i]));
    }
}

int _qsort_cmp(const void* a, const void* b) {
    const DirEntry* left = *static_cast<DirEntry* const*>(a);
    const DirEntry* right = *static_cast<DirEntry* const*>(b);
    if (gConfig->dirs_first != 0) {
        const int32_t folders = dir_cmp_dir(left, right);
        if (folders != 0) return folders;
    }
    int32_t result = _primary_cmp(left, right);
    if (result == 0 && _secondary_cmp != nullptr) result = _secondary_cmp(left, right);
    return _sort_direction > 0 ? result : difference(0, static_cast<uint32_t>(result));
}

}  // namespace

void dir_sort(DirCache* cache, DirCompare primary, int ascending) {
    if (primary == nullptr) return;
    _primary_cmp = primary;
    _secondary_cmp = primary == dir_cmp_name ? nullptr : dir_cmp_name;
    _sort_direction = ascending != 0 ? 1 : -1;
    if (cache->count < 2) return;
    collect_names(*cache, primary);
    std::qsort(cache->entries, static_cast<std::size_t>(cache->count), sizeof *cache->entries,
               _qsort_cmp);
    sNames.reset();
}

int32_t dir_cmp_name(const DirEntry* a, const DirEntry* b) {
    if (all_digits(a->name) && all_digits(b->name)) return compare_numbers(a->name, b->name);
    return std::strcmp(a->name, b->name);
}

int32_t dir_cmp_size(const DirEntry* a, const DirEntry* b) {
    return a->size < b->size ? 1 : 0;
}

int32_t dir_cmp_date(const DirEntry* a, const DirEntry* b) {
    return difference(a->mtime, b->mtime);
}

int32_t dir_cmp_user(const DirEntry* a, const DirEntry* b) {
    return compare_ids(user_of(*a), user_of(*b), dir_get_username);
}

int32_t dir_cmp_group(const DirEntry* a, const DirEntry* b) {
    return compare_ids(group_of(*a), group_of(*b), dir_get_groupname);
}

int32_t dir_cmp_permissions(const DirEntry* a, const DirEntry* b) {
    return difference(a->mode, b->mode);
}

int32_t dir_cmp_link(const DirEntry* a, const DirEntry* b) {
    if ((a->flags & b->flags & kEntryLink) == 0) return 0;
    const char* left = a->link_text == nullptr ? "" : a->link_text;
    const char* right = b->link_text == nullptr ? "" : b->link_text;
    return std::strcmp(left, right);
}

int32_t dir_cmp_dir(const DirEntry* a, const DirEntry* b) {
    return static_cast<int32_t>(is_directory(*b)) - static_cast<int32_t>(is_directory(*a));
}

}  // namespace dorn
