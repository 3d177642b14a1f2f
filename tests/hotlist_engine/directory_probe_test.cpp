#include "hotlist/engine/directory_probe.h"

#include "support/headless_screen.h"
#include "support/sandbox.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

TEST(DirectoryProbe, TellsWhatADirectoryIs) {
    headless::reset();
    const Sandbox sandbox;
    sandbox.mkdir("branch");
    sandbox.mkdir("branch/below");
    sandbox.mkdir("dots");
    sandbox.mkdir("dots/.below");
    sandbox.mkdir("leaf");
    sandbox.write("leaf/file");
    sandbox.write("file");
    sandbox.link("branch", "to_branch");
    sandbox.link("nowhere", "dangling");
    sandbox.link("loop", "loop");
    const struct {
        const char* name;
        int flags;
        DirectoryKind kind;
    } rows[] = {
        {"branch", 2, DirectoryKind::Branch},      {"to_branch", 2, DirectoryKind::Branch},
        {"dots", 2, DirectoryKind::Branch},        {"leaf", 2, DirectoryKind::Leaf},
        {"file", 2, DirectoryKind::Unopenable},    {"loop", 2, DirectoryKind::Unopenable},
        {"none", 2, DirectoryKind::Missing},       {"none/below", 2, DirectoryKind::Missing},
        {"file/below", 2, DirectoryKind::Missing}, {"dangling", 2, DirectoryKind::Missing},
    };
    for (const auto& row : rows)
        EXPECT_EQ(directory_kind_here(sandbox.file(row.name), row.flags), row.kind) << row.name;
    EXPECT_EQ(directory_kind_here("", 2), DirectoryKind::Missing);
}

TEST(DirectoryProbe, ADirectoryThatMayNotBeOpenedIsNotMissing) {
    if (geteuid() == 0) GTEST_SKIP() << "root opens everything";
    const Sandbox sandbox;
    sandbox.mkdir("closed");
    ASSERT_EQ(chmod(sandbox.file("closed").c_str(), 0), 0);
    EXPECT_EQ(directory_kind_here(sandbox.file("closed"), 2), DirectoryKind::Unopenable);
}

}  // namespace
}  // namespace dorn
