#include "platform/walktree.h"

#include "support/sandbox.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace dorn {
namespace {

int note(const char* path, const struct stat* status, void* data) {
    auto* seen = static_cast<std::vector<std::string>*>(data);
    seen->push_back(path);
    EXPECT_NE(status, nullptr);
    return seen->back().ends_with("stop") ? 7 : 0;
}

TEST(WalkTreeTest, EverythingIsSeenFromTheTopAndLinksAreNotFollowed) {
    const Sandbox sandbox;
    sandbox.mkdir("a");
    sandbox.mkdir("a/b");
    sandbox.write("a/b/file");
    sandbox.link("..", "a/b/up");
    std::vector<std::string> seen;
    EXPECT_EQ(misc_walktree(sandbox.path(), note, &seen), 0);
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen[0], sandbox.file("a"));
    EXPECT_EQ(seen[1], sandbox.file("a/b"));

    sandbox.write("a/b/stop");
    EXPECT_EQ(misc_walktree(sandbox.path(), note, &seen), 7);
    EXPECT_EQ(misc_walktree(sandbox.file("missing").c_str(), note, &seen), -1);
}

}  // namespace
}  // namespace dorn
