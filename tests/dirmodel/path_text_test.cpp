#include "dirmodel/path_text.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace dorn;

TEST(PathText, PiecesAreJoinedWithOneSlash) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {nullptr, nullptr, ""},
        {nullptr, "a/", "a/"},
        {"/a/", nullptr, "/a/"},
        {"/", "tmp", "/tmp"},
        {"/usr/", "/bin", "/usr//bin"},
        {"/usr", "bin//", "/usr/bin"},
        {"/", "/", "//"},
        {"/a", "", "/a"},
        {"", "a", "/a"},
        {"", "", "/"},
    };
    for (const auto& [dir, name, path] : rows)
        EXPECT_EQ(es_construct_fullpath(dir, name), path);
}

TEST(PathText, SlashesAreTidied) {
    const std::pair<const char*, const char*> rows[] = {{"", ""},
                                                        {"/", "/"},
                                                        {"a", "a"},
                                                        {"/a/b//", "/a/b"},
                                                        {"///", "/"},
                                                        {"//a", "//a"},
                                                        {"a////b/c/", "a/b/c"}};
    for (const auto& [before, after] : rows)
        EXPECT_EQ(es_strip_pathname(std::string(before)), after);
}

TEST(PathText, LastComponentIsCut) {
    const std::pair<const char*, const char*> rows[] = {
        {"/usr/local", "/usr"}, {"/usr", "/"}, {"/", "/"},   {"", ""},        {"a", "a"},
        {"a/b", "a"},           {"a/", "a/"},  {"/a/", "/"}, {"/a/b/", "/a"}, {"//", "/"},
    };
    for (const auto& [before, after] : rows) {
        std::string path = before;
        EXPECT_EQ(es_remove_subdirectory(&path), std::strlen(after));
        EXPECT_EQ(path, after);
    }
}
