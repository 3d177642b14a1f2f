#include "dirmodel/path_text.h"

#include <gtest/gtest.h>

namespace dorn {
namespace {

TEST(PathText, PiecesAreJoinedWithOneSlash) {
    struct Row {
        const char *dir, *name, *path;
    };
    const Row rows[] = {
        {nullptr, nullptr, ""},
        {nullptr, "a/", "a/"},
        {"/a/", nullptr, "/a/"},
        {"/", "tmp", "/tmp"},
        {"/usr/", "/bin", "/usr//bin"},
        {"/usr", "bin", "/usr/bin"},
        {"/usr", "bin//", "/usr/bin"},
        {"/", "/", "//"},
        {"/a", "", "/a"},
        {"", "a", "/a"},
        {"", "", "/"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(es_construct_fullpath(row.dir, row.name), row.path);
}

TEST(PathText, SlashesAreTidied) {
    struct Row {
        const char *before, *after;
    };
    const Row rows[] = {
        {"", ""},
        {"/", "/"},
        {"a", "a"},
        {"/a//b", "/a/b"},
        {"/a/b//", "/a/b"},
        {"//", "/"},
        {"///", "/"},
        {"//a", "//a"},
        {"/usr//local/", "/usr/local"},
        {"a/", "a"},
        {"a////b/c", "a/b/c"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(es_strip_pathname(std::string(row.before)), row.after);
}

TEST(PathText, LastComponentIsCut) {
    struct Row {
        const char *before, *after;
    };
    const Row rows[] = {
        {"/usr/local", "/usr"}, {"/usr", "/"}, {"/", "/"},   {"", ""},        {"a", "a"},
        {"a/b", "a"},           {"a/", "a/"},  {"/a/", "/"}, {"/a/b/", "/a"}, {"//", "/"},
    };
    for (const Row& row : rows) {
        std::string path = row.before;
        const std::size_t left = es_remove_subdirectory(&path);
        EXPECT_EQ(path, row.after);
        EXPECT_EQ(left, path.size());
    }
}

TEST(PathText, OnlyDigitsAreDigits) {
    EXPECT_EQ(misc_all_digits(""), 1);
    EXPECT_EQ(misc_all_digits("0123456789"), 1);
    EXPECT_EQ(misc_all_digits("12a"), 0);
    EXPECT_EQ(misc_all_digits("-1"), 0);
    EXPECT_EQ(misc_all_digits("\xB2"), 0);
}

}  // namespace
}  // namespace dorn
