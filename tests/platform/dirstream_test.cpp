#include "platform/dirstream.h"

#include "platform/file_status.h"
#include "support/faults.h"
#include "support/sandbox.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

/// What a stream delivered of one entry.
struct Seen {
    int error = 0;
    std::optional<FileStatus> lstat;
    std::optional<FileStatus> stat;
    std::optional<std::string> link;
};

template <typename T>
T copy_of(const char* from) {
    T to;
    std::memcpy(&to, from, sizeof to);
    return to;
}

Seen unpack_entry(const RawDirEntry& entry) {
    Seen seen{entry.error, {}, {}, {}};
    const char* start = reinterpret_cast<const char*>(&entry);
    std::size_t at = (entry.namelen + 28U) & ~7U;
    while (at + sizeof(ExtraHeader) <= entry.reclen) {
        const auto header = copy_of<ExtraHeader>(start + at);
        const char* data = start + at + sizeof header;
        EXPECT_LE(at + sizeof header + header.length, entry.reclen);
        if (header.type == kExtraLstat) seen.lstat = copy_of<FileStatus>(data);
        if (header.type == kExtraStat) seen.stat = copy_of<FileStatus>(data);
        if (header.type == kExtraLink) seen.link = std::string(data, header.length);
        at = (at + header.length + 8U + 7U) & ~std::size_t{7};
    }
    return seen;
}

class DirStreamTest : public testing::Test {
  protected:
    void make_many(int count, const std::string& stem = "file") const {
        for (int i = 0; i < count; ++i)
            sandbox_.write(stem + std::to_string(i));
    }

    // Reads the sandbox to the end. The error, 0 of none.
    int drain(int limit_ms = kStatusLimitMs, int wait_ms = 16) {
        entries_.clear();
        order_.clear();
        const DirStreamPtr stream = dirstream_open(sandbox_.path(), limit_ms);
        StreamState state = StreamState::Later;
        for (const RawDirEntry* entry = nullptr; state <= StreamState::Later;) {
            state = dirstream_next(*stream, wait_ms, &entry);
            if (state != StreamState::Entry) continue;
            const std::string name(reinterpret_cast<const char*>(entry) + kRawNameOffset);
            EXPECT_EQ(name.size(), entry->namelen);
            EXPECT_TRUE(entries_.emplace(name, unpack_entry(*entry)).second) << name << " twice";
            order_.push_back(name);
        }
        EXPECT_EQ(state == StreamState::Failed, dirstream_error(*stream) != 0);
        return dirstream_error(*stream);
    }

    Sandbox sandbox_;
    std::map<std::string, Seen> entries_;
    std::vector<std::string> order_;
};

TEST_F(DirStreamTest, EveryNameComesOnceWithTheStatusThatLstatGives) {
    make_many(5000);
    sandbox_.mkdir("folder");
    EXPECT_EQ(drain(), 0);
    EXPECT_EQ(entries_.size(), 5001U);
    for (const auto& [name, seen] : entries_) {
        struct stat status {};
        ASSERT_EQ(lstat(sandbox_.file(name).c_str(), &status), 0) << name;
        const FileStatus expected = to_file_status(status);
        ASSERT_TRUE(seen.lstat && seen.error == 0 && !seen.stat && !seen.link) << name;
        EXPECT_EQ(std::memcmp(&*seen.lstat, &expected, sizeof expected), 0) << name;
    }
}

TEST_F(DirStreamTest, LinksComeWithTheirTargetAndItsStatusWhereThereIsOne) {
    sandbox_.write("file");
    const std::tuple<const char*, std::string, int> links[] = {
        {"good", "file", 0},
        {"folder", "/", 0},
        {"gone", "no", ENOENT},
        {"long", std::string(4000, 'x'), ENAMETOOLONG},
        {"loop", "loop", ELOOP}};
    for (const auto& [name, target, error] : links)
        sandbox_.link(target, name);
    drain();
    for (const auto& [name, target, error] : links) {
        const Seen& seen = entries_.at(name);
        EXPECT_EQ(seen.error, error) << name;
        EXPECT_EQ(seen.link, target) << name;
        ASSERT_TRUE(seen.lstat.has_value()) << name;
        EXPECT_EQ(seen.lstat->mode & kTypeMask, kTypeLink) << name;
        EXPECT_EQ(seen.stat.has_value(), error == 0) << name;
    }
    EXPECT_TRUE(is_directory(*entries_.at("folder").stat));
}

constexpr int kShortLimit = 250;  // milliseconds; enough for a call on a busy machine

TEST_F(DirStreamTest, AStatusThatHangsIsTimedOutAndTheOthersComeInOrder) {
    make_many(300);
    drain();
    const std::vector<std::string> order = order_;
    for (const std::size_t nth : {1U, 2U, 300U}) {
        const Faults faults({{"statx", static_cast<int>(nth), kHang}});
        EXPECT_EQ(drain(kShortLimit), 0);
        EXPECT_EQ(order_, order);
        for (const auto& [name, seen] : entries_) {
            EXPECT_EQ(seen.error, name == order[nth - 1] ? ETIMEDOUT : 0) << name;
            EXPECT_EQ(seen.lstat.has_value(), seen.error == 0) << name;
        }
    }
}

TEST_F(DirStreamTest, NoNameIsLostOrComesTwiceWhenCallsEndJustAsTheyAreGivenUp) {
    // The limit holds for the opening, too, and a busy machine needs some of it for that.
    constexpr int kLimit = 20;  // milliseconds
    make_many(200);
    drain();
    const std::vector<std::string> order = order_;
    dirstream_set_test_hook([](const char* name) {
        if (name[std::strlen(name) - 1] == '0') usleep(kLimit * 1000);
    });
    EXPECT_EQ(drain(kLimit, 1), 0);
    dirstream_set_test_hook(nullptr);
    EXPECT_EQ(order_, order);
    for (const auto& [name, seen] : entries_)
        EXPECT_TRUE(seen.error == ETIMEDOUT || seen.lstat.has_value()) << name;
}

TEST_F(DirStreamTest, ALinkWhoseTargetHangsKeepsWhatIsKnownOfTheLink) {
    sandbox_.link("/dead", "link");
    const Faults faults({{"statx", 2, kHang}});
    drain(kShortLimit);
    const Seen& seen = entries_.at("link");
    EXPECT_EQ(seen.error, ETIMEDOUT);
    EXPECT_EQ(seen.link, "/dead");
    EXPECT_TRUE(seen.lstat && !seen.stat);
}

TEST_F(DirStreamTest, ADirectoryThatFailsOrHangsGivesWhatItGaveBefore) {
    make_many(1000, std::string(200, 'x'));  // more than one reading of names brings
    const std::tuple<Fault, int, bool> rows[] = {{{"getdents64", 2, EIO}, EIO, true},
                                                 {{"getdents64", 2, kHang}, ETIMEDOUT, true},
                                                 {{"getdents64", 1, kHang}, ETIMEDOUT, false},
                                                 {{"open", 1, kHang}, ETIMEDOUT, false},
                                                 {{"open", 1, EMFILE}, EMFILE, false}};
    for (const auto& [fault, error, some] : rows) {
        SCOPED_TRACE(fault.call + std::to_string(fault.nth));
        const Faults faults({fault});
        EXPECT_EQ(drain(kShortLimit), error);
        EXPECT_EQ(!entries_.empty(), some);
        EXPECT_LT(entries_.size(), 1000U);
    }
}

TEST_F(DirStreamTest, CallsThatAreInterruptedOrMissingDoNotShow) {
    make_many(3);
    for (const Fault& fault :
         {Fault{"statx", 0, ENOSYS}, Fault{"statx", 0, EPERM}, Fault{"statx", 2, EINTR},
          Fault{"getdents64", 1, EINTR}, Fault{"open", 1, EINTR}}) {
        const Faults faults({fault});
        EXPECT_EQ(drain(), 0) << fault.call;
        EXPECT_EQ(entries_.size(), 3U) << fault.call;
        for (const auto& [name, seen] : entries_)
            EXPECT_TRUE(seen.lstat) << fault.call;
    }
}

TEST_F(DirStreamTest, AStreamThatIsClosedEarlyLeavesItsThreadNothingToBreak) {
    make_many(1000);
    for (int round = 0; round < 200; ++round) {
        const DirStreamPtr stream = dirstream_open(sandbox_.path());
        const RawDirEntry* entry = nullptr;
        for (int i = 0; i < round * 7; ++i)
            if (dirstream_next(*stream, round % 3, &entry) == StreamState::Later) break;
    }
}

}  // namespace
}  // namespace dorn
