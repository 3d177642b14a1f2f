#include "platform/walktree.h"

#include "support/sandbox.h"

#include <gtest/gtest.h>

using namespace dorn;

TEST(WalkTreeTest, EverythingIsSeenFromTheTopAndLinksAreNotFollowed) {
    const Sandbox sandbox;
    sandbox.mkdir("a");
    sandbox.mkdir("a/b");
    sandbox.link("..", "a/b/up");
    const auto note = [](const char* path, const struct stat*, void* data) {
        auto* seen = static_cast<std::vector<std::string>*>(data);
        seen->push_back(path);
        return seen->back().ends_with("stop") ? 7 : 0;
    };
    std::vector<std::string> seen;
    EXPECT_EQ(misc_walktree(sandbox.path(), note, &seen), 0);
    const std::vector<std::string> expected = {sandbox.file("a"), sandbox.file("a/b"),
                                               sandbox.file("a/b/up")};
    EXPECT_EQ(seen, expected);
    sandbox.write("a/b/stop");
    EXPECT_EQ(misc_walktree(sandbox.path(), note, &seen), 7);
    EXPECT_EQ(misc_walktree(sandbox.file("missing").c_str(), note, &seen), -1);
}
