#include "config/config.h"
#include "fileops/engine/fop.h"

#include <gtest/gtest.h>

using namespace dorn;

TEST(RequestTest, TheConfiguredAnswersBecomeTheFlagsOfTheKind) {
    const struct {
        int32_t kind, count;
        bool one_dir;
        uint32_t config, flags;
    } rows[] = {
        {kFopCopy, 1, false, kDefaultFlags, 0},
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
    EXPECT_EQ(fop(kFopCopy, "/tmp", {}, "/tmp", 0, nullptr, nullptr), nullptr);
}
