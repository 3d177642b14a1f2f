#include "hotlist/engine/directory_probe.h"

#include "support/sandbox.h"

#include <gtest/gtest.h>

using namespace dorn;

TEST(DirectoryProbe, TellsWhatADirectoryIs) {
    const Sandbox sandbox;
    for (const char* name : {"branch", "branch/below", "dots", "dots/.below", "leaf", "linked"})
        sandbox.mkdir(name);
    sandbox.write("leaf/file");
    sandbox.write("file");
    sandbox.link("branch", "to_branch");
    sandbox.link("../branch", "linked/below");  // which no link count tells
    sandbox.link("nowhere", "dangling");
    sandbox.link("loop", "loop");
    const std::pair<const char*, DirectoryKind> rows[] = {
        {"branch", DirectoryKind::Branch},      {"to_branch", DirectoryKind::Branch},
        {"dots", DirectoryKind::Branch},        {"linked", DirectoryKind::Branch},
        {"leaf", DirectoryKind::Leaf},          {"file", DirectoryKind::Unopenable},
        {"loop", DirectoryKind::Unopenable},    {"none", DirectoryKind::Missing},
        {"none/below", DirectoryKind::Missing}, {"file/below", DirectoryKind::Missing},
        {"dangling", DirectoryKind::Missing}};
    for (const auto& [name, kind] : rows)
        EXPECT_EQ(directory_kind_here(sandbox.file(name), 2), kind) << name;
    EXPECT_EQ(directory_kind_here("", 2), DirectoryKind::Missing);
}
