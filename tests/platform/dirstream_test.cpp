#include "platform/dirstream.h"

#include "platform/file_status.h"
#include "support/faults.h"
#include "support/sandbox.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
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
    Seen seen;
    seen.error = entry.error;
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

/// What a stream delivered altogether.
struct Drained {
    StreamState state = StreamState::Later;
    std::map<std::string, Seen> entries;
    std::vector<std::string> order;
};

void drain(DirStream& stream, Drained* out, int wait_ms = 16) {
    const RawDirEntry* entry = nullptr;
    while ((out->state = dirstream_next(stream, wait_ms, &entry)) <= StreamState::Later) {
        if (out->state == StreamState::Later) continue;
        const std::string name(reinterpret_cast<const char*>(entry) + kRawNameOffset);
        EXPECT_EQ(name.size(), entry->namelen);
        EXPECT_TRUE(out->entries.emplace(name, unpack_entry(*entry)).second) << name << " twice";
        out->order.push_back(name);
    }
}

Drained drain(const std::string& path, int limit_ms = kStatusLimitMs) {
    Drained drained;
    const DirStreamPtr stream = dirstream_open(path.c_str(), limit_ms);
    drain(*stream, &drained);
    return drained;
}

class DirStreamTest : public testing::Test {
  protected:
    void make_many(int count, const std::string& stem = "file") const {
        for (int i = 0; i < count; ++i)
            sandbox_.write(stem + std::to_string(i));
    }

    Sandbox sandbox_;
    const std::string root_ = sandbox_.path();
};

TEST_F(DirStreamTest, EveryNameComesOnceWithTheStatusThatLstatGives) {
    make_many(5000);
    sandbox_.mkdir("folder");
    const Drained drained = drain(root_);
    EXPECT_EQ(drained.state, StreamState::End);
    EXPECT_EQ(drained.entries.size(), 5001U);
    for (const auto& [name, seen] : drained.entries) {
        struct stat status {};
        ASSERT_EQ(lstat(sandbox_.file(name).c_str(), &status), 0) << name;
        const FileStatus expected = to_file_status(status);
        ASSERT_TRUE(seen.lstat.has_value()) << name;
        EXPECT_EQ(std::memcmp(&*seen.lstat, &expected, sizeof expected), 0) << name;
        EXPECT_EQ(seen.error, 0) << name;
        EXPECT_FALSE(seen.stat || seen.link) << name;
    }
}

TEST_F(DirStreamTest, LinksComeWithTheirTargetAndItsStatusWhereThereIsOne) {
    sandbox_.write("file");
    const std::string longest(4000, 'x');
    const std::map<std::string, std::pair<std::string, int>> links = {
        {"good", {"file", 0}},
        {"folder", {"/", 0}},
        {"dangling", {"nowhere", ENOENT}},
        {"loop", {"loop", ELOOP}},
        {"through", {"file/x", ENOTDIR}},
        {"long", {longest, ENAMETOOLONG}}};
    for (const auto& [name, link] : links)
        sandbox_.link(link.first, name);
    const Drained drained = drain(root_);
    for (const auto& [name, link] : links) {
        const Seen& seen = drained.entries.at(name);
        EXPECT_EQ(seen.error, link.second) << name;
        EXPECT_EQ(seen.link, link.first) << name;
        ASSERT_TRUE(seen.lstat.has_value()) << name;
        EXPECT_EQ(seen.lstat->mode & kTypeMask, kTypeLink) << name;
        EXPECT_EQ(seen.stat.has_value(), link.second == 0) << name;
    }
    EXPECT_TRUE(is_directory(*drained.entries.at("folder").stat));
}

constexpr int kShortLimit = 250;  // milliseconds; enough for a call on a busy machine

TEST_F(DirStreamTest, AStatusThatHangsIsTimedOutAndTheOthersComeInOrder) {
    make_many(300);
    const std::vector<std::string> order = drain(root_).order;
    ASSERT_EQ(order.size(), 300U);
    for (const int nth : {1, 2, 150, 300}) {
        const Faults faults({{"statx", nth, kHang}});
        const Drained drained = drain(root_, kShortLimit);
        EXPECT_EQ(drained.state, StreamState::End);
        EXPECT_EQ(drained.order, order);
        for (const auto& [name, seen] : drained.entries) {
            const bool hung = name == order[static_cast<std::size_t>(nth - 1)];
            EXPECT_EQ(seen.error, hung ? ETIMEDOUT : 0) << name;
            EXPECT_EQ(seen.lstat.has_value(), !hung) << name;
        }
    }
}

TEST_F(DirStreamTest, NoNameIsLostOrComesTwiceWhenCallsEndJustAsTheyAreGivenUp) {
    // The limit holds for the opening, too, and a busy machine needs some of it for that.
    constexpr int kLimit = 20;  // milliseconds
    make_many(200);
    const std::vector<std::string> order = drain(root_).order;
    dirstream_set_test_hook([](const char* name) {
        if (name[std::strlen(name) - 1] == '0') usleep(kLimit * 1000);
    });
    const DirStreamPtr stream = dirstream_open(root_.c_str(), kLimit);
    Drained drained;
    drain(*stream, &drained, 1);
    dirstream_set_test_hook(nullptr);
    EXPECT_EQ(drained.state, StreamState::End);
    EXPECT_EQ(drained.order, order);
    for (const auto& [name, seen] : drained.entries)
        EXPECT_TRUE(seen.error == ETIMEDOUT || seen.lstat.has_value()) << name;
}

TEST_F(DirStreamTest, ALinkWhoseTargetHangsKeepsWhatIsKnownOfTheLink) {
    sandbox_.link("/dead", "link");
    const Faults faults({{"statx", 2, kHang}});
    const Seen seen = drain(root_, kShortLimit).entries.at("link");
    EXPECT_EQ(seen.error, ETIMEDOUT);
    EXPECT_EQ(seen.link, "/dead");
    EXPECT_TRUE(seen.lstat.has_value());
    EXPECT_FALSE(seen.stat.has_value());
}

TEST_F(DirStreamTest, ADirectoryThatFailsOrHangsGivesWhatItGaveBefore) {
    // More than one reading of names brings.
    make_many(1000, std::string(200, 'x'));
    const std::tuple<Fault, int, bool> cases[] = {{{"getdents64", 2, EIO}, EIO, true},
                                                  {{"getdents64", 2, kHang}, ETIMEDOUT, true},
                                                  {{"getdents64", 1, kHang}, ETIMEDOUT, false},
                                                  {{"open", 1, kHang}, ETIMEDOUT, false},
                                                  {{"open", 1, EMFILE}, EMFILE, false}};
    for (const auto& [fault, error, some] : cases) {
        const std::string input = fault.call + std::to_string(fault.nth);
        const Faults faults({fault});
        const DirStreamPtr stream = dirstream_open(root_.c_str(), kShortLimit);
        Drained drained;
        drain(*stream, &drained);
        EXPECT_EQ(drained.state, StreamState::Failed) << input;
        EXPECT_EQ(dirstream_error(*stream), error) << input;
        EXPECT_EQ(!drained.entries.empty(), some) << input;
        EXPECT_LT(drained.entries.size(), 1000U);
    }
}

TEST_F(DirStreamTest, CallsThatAreInterruptedOrMissingDoNotShow) {
    make_many(3);
    for (const Fault& fault :
         {Fault{"statx", 0, ENOSYS}, Fault{"statx", 0, EPERM}, Fault{"statx", 2, EINTR},
          Fault{"getdents64", 1, EINTR}, Fault{"open", 1, EINTR}}) {
        const Faults faults({fault});
        const Drained drained = drain(root_);
        EXPECT_EQ(drained.entries.size(), 3U) << fault.call;
        for (const auto& [name, seen] : drained.entries)
            EXPECT_TRUE(seen.lstat) << fault.call;
    }
}

TEST_F(DirStreamTest, AStreamThatIsClosedEarlyLeavesItsThreadNothingToBreak) {
    make_many(1000);
    for (int round = 0; round < 200; ++round) {
        const DirStreamPtr stream = dirstream_open(root_.c_str());
        const RawDirEntry* entry = nullptr;
        for (int i = 0; i < round * 7; ++i)
            if (dirstream_next(*stream, round % 3, &entry) == StreamState::Later) break;
    }
}

}  // namespace
}  // namespace dorn
