#include "hotlist/engine/hotlist.h"

#include "support/sandbox.h"

#include <cerrno>
#include <gtest/gtest.h>

using namespace dorn;

using Paths = std::vector<std::string>;

TEST(Hotlist, ParsesWhatAFileMayHold) {
    const std::string kilobyte(1024, 'x');
    const std::pair<std::string, Paths> rows[] = {
        {"", {}},
        {"/a\n/b\n/a\n", {"/a", "/b"}},
        {"/a\n\n/b\n\n", {"/a", "", "/b"}},
        {"/caf\xE9\n", {"/caf\xE9"}},
        {kilobyte + "\n/a\n", {kilobyte, "/a"}},
        {kilobyte + "y\n/a\n", {kilobyte, "y", "/a"}},
        {kilobyte + kilobyte + "tail", {kilobyte, "tail"}},
        {std::string("/a\0b\n/c\n", 8), {"/a", "/c"}},
    };
    for (const auto& [text, paths] : rows)
        EXPECT_EQ(hotlist_parse(text), paths) << testing::PrintToString(text);
}

TEST(Hotlist, TakesAPathOnceAndOnlyWhatTheFileCanGiveBack) {
    HotlistTree list;
    EXPECT_EQ(hotlist_append(&list, "/a"), 0);
    EXPECT_EQ(hotlist_append(&list, "/a/"), 0);
    EXPECT_EQ(hotlist_append(&list, "/a"), -1);
    EXPECT_EQ(hotlist_append(&list, "/two\nlines"), -1);
    EXPECT_EQ(hotlist_append(&list, std::string(1025, 'x').c_str()), -1);
    EXPECT_EQ(hotlist_append(&list, std::string(1024, 'x').c_str()), 0);
    EXPECT_EQ(hotlist_append(&list, ""), 0);
    EXPECT_EQ(hotlist_parse(hotlist_format(list.entries)), list.entries);
    EXPECT_EQ(hotlist_erase(&list, "/a"), 0);
    EXPECT_EQ(hotlist_erase(&list, "/a"), -1);
    EXPECT_EQ(list.entries, (Paths{"/a/", std::string(1024, 'x'), ""}));
}

TEST(Hotlist, TellsAMissingFileFromOneThatCannotBeRead) {
    const Sandbox sandbox;
    for (const auto& [name, error] : {std::pair("none", ENOENT), {".", EISDIR}}) {
        bool ok = true;
        EXPECT_EQ(hotlist_read(sandbox.path(), name, &ok), Paths{});
        EXPECT_EQ(errno, error);
        EXPECT_FALSE(ok);
    }
}
