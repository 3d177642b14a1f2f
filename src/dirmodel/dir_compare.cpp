// The comparators of the columns.
#include "dirmodel/dir_sort.h"
#include "dirmodel/path_text.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace dorn {

namespace {

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

using NameLookup = int (*)(uint32_t id, char buffer[kIdNameSize]);

int32_t compare_ids(int32_t a, int32_t b, NameLookup lookup) {
    if (a == b) return 0;
    char name_a[kIdNameSize];
    char name_b[kIdNameSize];
    lookup(static_cast<uint32_t>(a), name_a);
    lookup(static_cast<uint32_t>(b), name_b);
    return std::strcmp(name_a, name_b);
}

}  // namespace

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
    return compare_ids(a->uid, b->uid, dir_get_username);
}

int32_t dir_cmp_group(const DirEntry* a, const DirEntry* b) {
    return compare_ids(a->gid, b->gid, dir_get_groupname);
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
