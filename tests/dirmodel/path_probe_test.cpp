#include "dirmodel/dir_read.h"
#include "dirmodel/name_translation.h"
#include "support/sandbox.h"

#include <gtest/gtest.h>

namespace dorn {
namespace {

TEST(PathProbe, SubdirectoriesAreFoundBehindNamesAndLinks) {
    const Sandbox sandbox;
    for (const char* name : {"empty", "files", "folder", "linked"})
        sandbox.mkdir(name);
    sandbox.write("files/f");
    sandbox.link("nowhere", "files/dangling");
    sandbox.link("f", "files/link");
    sandbox.mkdir("folder/d");
    sandbox.link("../folder", "linked/to-folder");
    const auto probe = [&](const char* name, int flags = 0) {
        return fs_path_has_subdirectories(sandbox.path(), name, flags);
    };
    EXPECT_EQ(probe("empty"), 0);
    EXPECT_EQ(probe("files"), 0);
    EXPECT_GT(probe("folder"), 0);
    EXPECT_GT(probe("linked"), 0);
    EXPECT_EQ(probe("files/f"), -1);
    EXPECT_EQ(probe("missing"), -1);
    EXPECT_GT(fs_path_has_subdirectories(nullptr, sandbox.path(), 0), 0);
    EXPECT_EQ(probe(std::string(1100, 'n').c_str()), -1);

    // A link keeps the directory's link count at that of an empty one.
    sandbox.mkdir("dots");
    sandbox.link("../empty", "dots/.link");
    EXPECT_EQ(probe("dots"), 0);
    EXPECT_GT(probe("dots", kCountDotDirectories), 0);
}

TEST(PathProbe, NameWithoutOnDiskFormIsToldApart) {
    const Sandbox sandbox;
    ASSERT_EQ(fname_set_translation(0x4000, "ISO-8859-1"), 0);
    EXPECT_EQ(fs_path_has_subdirectories(sandbox.path(), "\xE2\x82\xAC", 0), -2);
    fname_set_translation(0, nullptr);
}

}  // namespace
}  // namespace dorn
