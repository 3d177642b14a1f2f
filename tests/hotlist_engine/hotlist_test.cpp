#include "hotlist/engine/hotlist.h"

#include "support/sandbox.h"

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace dorn {
namespace {

using Paths = std::vector<std::string>;

TEST(Hotlist, ParsesWhatAFileMayHold) {
    const std::string kilobyte(1024, 'x');
    const struct {
        std::string text;
        Paths paths;
    } rows[] = {
        {"", {}},
        {"/\n", {"/"}},
        {"/usr", {"/usr"}},
        {"/b\n/a\n", {"/b", "/a"}},
        {"/a\n/b\n/a\n", {"/a", "/b"}},
        {"/a\n\n/b\n\n", {"/a", "", "/b"}},
        {"\n", {""}},
        {"/a\r\n", {"/a\r"}},
        {"/caf\xE9\n", {"/caf\xE9"}},
        {kilobyte + "\n/a\n", {kilobyte, "/a"}},
        {kilobyte + "y\n/a\n", {kilobyte, "y", "/a"}},
        {kilobyte + kilobyte + "tail", {kilobyte, "tail"}},
        {std::string("/a\0b\n/c\n", 8), {"/a", "/c"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(hotlist_parse(row.text), row.paths) << testing::PrintToString(row.text);
    }
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

TEST(Hotlist, IsWrittenInDisplayOrderAndReadBack) {
    const Sandbox sandbox;
    HotlistTree list;
    list.entries = {"/usr", "", "/-rf 'q\"\t\xFF"};
    ASSERT_EQ(hotlist_write(list, sandbox.path(), "hotlist.001"), 0);
    std::stringstream text;
    text << std::ifstream(sandbox.file("hotlist.001")).rdbuf();
    EXPECT_EQ(text.str(), "/usr\n\n/-rf 'q\"\t\xFF\n");
    bool ok = false;
    EXPECT_EQ(hotlist_read(sandbox.path(), "hotlist.001", &ok), list.entries);
    EXPECT_TRUE(ok);
}

TEST(Hotlist, TellsAMissingFileFromOneThatCannotBeRead) {
    const Sandbox sandbox;
    sandbox.mkdir("folder");
    bool ok = true;
    EXPECT_EQ(hotlist_read(sandbox.path(), "none", &ok), Paths{});
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(hotlist_read(sandbox.path(), "folder", &ok), Paths{});
    EXPECT_NE(errno, ENOENT);
    EXPECT_FALSE(ok);
}

TEST(Hotlist, WithoutADirectoryNothingIsReadOrWritten) {
    bool ok = true;
    EXPECT_EQ(hotlist_read(nullptr, "hotlist.001", &ok), Paths{});
    EXPECT_FALSE(ok);
    EXPECT_EQ(hotlist_write(gTree, nullptr, "hotlist.001"), -1);
}

}  // namespace
}  // namespace dorn
