#include "platform/whole_file.h"

#include "support/faults.h"
#include "support/sandbox.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace dorn;
namespace fs = std::filesystem;

namespace {

class WholeFileTest : public testing::Test {
  protected:
    Sandbox sandbox_;
    const std::string file_ = sandbox_.file("file");
    const std::string old_ = "what was there before";
    const std::string new_ = std::string(100000, 'n');
};

TEST_F(WholeFileTest, AFailureLeavesTheOldFileAndNothingBesideIt) {
    const std::pair<std::vector<Fault>, int> rows[] = {
        {{{"open", 1, ENOSPC}}, ENOSPC},  {{{"access", 1, EACCES}}, EACCES},
        {{{"write", 1, ENOSPC}}, ENOSPC}, {{{"write", 1, kShort}, {"write", 2, EIO}}, EIO},
        {{{"fsync", 1, EIO}}, EIO},       {{{"close", 1, EDQUOT}}, EDQUOT},
        {{{"rename", 1, EIO}}, EIO},      {{{"fchmod", 1, EPERM}}, EPERM},
        {{{"write", 1, EINTR}}, 0},       {{{"write", 1, kShort}}, 0},
        {{{"close", 1, EINTR}}, 0},       {{{"fchown", 1, EPERM}}, 0},
    };
    for (const auto& [faults, error] : rows) {
        SCOPED_TRACE(faults.back().call + " " + std::to_string(faults.back().error));
        sandbox_.write("file", old_);
        {
            const Faults holding(faults);
            EXPECT_EQ(write_whole_file(file_, new_), error == 0 ? 0 : -1);
            EXPECT_TRUE(error == 0 || errno == error) << errno;
        }
        EXPECT_EQ(sandbox_.read("file"), error == 0 ? new_ : old_);
        EXPECT_EQ(std::distance(fs::directory_iterator(sandbox_.path()), {}), 1);
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
        const std::string found = sandbox_.read("file");
        EXPECT_TRUE(found == new_ || (found == old_ && !ended)) << "killed before call " << killed;
    }
    EXPECT_GE(killed, 6);  // open, write, fsync, close, rename and the end at least
}

TEST_F(WholeFileTest, WhereTheFolderTakesNoTemporaryTheFileIsWrittenInPlace) {
    for (const int refusal : {EACCES, EROFS, EPERM}) {
        for (const std::string& text : {std::string("short"), new_}) {
            sandbox_.write("file", old_);
            const Faults faults({{"open", 1, refusal}, {"rename", 0, EIO}});
            EXPECT_EQ(write_whole_file(file_, text), 0);
            EXPECT_EQ(sandbox_.read("file"), text);
        }
    }
    const Faults faults({{"open", 1, EACCES}, {"close", 1, EDQUOT}});
    EXPECT_EQ(write_whole_file(file_, new_), -1);
    EXPECT_EQ(errno, EDQUOT);
}

TEST_F(WholeFileTest, TheModeStaysAndLinksStayLinks) {
    sandbox_.mkdir("real");
    sandbox_.write("real/file", old_);
    fs::permissions(sandbox_.file("real/file"), fs::perms(0640));
    sandbox_.link("real/file", "first");
    sandbox_.link(sandbox_.file("first"), "second");
    sandbox_.link("real/absent", "dangling");
    const mode_t mask = umask(027);
    for (const auto& [name, real] :
         {std::pair("second", "real/file"), {"dangling", "real/absent"}}) {
        EXPECT_EQ(write_whole_file(sandbox_.file(name), new_), 0) << name;
        EXPECT_TRUE(fs::is_symlink(sandbox_.file(name))) << name;
        EXPECT_EQ(sandbox_.read(real), new_);
        EXPECT_EQ(fs::status(sandbox_.file(real)).permissions(), fs::perms(0640)) << name;
    }
    umask(mask);
}

TEST_F(WholeFileTest, WhatIsNoFileIsNotReplacedByOne) {
    sandbox_.link("loop", "loop");
    const std::pair<std::string, int> rows[] = {{sandbox_.file("loop"), ELOOP},
                                                {sandbox_.path(), EISDIR},
                                                {sandbox_.file("absent/file"), ENOENT},
                                                {"", ENOENT}};
    for (const auto& [path, error] : rows) {
        EXPECT_EQ(write_whole_file(path, new_), -1) << path;
        EXPECT_EQ(errno, error) << path;
    }
    sandbox_.link("/dev/null", "null");
    EXPECT_EQ(write_whole_file(sandbox_.file("null"), new_), 0);
    EXPECT_TRUE(fs::is_character_file(sandbox_.file("null")));
}

TEST_F(WholeFileTest, ReadingStopsAtTheLimitAndAtWhatIsNoFile) {
    sandbox_.write("file", new_);
    ASSERT_EQ(mkfifo(sandbox_.file("fifo").c_str(), 0600), 0);
    std::string text;
    EXPECT_EQ(read_whole_file(file_, 70000, &text), 0);
    EXPECT_EQ(text.size(), 70000U);
    const Faults faults({{"read", 1, EINTR}, {"read", 3, EIO}});
    for (const auto& [name, error] :
         {std::pair("fifo", EINVAL), {"", EISDIR}, {"absent", ENOENT}, {"file", EIO}}) {
        text = "before";
        EXPECT_EQ(read_whole_file(sandbox_.file(name), 1 << 20, &text), -1) << name;
        EXPECT_EQ(errno, error) << name;
        EXPECT_EQ(text, "") << name;
    }
}

}  // namespace
