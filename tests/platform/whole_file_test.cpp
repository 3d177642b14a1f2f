#include "platform/whole_file.h"

#include "support/faults.h"
#include "support/sandbox.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace dorn {
namespace {

constexpr std::size_t kNoLimit = 1 << 20;

class WholeFileTest : public testing::Test {
  protected:
    std::string content(const std::string& name) const {
        std::string text;
        EXPECT_EQ(read_whole_file(sandbox_.file(name), kNoLimit, &text), 0) << name;
        return text;
    }
    mode_t mode(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(stat(sandbox_.file(name).c_str(), &status), 0) << name;
        return status.st_mode & 07777;
    }
    long entries() const {
        return std::distance(std::filesystem::directory_iterator(sandbox_.path()), {});
    }

    Sandbox sandbox_;
    const std::string file_ = sandbox_.file("file");
    const std::string old_ = "what was there before";
    const std::string new_ = std::string(100000, 'n');
};

TEST_F(WholeFileTest, AFailureLeavesTheOldFileAndNothingBesideIt) {
    const std::vector<Fault> faults[] = {{{"open", 1, ENOSPC}},
                                         {{"access", 1, EACCES}},
                                         {{"write", 1, ENOSPC}},
                                         {{"write", 1, kShort}, {"write", 2, ENOSPC}},
                                         {{"write", 1, kShort}, {"write", 2, EIO}},
                                         {{"fsync", 1, EIO}},
                                         {{"close", 1, EDQUOT}},
                                         {{"rename", 1, EIO}},
                                         {{"fchmod", 1, EPERM}}};
    for (const std::vector<Fault>& row : faults) {
        sandbox_.write("file", old_);
        {
            const Faults holding(row);
            EXPECT_EQ(write_whole_file(file_, new_), -1) << row.back().call;
            EXPECT_EQ(errno, row.back().error) << row.back().call;
        }
        EXPECT_EQ(content("file"), old_) << row.back().call;
        EXPECT_EQ(entries(), 1) << row.back().call;
    }
}

TEST_F(WholeFileTest, WhatIsNoFailureIsGoneThrough) {
    const std::vector<Fault> faults[] = {{{"write", 1, EINTR}},
                                         {{"write", 1, kShort}},
                                         {{"close", 1, EINTR}},
                                         {{"fchown", 1, EPERM}}};
    for (const std::vector<Fault>& row : faults) {
        sandbox_.write("file", old_);
        const Faults holding(row);
        EXPECT_EQ(write_whole_file(file_, new_), 0) << row.back().call;
        EXPECT_EQ(content("file"), new_) << row.back().call;
    }
}

TEST_F(WholeFileTest, AKillBetweenAnyTwoCallsLeavesTheOldFileOrTheNewOne) {
    int killed = 0;
    for (bool ended = false; !ended; ++killed) {
        sandbox_.write("file", old_);
        const pid_t child = fork();
        if (child == 0) {
            const Faults faults({{"*", killed + 1, kDie}});
            _exit(write_whole_file(file_, new_) == 0 ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 1);
        ended = WEXITSTATUS(status) == 0;
        const std::string found = content("file");
        EXPECT_TRUE(found == new_ || (found == old_ && !ended)) << "killed before call " << killed;
    }
    EXPECT_GE(killed, 6);  // open, write, fsync, close, rename and the end at least
}

TEST_F(WholeFileTest, WhereTheFolderTakesNoTemporaryTheFileIsWrittenInPlace) {
    for (const int refusal : {EACCES, EROFS, EPERM}) {
        for (const std::string& text : {std::string("short"), new_}) {
            sandbox_.write("file", old_);
            const Faults faults({{"open", 1, refusal}});
            EXPECT_EQ(write_whole_file(file_, text), 0);
            EXPECT_EQ(faults.calls("rename"), 0);
            EXPECT_EQ(content("file"), text);
        }
    }
    const Faults faults({{"open", 1, EACCES}, {"close", 1, EDQUOT}});
    EXPECT_EQ(write_whole_file(file_, new_), -1);
    EXPECT_EQ(errno, EDQUOT);
}

TEST_F(WholeFileTest, TheModeStaysAndLinksStayLinks) {
    sandbox_.mkdir("real");
    sandbox_.write("real/file", old_);
    ASSERT_EQ(chmod(sandbox_.file("real/file").c_str(), 0640), 0);
    sandbox_.link("real/file", "first");
    sandbox_.link(sandbox_.file("first"), "second");
    sandbox_.link("real/absent", "dangling");
    for (const char* name : {"second", "dangling"}) {
        EXPECT_EQ(write_whole_file(sandbox_.file(name), new_), 0) << name;
        EXPECT_TRUE(std::filesystem::is_symlink(sandbox_.file(name))) << name;
        EXPECT_EQ(content(name), new_);
    }
    EXPECT_EQ(content("real/file"), new_);
    EXPECT_EQ(content("real/absent"), new_);
    EXPECT_EQ(mode("real/file"), 0640U);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(mode("real/absent"), 0666U & ~mask);
}

TEST_F(WholeFileTest, WhatIsNoFileIsNotReplacedByOne) {
    sandbox_.link("loop", "loop");
    const std::pair<std::string, int> cases[] = {{sandbox_.file("loop"), ELOOP},
                                                 {sandbox_.path(), EISDIR},
                                                 {sandbox_.file("absent/file"), ENOENT},
                                                 {"", ENOENT}};
    for (const auto& [path, error] : cases) {
        EXPECT_EQ(write_whole_file(path, new_), -1) << path;
        EXPECT_EQ(errno, error) << path;
    }
    sandbox_.link("/dev/null", "null");
    EXPECT_EQ(write_whole_file(sandbox_.file("null"), new_), 0);
    EXPECT_TRUE(std::filesystem::is_character_file(sandbox_.file("null")));
}

TEST_F(WholeFileTest, ReadingStopsAtTheLimitAndAtWhatIsNoFile) {
    sandbox_.write("file", new_);
    ASSERT_EQ(mkfifo(sandbox_.file("fifo").c_str(), 0600), 0);
    std::string text;
    EXPECT_EQ(read_whole_file(file_, 70000, &text), 0);
    EXPECT_EQ(text.size(), 70000U);
    const std::pair<const char*, int> cases[] = {
        {"fifo", EINVAL}, {"", EISDIR}, {"absent", ENOENT}};
    for (const auto& [name, error] : cases) {
        EXPECT_EQ(read_whole_file(sandbox_.file(name), kNoLimit, &text), -1) << name;
        EXPECT_EQ(errno, error) << name;
        EXPECT_EQ(text, "") << name;
    }
    const Faults faults({{"read", 1, EINTR}, {"read", 3, EIO}});
    EXPECT_EQ(read_whole_file(file_, kNoLimit, &text), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace dorn
