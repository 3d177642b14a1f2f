#include "dirmodel/status_chain.h"

#include "dirmodel/dir_read.h"
#include "support/sandbox.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

namespace dorn {
namespace {

// A delivered entry made by hand.
class Delivered {
  public:
    explicit Delivered(const std::string& name, int32_t error = 0) {
        RawDirEntry head{};
        head.error = error;
        head.namelen = static_cast<uint16_t>(name.size());
        append(&head, kRawNameOffset);
        append(name.c_str(), name.size() + 1);
        pad();
    }

    Delivered& with(uint16_t type, const void* data, std::size_t length) {
        const ExtraHeader header{static_cast<uint16_t>(length), type, 0};
        append(&header, sizeof header);
        append(data, length);
        pad();
        return *this;
    }
    Delivered& with(uint16_t type, uint32_t mode) {
        FileStatus status{};
        status.mode = mode;
        return with(type, &status, sizeof status);
    }
    Delivered& with_target(const std::string& target) {
        return with(kExtraLink, target.data(), target.size());
    }

    const RawDirEntry& raw(std::size_t length = SIZE_MAX) {
        const auto reclen = static_cast<uint16_t>(std::min(length, bytes_.size() * 8));
        auto* entry = reinterpret_cast<RawDirEntry*>(bytes_.data());
        entry->reclen = reclen;
        return *entry;
    }

  private:
    void append(const void* data, std::size_t length) {
        const std::size_t at = used_;
        used_ += length;
        bytes_.resize((used_ + 7) / 8);
        std::memcpy(reinterpret_cast<char*>(bytes_.data()) + at, data, length);
    }
    void pad() {
        used_ = (used_ + 7) / 8 * 8;
    }

    std::vector<uint64_t> bytes_;
    std::size_t used_ = 0;
};

TEST(StatusChain, RecordsAreFoundWhereTheNameEnds) {
    for (std::size_t length = 1; length <= 17; ++length) {
        Delivered entry(std::string(length, 'n'));
        entry.with(77, "odd", 3).with(kExtraLstat, 0100600);
        FileStatus status{};
        EXPECT_EQ(lstat_optimize(&entry.raw(), &status), 0) << length;
        EXPECT_EQ(status.mode, 0100600U);
        EXPECT_EQ(stat_optimize(&entry.raw(), &status), 0);
    }
}

TEST(StatusChain, NothingIsReadBeyondTheRecord) {
    Delivered entry("name");
    entry.with(kExtraLstat, 0100600);
    const std::size_t whole = entry.raw().reclen;
    FileStatus status{};
    for (std::size_t length = 0; length < whole; ++length)
        EXPECT_EQ(lstat_optimize(&entry.raw(length), &status), -1) << length;
    EXPECT_EQ(lstat_optimize(&entry.raw(whole), &status), 0);

    Delivered brief("name");
    brief.with(kExtraLstat, "brief", 5);
    EXPECT_EQ(lstat_optimize(&brief.raw(), &status), -1);
}

TEST(StatusChain, LinkIsNoFollowedStatus) {
    Delivered entry("link");
    entry.with(kExtraLstat, 0120777);
    FileStatus status{};
    EXPECT_EQ(stat_optimize(&entry.raw(), &status), -1);
    entry.with(kExtraStat, 040755);
    EXPECT_EQ(stat_optimize(&entry.raw(), &status), 0);
    EXPECT_EQ(status.mode, 040755U);
}

class EntryFill : public testing::Test {
  protected:
    EntryFill() : directory_(open(sandbox_.path(), O_RDONLY | O_DIRECTORY)) {}
    ~EntryFill() override {
        close(directory_);
        std::free(entry_.link_text);
    }

    void fill(Delivered delivered) {
        entry_.flags = 0;
        entry_fill(&entry_, delivered.raw(), directory_);
    }

    Sandbox sandbox_;
    int directory_;
    DirEntry entry_{};
};

TEST_F(EntryFill, ToldFailureIsShownAndTheSystemIsNotAsked) {
    sandbox_.write("file", "content");
    struct Row {
        int error;
        const char* text;
    };
    const Row rows[] = {{ENOENT, "(unable to read info)"},
                        {ETIMEDOUT, "(unable to read - timeout)"},
                        {EINTR, "(unable to read - timeout)"}};
    for (const Row& row : rows) {
        entry_.size = 99;
        fill(Delivered("file", row.error));
        EXPECT_EQ(entry_.flags, kEntryBroken | kEntryLink);
        EXPECT_STREQ(entry_.link_text, row.text);
        EXPECT_EQ(entry_.size, 0);
        EXPECT_EQ(entry_.uid, -1);
        EXPECT_EQ(entry_.gid, -1);
    }
}

TEST_F(EntryFill, WhatIsNotCarriedIsAskedOfTheSystem) {
    sandbox_.write("file", "content");
    sandbox_.mkdir("folder");
    sandbox_.link("folder", "link");
    sandbox_.link("nowhere", "dangling");
    fill(Delivered("file"));
    EXPECT_EQ(entry_.flags, 0U);
    EXPECT_EQ(entry_.size, 7);
    fill(Delivered("link"));
    EXPECT_EQ(entry_.flags, kEntryLink);
    EXPECT_TRUE(is_directory(entry_));
    EXPECT_STREQ(entry_.link_text, "folder");
    fill(Delivered("dangling"));
    EXPECT_EQ(entry_.flags, kEntryLink | kEntryBroken);
    EXPECT_EQ(entry_.mode & kTypeMask, kTypeLink);
    EXPECT_STREQ(entry_.link_text, "nowhere");
    fill(Delivered("gone"));
    EXPECT_STREQ(entry_.link_text, "(unable to read info)");
}

TEST_F(EntryFill, CarriedLinkWithoutTargetIsBroken) {
    sandbox_.mkdir("folder");
    sandbox_.link("folder", "link");
    fill(Delivered("link", ETIMEDOUT).with(kExtraLstat, 0120777).with_target("folder"));
    EXPECT_EQ(entry_.flags, kEntryLink | kEntryBroken);
    EXPECT_STREQ(entry_.link_text, "folder");
    fill(Delivered("link").with(kExtraLstat, 0120777).with(kExtraStat, 040755));
    EXPECT_EQ(entry_.flags, kEntryLink | kEntryBroken);
    EXPECT_STREQ(entry_.link_text, "(unable to read link info)");
    EXPECT_TRUE(is_directory(entry_));
}

TEST_F(EntryFill, LinkTextGrowsByWhatItNeedsAndIsCutAt1024Bytes) {
    for (const std::size_t length : {0U, 31U, 32U, 5U, 1023U, 1024U, 1025U, 3000U}) {
        fill(Delivered("link").with(kExtraLstat, 0120777).with_target(std::string(length, 't')));
        EXPECT_EQ(std::strlen(entry_.link_text), std::min<std::size_t>(length, 1024));
        EXPECT_LE(entry_.link_room, 1025U);
        EXPECT_EQ(entry_.link_room % 32, entry_.link_room == 1025 ? 1U : 0U);
    }
}

TEST_F(EntryFill, NameThatDoesNotFitHasNoAttributes) {
    fill(Delivered(std::string(255, 'n')).with(kExtraLstat, 0100644));
    EXPECT_EQ(entry_.flags, 0U);
    fill(Delivered(std::string(256, 'n')).with(kExtraLstat, 0100644));
    EXPECT_EQ(entry_.flags, kEntryLink | kEntryBroken);
}

}  // namespace
}  // namespace dorn
