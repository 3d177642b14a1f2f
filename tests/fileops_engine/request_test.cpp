#include "config/config.h"
#include "fileops/engine/fop.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace dorn {
namespace {

TEST(RequestTest, TheConfiguredAnswersBecomeTheFlagsOfTheKind) {
    const struct {
        int32_t kind, count;
        bool one_dir;
        uint32_t config, flags;
    } rows[] = {
        {kFopCopy, 1, false, kDefaultFlags, 0},
        {kFopCopy, 9, false, kOverwriteNoPrompt, kFopOverwriteAll},
        {kFopMove, 1, true, kLinksAsLinks, kFopLinksAsLinks},
        {kFopCopy, 1, false, kLinksAsFiles | kOwnerErrorIgnore, kFopLinksAsFiles},
        {kFopCopy, 1, false, kOverwriteNoPrompt | kLinksAsLinks,
         kFopOverwriteAll | kFopLinksAsLinks},
        {kFopMove, 2, false, kDeleteOneNoPrompt | kDeleteEachPrompt | kDeleteEachNoPrompt, 0},
        {kFopDelete, 1, false, kDeleteOneNoPrompt, kFopDeleteAll},
        {kFopDelete, 1, false, kDeleteEachPrompt | kDeleteEachNoPrompt, 0},
        {kFopDelete, 1, true, kDeleteOneNoPrompt, 0},
        {kFopDelete, 1, true, kDeleteEachPrompt, kFopAskEach},
        {kFopDelete, 2, false, kDeleteEachPrompt | kDeleteEachNoPrompt, kFopAskEach},
        {kFopDelete, 2, false, kDeleteEachNoPrompt, kFopDeleteAll},
        {kFopDelete, 2, false, kDeleteEachReadOnly | kDeleteOneNoPrompt, 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(fop_request_flags(row.kind, row.count, row.one_dir, row.config), row.flags)
            << row.kind << " of " << row.count << ", " << std::hex << row.config;
}

TEST(RequestTest, ARequestWithoutNamesOrPathsStartsNothing) {
    const struct {
        const char* directory;
        std::vector<std::string> names;
        const char* destination;
    } rows[] = {{"/tmp", {}, "/tmp"}, {nullptr, {"a"}, "/tmp"}, {"/tmp", {"a"}, nullptr}};
    for (const auto& row : rows) {
        errno = 0;
        EXPECT_EQ(fop(kFopCopy, row.directory, row.names, row.destination, 0, nullptr, nullptr),
                  nullptr);
        EXPECT_EQ(errno, EINVAL);
    }
}

}  // namespace
}  // namespace dorn
