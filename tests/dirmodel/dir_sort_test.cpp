#include "dirmodel/dir_sort.h"

#include "config/config.h"

#include <cstdlib>
#include <cstring>
#include <deque>
#include <gtest/gtest.h>
#include <random>

namespace dorn {
namespace {

using Names = std::vector<std::string>;

class DirSort : public testing::Test {
  protected:
    DirSort() {
        gConfig = &config_;
    }
    ~DirSort() override {
        gConfig = nullptr;
        cache_.count = 0;
        cache_.entries = nullptr;
    }

    DirEntry& add(const char* name) {
        DirEntry& entry = entries_.emplace_back();
        std::strcpy(entry.name, name);
        entry.mode = 0100644;
        pointers_.push_back(&entry);
        cache_.entries = pointers_.data();
        cache_.count = static_cast<int32_t>(pointers_.size());
        return entry;
    }

    Names sorted(DirCompare compare, int ascending = 1) {
        dir_sort(&cache_, compare, ascending);
        Names names;
        for (const DirEntry* entry : pointers_)
            names.emplace_back(entry->name);
        return names;
    }

    Config config_{};
    std::deque<DirEntry> entries_;
    std::vector<DirEntry*> pointers_;
    DirCache cache_;
};

TEST_F(DirSort, NamesOfDigitsCompareByValueAndOthersByBytes) {
    for (const Names& order :
         {Names{"", "1", "9", "10", "4294967296", "99999999999999999999", "100000000000000000000"},
          Names{"10", "1a", "A", "a10", "a9", "b", "\xFF"}}) {
        for (std::size_t i = 1; i < order.size(); ++i) {
            const DirEntry& a = add(order[i - 1].c_str());
            const DirEntry& b = add(order[i].c_str());
            EXPECT_LT(dir_cmp_name(&a, &b), 0) << a.name << " and " << b.name;
            EXPECT_GT(dir_cmp_name(&b, &a), 0) << a.name << " and " << b.name;
        }
    }
    EXPECT_EQ(dir_cmp_name(&add("007"), &add("7")), 0);
}

TEST_F(DirSort, ComparatorsAnswerAsTheyAreDefined) {
    DirEntry& a = add("a");
    DirEntry& b = add("b");
    a.size = 5;
    b.size = 7;
    EXPECT_EQ(dir_cmp_size(&a, &b), 1);
    EXPECT_EQ(dir_cmp_size(&b, &a), 0);
    a.mtime = 0xFFFFFFF0;
    b.mtime = 0x10;
    EXPECT_EQ(dir_cmp_date(&a, &b), -0x20);
    char target[] = "y";
    b.link_text = target;
    EXPECT_EQ(dir_cmp_link(&a, &b), 0);
    a.flags = b.flags = kEntryLink;
    EXPECT_LT(dir_cmp_link(&a, &b), 0);
}

TEST_F(DirSort, FoldersStayFirstInBothDirections) {
    for (const char* name : {"10", "9", "b", "A"})
        add(name);
    add("z").mode = 040755;
    add("d").mode = 040755;
    EXPECT_EQ(sorted(nullptr), (Names{"10", "9", "b", "A", "z", "d"}));
    EXPECT_EQ(sorted(dir_cmp_name), (Names{"9", "10", "A", "b", "d", "z"}));
    EXPECT_EQ(sorted(dir_cmp_name, 0), (Names{"z", "d", "b", "A", "10", "9"}));
    config_.dirs_first = 1;
    EXPECT_EQ(sorted(dir_cmp_name), (Names{"d", "z", "9", "10", "A", "b"}));
    EXPECT_EQ(sorted(dir_cmp_name, 0), (Names{"z", "d", "b", "A", "10", "9"}));
}

DirCompare sCompare = nullptr;

int compare_plainly(const void* a, const void* b) {
    const DirEntry* left = *static_cast<DirEntry* const*>(a);
    const DirEntry* right = *static_cast<DirEntry* const*>(b);
    const int32_t result = sCompare(left, right);
    return result != 0 ? result : dir_cmp_name(left, right);
}

TEST_F(DirSort, OrderIsThatOfTheLibrarysSortWithTheComparators) {
    std::mt19937 random(1);
    const auto pick = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
    char target[] = "target";
    for (const std::string prefix : {"", "common", "c"}) {
        pointers_.clear();
        for (int n = 0; n < 500; ++n) {
            const bool number = prefix != "common" && pick(3) == 0;
            std::string name = number ? "" : prefix;
            for (unsigned left = 1 + pick(12); left > 0; --left)
                name += static_cast<char>(number ? '0' + pick(10) : 0x30 + pick(0xD0));
            DirEntry& entry = add(name.c_str());
            entry.size = pick(20);
            entry.mtime = static_cast<uint32_t>(random());
            entry.uid = static_cast<int32_t>(pick(8));
            entry.gid = static_cast<int32_t>(pick(8));
            entry.mode = pick(0xFFFF);
            entry.flags = pick(2) == 0 ? kEntryLink : 0;
            entry.link_text = target;
        }
        for (const DirCompare compare : {dir_cmp_name, dir_cmp_size, dir_cmp_date, dir_cmp_user,
                                         dir_cmp_group, dir_cmp_permissions, dir_cmp_link}) {
            std::vector<DirEntry*> expected = pointers_;
            sCompare = compare;
            std::qsort(expected.data(), expected.size(), sizeof(DirEntry*), compare_plainly);
            dir_sort(&cache_, compare, 1);
            EXPECT_EQ(pointers_, expected);
        }
    }
}

TEST_F(DirSort, EachIdIsAskedOfTheSystemOnceASort) {
    constexpr int kIds = 300;
    for (int n = 0; n < 3000; ++n) {
        DirEntry& entry = add(std::to_string(n).c_str());
        entry.uid = entry.gid = 700000000 + n % kIds;
    }
    for (const DirCompare compare : {dir_cmp_user, dir_cmp_group}) {
        const uint64_t before = dir_name_lookups();
        sorted(compare);
        EXPECT_EQ(dir_name_lookups() - before, uint64_t{kIds});
    }
}

}  // namespace
}  // namespace dorn
