// Every call of a copy, a move and a delete made to fail, and the user giving up at every point.
#include "fileops/engine/fop.h"
#include "support/lossless_test.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dorn {
namespace {

namespace fs = std::filesystem;

const struct {
    const char* what;
    int32_t kind;
    std::vector<Fault> always;
} kWays[] = {{"copy", kFopCopy, {}},
             {"move by renaming", kFopMove, {}},
             {"move to another file system", kFopMove, kOtherFileSystem},
             {"delete", kFopDelete, {}}};

// Under a sanitizer, which makes each run several times as long, not each call is made to fail.
#if defined(__SANITIZE_THREAD__)
constexpr int kStride = 7;
#elif defined(__SANITIZE_ADDRESS__)
constexpr int kStride = 2;
#else
constexpr int kStride = 1;
#endif

class NothingLostTest : public LosslessTest, public testing::WithParamInterface<int> {
  protected:
    NothingLostTest() {
        // After its first rename a move follows the links that can't be renamed.
        if (GetParam() == 1) names_ = {"a", "dir", "empty", "fifo"};
    }

    // The faults of the way, and one more.
    std::vector<Fault> with(Fault one) const {
        std::vector<Fault> faults = always_;
        faults.push_back(std::move(one));
        return faults;
    }

    // Runs the operation with that fault at its first call, and so on to its last.
    void at_every_call(Fault fault, const Labels& answers, const Labels& unlike = {},
                       int stride = 1) {
        bool was_reached = true;
        for (fault.nth = 1; was_reached && !HasFailure(); fault.nth += stride * kStride) {
            SCOPED_TRACE(what_ + ", call " + std::to_string(fault.nth));
            make_trees();
            put_.clear();
            run(kind_, with(fault), answers, unlike);
            if (!put_.empty() && kind_ != kFopDelete) {
                EXPECT_TRUE(holds(from_, unlike[0], put_) || holds(to_, unlike[0], put_))
                    << "what somebody put in the place of " << unlike[0] << " is lost";
            }
            was_reached = calls_ >= fault.nth;
        }
        EXPECT_TRUE(fault.nth > 10 || HasFailure());
    }

    // Takes what is there out of the way.
    void replace(const std::string& path) const {
        fs::remove_all(sandbox_.file("aside"));
        fs::rename(path, sandbox_.file("aside"));
    }

    const std::string what_ = kWays[GetParam()].what;
    const int32_t kind_ = kWays[GetParam()].kind;
    const std::vector<Fault> always_ = kWays[GetParam()].always;
    std::string put_;  // as in a Tree
};

TEST_P(NothingLostTest, AnErrorOfAnyCallThatTheUserContinuesPast) {
    at_every_call({"*", 0, EIO}, {"Continue", "Skip", "Ignore"});
}

TEST_P(NothingLostTest, AnErrorOfAnyCallThatTheUserAbortsAt) {
    at_every_call({"*", 0, EACCES}, {"Abort", "aBort"});
}

TEST_P(NothingLostTest, AFullDiskAtAnyCallThatTheUserTriesAgain) {
    at_every_call({"*", 0, ENOSPC}, {"Retry", "Continue"});
}

TEST_P(NothingLostTest, ACancelBeforeAnyCall) {
    at_every_call({"*", 0, 0, "", [] { running_operation()->cancelled = 1; }}, {});
}

TEST_P(NothingLostTest, AnInterruptedOrShortCallIsNoError) {
    for (const char* call : {"read", "write", "getdents64"}) {
        for (const int error : {EINTR, kShort}) {
            SCOPED_TRACE(what_ + ", " + call);
            make_trees();
            run(kind_, with({call, 1, error}), {});
            EXPECT_EQ(asked_, Labels{});
            EXPECT_EQ(to_.count("dir/big"), kind_ == kFopDelete ? 0U : 1U);
        }
    }
}

TEST_P(NothingLostTest, AKillBeforeAnyCallLeavesWholeSourcesAndWhatWasFinished) {
    if (kind_ == kFopDelete) return;
    bool ended = false;
    for (int nth = 1; !ended; nth += nth / 20 + kStride) {
        make_trees();
        const Tree before = tree_of(from());
        const pid_t child = fork();
        if (child == 0) {
            const Faults dying(with({"*", nth, kDie}));
            run_operation(request(kind_));
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ended = WEXITSTATUS(status) == 0;
        const Tree source = tree_of(from());
        const Tree target = tree_of(to());
        for (const auto& [name, text] : before)
            EXPECT_TRUE(holds(source, name, text) || holds(target, name, text))
                << name << " is lost at call " << nth << " of a " << what_;
    }
}

TEST_P(NothingLostTest, WhateverSomebodyElseDoesToASourceMeanwhile) {
    const std::string big = from("dir/big");
    const struct {
        const char* what;
        const char* name;
        std::function<void()> change;
    } rows[] = {
        {"grows", "dir/big", [&] { std::ofstream(big, std::ios::app) << "more"; }},
        {"shrinks", "dir/big", [&] { truncate(big.c_str(), 10); }},
        {"vanishes", "dir/big", [&] { fs::remove(big); }},
        {"becomes a link", "dir/big",
         [&] { replace(big), fs::create_symlink("../../else/kept", big); }},
        {"becomes a FIFO", "dir/big", [&] { replace(big), mkfifo(big.c_str(), 0600); }},
        {"becomes a directory", "dir/big", [&] { replace(big), fs::create_directory(big); }},
        {"becomes another file", "dir/big", [&] { replace(big), std::ofstream(big) << "newer"; }},
        {"becomes a link", "dir/sub",
         [&] { replace(from("dir/sub")), sandbox_.link("../../else", "from/dir/sub"); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " " + row.what);
        const auto change = [&] {
            if (!fs::exists(from(row.name))) return;
            row.change();
            const Tree changed = tree_of(from());
            if (changed.count(row.name) != 0) put_ = changed.at(row.name);
        };
        // Between the last look at a source and its removal there is a moment that nothing closes.
        at_every_call({"!unlinkat", 0, 0, "", change}, {"Continue"}, {row.name}, 3);
    }
}

TEST_P(NothingLostTest, WhateverBecomesOfTheDestinationMeanwhile) {
    const std::string dir = to("dir");
    const auto vanish = [&] { fs::remove_all(dir); };
    const auto lead_away = [&] {
        if (fs::exists(dir)) replace(dir), sandbox_.link("../else", "to/dir");
    };
    for (const std::function<void()>& change : {std::function<void()>(vanish), {lead_away}})
        at_every_call({"*", 0, 0, "", change}, {"Continue"}, {"dir"}, 2);
}

TEST_P(NothingLostTest, WhatAppearsAtTheDestinationMeanwhileIsNotOverwrittenUnasked) {
    for (const std::string name : {"a", "dir/big"}) {
        const auto appear = [&] {
            if (fs::exists(to(name)) || !fs::exists(fs::path(to(name)).parent_path())) return;
            sandbox_.write("to/" + name, "newer");
            put_ = "=newer";
        };
        at_every_call({"*", 0, 0, "", appear}, {"Skip"}, {name}, 2);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWay, NothingLostTest, testing::Range(0, 4));

class FailingBlockTest : public LosslessTest {};

TEST_F(FailingBlockTest, IsAskedAboutAndLeavesAWholeFileOrNone) {
    const struct {
        const char* call;
        int nth;
        int error;
        const char* answer;  // to the first question
        const char* then;
        bool copied;        // the file that it hits
        bool goes_on;       // with the files after it
        std::size_t asked;  // questions
    } rows[] = {
        {"write", 1, ENOSPC, "Retry", "", true, true, 1},
        {"write", 4, ENOSPC, "Retry", "", true, true, 1},
        {"write", 4, ENOSPC, "Skip", "Continue", false, true, 2},
        {"write", 2, ENOSPC, "Skip", "Abort", false, false, 2},
        {"write", 2, EIO, "Abort", "", false, false, 1},
        {"write", 4, EIO, "Continue", "", false, true, 1},
        {"read", 1, EIO, "Continue", "", false, true, 1},
        {"read", 3, EIO, "Abort", "", false, false, 1},
        {"close", 0, EIO, "Continue", "", false, true, 1},
        {"close", 0, EDQUOT, "Abort", "", false, false, 1},
    };
    names_ = {"dir", "a"};
    for (const auto& [kind, overwrites] :
         {std::pair(kFopCopy, false), {kFopMove, false}, {kFopCopy, true}, {kFopMove, true}}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.call) + " " + std::to_string(row.nth) + " error " +
                         std::to_string(row.error) + " " + row.answer + " " + row.then);
            make_trees();
            if (overwrites) {
                sandbox_.mkdir("to/dir");
                sandbox_.write("to/dir/big", "old");
            }
            std::vector<Fault> faults = kOtherFileSystem;
            faults.push_back({row.call, row.nth, row.error, "big"});
            run(kind, faults, {"Overwrite", row.answer, row.then});
            EXPECT_EQ(to_.count("dir/big") == 1, row.copied);
            EXPECT_EQ(to_.count("dir/sub/hard") == 1, row.goes_on);
            std::erase_if(asked_,
                          [](const auto& text) { return text.find("exists") != text.npos; });
            EXPECT_EQ(asked_.size(), row.asked);
            EXPECT_EQ(from_.count("dir/big") == 0, row.copied && kind == kFopMove);
        }
    }
}

}  // namespace
}  // namespace dorn
