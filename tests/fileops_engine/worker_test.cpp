// What copies, moves and deletes leave on the disk, and what they ask on the way there.
#include "support/headless_screen.h"
#include "support/operation.h"
#include "support/sandbox.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace dorn {
namespace {

namespace fs = std::filesystem;
using Answers = std::vector<int>;
using Texts = std::vector<std::string>;

/// Puts entries into a directory as a Tree tells them.
void make_tree(const Sandbox& sandbox, const std::string& directory, const Tree& tree) {
    sandbox.mkdir(directory);
    for (const auto& [name, text] : tree) {
        const std::string path = directory + "/" + name;
        if (text == "d") sandbox.mkdir(path);
        if (text == "p") mkfifo(sandbox.file(path).c_str(), 0644);
        if (text[0] == 'l') sandbox.link(text.substr(1), path);
        if (text[0] == 'f') sandbox.write(path, text.substr(1));
    }
}

struct Row {
    const char* what;
    int32_t kind;
    Tree from;
    Texts chosen;
    Tree to;
    Answers answers;
    Texts asked;  // title and message, "@" for the sandbox
    Tree from_after;
    Tree to_after;
    uint32_t flags = 0;
    const char* destination = "to";
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.what;
}

std::string with_sandbox(std::string text, const Sandbox& sandbox) {
    const std::size_t at = text.find('@');
    return at == std::string::npos ? text : text.replace(at, 1, sandbox.path());
}

class WorkerTest : public testing::TestWithParam<Row> {
  protected:
    void SetUp() override {
        headless::reset();
        gDonePause = 0;
    }

    Texts asked() const {
        Texts texts;
        for (const headless::Alert& alert : headless::alerts())
            texts.push_back(alert.title + ": " + alert.message);
        return texts;
    }

    Sandbox sandbox_;
};

TEST_P(WorkerTest, LeavesWhatIsLaidDownAndAsksOnce) {
    const Row& row = GetParam();
    make_tree(sandbox_, "from", row.from);
    make_tree(sandbox_, "to", row.to);
    headless::answer(row.answers);
    run_operation(
        {row.kind, sandbox_.file("from"), row.chosen, sandbox_.file(row.destination), row.flags});
    Texts expected;
    for (const std::string& text : row.asked)
        expected.push_back(with_sandbox(text, sandbox_));
    EXPECT_EQ(asked(), expected);
    EXPECT_EQ(tree_of(sandbox_.file("from")), row.from_after);
    EXPECT_EQ(tree_of(sandbox_.file("to")), row.to_after);
}

const char* const kExists = "Copy/Move: The '@/to/a' file exists.\nWhat do you want to do ?\n";
const char* const kMoveExists = "Move: The '@/to/a' file exists.\nWhat do you want to do ?\n";
const char* const kLinks =
    "Copy: Symbolic links detected in the file list\nWhat do you want to copy ?";
const char* const kMakeOther =
    "Make Directory: The '@/other' directory doesn't exist\n"
    "Do you want to create this directory ?";
const Tree kTwo = {{"a", "f1"}, {"b", "f2"}};
const Tree kOld = {{"a", "fold"}, {"b", "fold"}};
const Tree kDeep = {{"d", "d"}, {"d/e", "d"}, {"d/e/f", "fx"}, {"d/g", "fy"}};

const Row kCopies[] = {
    {"files and a tree", kFopCopy, kDeep, {"d"}, {}, {}, {}, kDeep, kDeep},
    {"hostile names",
     kFopCopy,
     {{"-rf", "fx"}, {"%s%n", "fy"}, {"\xff\n'\"", "fz"}},
     {"-rf", "%s%n", "\xff\n'\""},
     {},
     {},
     {},
     {{"-rf", "fx"}, {"%s%n", "fy"}, {"\xff\n'\"", "fz"}},
     {{"-rf", "fx"}, {"%s%n", "fy"}, {"\xff\n'\"", "fz"}}},
    {"Skip",
     kFopCopy,
     kTwo,
     {"a", "b"},
     {{"a", "fold"}},
     {1},
     {kExists},
     kTwo,
     {{"a", "fold"}, {"b", "f2"}}},
    {"Overwrite", kFopCopy, kTwo, {"a", "b"}, {{"a", "fold"}}, {2}, {kExists}, kTwo, kTwo},
    {"Overwrite All", kFopCopy, kTwo, {"a", "b"}, kOld, {3}, {kExists}, kTwo, kTwo},
    {"Abort", kFopCopy, kTwo, {"a", "b"}, kOld, {4}, {kExists}, kTwo, kOld},
    {"overwriting unasked", kFopCopy, kTwo, {"a", "b"}, kOld, {}, {}, kTwo, kTwo, kFopOverwriteAll},
    {"a directory where a file is",
     kFopCopy,
     kDeep,
     {"d"},
     {{"d", "fold"}},
     {1},
     {"Copy/Move: The '@/to/d' is not a directory\n"},
     kDeep,
     {{"d", "fold"}}},
    {"a file where a directory is",
     kFopCopy,
     {{"a", "f1"}},
     {"a"},
     {{"a", "d"}},
     {2, 1},
     {kExists, "Copy/Move: Error writing '@/to/a'\nIs a directory\n"},
     {{"a", "f1"}},
     {{"a", "d"}}},
    {"a file where a FIFO is",
     kFopCopy,
     {{"a", "f1"}},
     {"a"},
     {{"a", "p"}},
     {2, 1},
     {kExists, "Copy/Move: Error writing '@/to/a'\nOperation not supported\n"},
     {{"a", "f1"}},
     {{"a", "p"}}},
    {"a FIFO where a file is",
     kFopCopy,
     {{"a", "p"}},
     {"a"},
     {{"a", "fold"}},
     {1},
     {"Copy/Move: The '@/to/a' is not a FIFO\n"},
     {{"a", "p"}},
     {{"a", "fold"}}},
    {"a FIFO where one is",
     kFopCopy,
     {{"a", "p"}},
     {"a"},
     {{"a", "p"}},
     {},
     {},
     {{"a", "p"}},
     {{"a", "p"}}},
    {"through a link to a file",
     kFopCopy,
     {{"a", "f1"}},
     {"a"},
     {{"a", "lb"}, {"b", "fold"}},
     {2},
     {kExists},
     {{"a", "f1"}},
     {{"a", "lb"}, {"b", "f1"}}},
    {"into a link to a directory",
     kFopCopy,
     kDeep,
     {"d"},
     {{"d", "lreal"}, {"real", "d"}},
     {},
     {},
     kDeep,
     {{"d", "lreal"}, {"real", "d"}, {"real/e", "d"}, {"real/e/f", "fx"}, {"real/g", "fy"}}},
    {"links, asked once",
     kFopCopy,
     {{"l", "lnowhere"}, {"m", "l."}},
     {"l", "m"},
     {},
     {2},
     {kLinks},
     {{"l", "lnowhere"}, {"m", "l."}},
     {{"l", "lnowhere"}, {"m", "l."}}},
    {"links, aborted",
     kFopCopy,
     {{"l", "lnowhere"}},
     {"l"},
     {},
     {3},
     {kLinks},
     {{"l", "lnowhere"}},
     {}},
    {"links, followed",
     kFopCopy,
     {{"d", "d"}, {"d/a", "f1"}, {"l", "ld"}, {"m", "lnowhere"}},
     {"l", "m"},
     {},
     {1, 1},
     {kLinks, "File Scan: Unable to stat '@/from/m'\nNo such file or directory\n"},
     {{"d", "d"}, {"d/a", "f1"}, {"l", "ld"}, {"m", "lnowhere"}},
     {{"l", "d"}, {"l/a", "f1"}}},
    {"a link that leads back",
     kFopCopy,
     {{"d", "d"}, {"d/a", "f1"}, {"d/up", "l../.."}},
     {"d"},
     {},
     {1},
     {"Dir Reading: Unable to open '@/from/d/up' directory\n"
      "Too many levels of symbolic links\n"},
     {{"d", "d"}, {"d/a", "f1"}, {"d/up", "l../.."}},
     {{"d", "d"}, {"d/a", "f1"}},
     kFopLinksAsFiles},
    {"a link over the file that it leads to",
     kFopCopy,
     {{"d", "d"}, {"d/l", "l../../to/d/l"}},
     {"d"},
     {{"d", "d"}, {"d/l", "fold"}},
     {},
     {"File Scan: Can't copy file(s) into itself."},
     {{"d", "d"}, {"d/l", "l../../to/d/l"}},
     {{"d", "d"}, {"d/l", "fold"}},
     kFopLinksAsLinks},
    {"one file to a path",
     kFopCopy,
     {{"a", "f1"}},
     {"a"},
     {},
     {},
     {},
     {{"a", "f1"}},
     {{"named", "f1"}},
     0,
     "to/named"},
    {"one directory to a path",
     kFopCopy,
     kDeep,
     {"d"},
     {},
     {},
     {},
     kDeep,
     {{"n", "d"}, {"n/e", "d"}, {"n/e/f", "fx"}, {"n/g", "fy"}},
     0,
     "to/n/"},
    {"one directory to no place",
     kFopCopy,
     kDeep,
     {"d"},
     {},
     {},
     {"Make Directory: Unable to create '@/to/x/y' directory\n"},
     kDeep,
     {},
     0,
     "to/x/y"},
    {"types that differ",
     kFopCopy,
     kDeep,
     {"d"},
     {{"a", "fold"}},
     {},
     {"File Scan: Source and destination file types mismatch."},
     kDeep,
     {{"a", "fold"}},
     0,
     "to/a"},
    {"what is gone",
     kFopCopy,
     {},
     {"a"},
     {},
     {},
     {"File Scan: Unable to get stats for '@/from/a'"},
     {},
     {}},
    {"several to a file",
     kFopCopy,
     kTwo,
     {"a", "b"},
     {{"a", "fold"}},
     {},
     {"File Scan: Can't copy/move multiple files into \n'@/to/a'\n"},
     kTwo,
     {{"a", "fold"}},
     0,
     "to/a"},
    {"several to nothing, refused",
     kFopCopy,
     kTwo,
     {"a", "b"},
     {},
     {2},
     {kMakeOther},
     kTwo,
     {},
     0,
     "other"},
};
INSTANTIATE_TEST_SUITE_P(Copy, WorkerTest, testing::ValuesIn(kCopies));

const Row kMoves[] = {
    {"a tree", kFopMove, kDeep, {"d"}, {}, {}, {}, {}, kDeep},
    {"Skip, which answers for the next",
     kFopMove,
     kTwo,
     {"a", "b"},
     kOld,
     {1},
     {kMoveExists},
     {{"a", "f1"}},
     {{"a", "fold"}, {"b", "f2"}}},
    {"Abort", kFopMove, kTwo, {"a", "b"}, kOld, {4}, {kMoveExists}, kTwo, kOld},
    {"merging",
     kFopMove,
     kDeep,
     {"d"},
     {{"d", "d"}, {"d/g", "fold"}, {"d/h", "fold"}},
     {2, 1},
     {"Move: The '@/to/d' file exists.\nWhat do you want to do ?\n",
      "Copy/Move: The '@/to/d/g' file exists.\nWhat do you want to do ?\n"},
     {{"d", "d"}, {"d/g", "fy"}},
     {{"d", "d"}, {"d/e", "d"}, {"d/e/f", "fx"}, {"d/g", "fold"}, {"d/h", "fold"}}},
    {"a dangling link", kFopMove, {{"l", "lnowhere"}}, {"l"}, {}, {}, {}, {}, {{"l", "lnowhere"}}},
    {"a link over the file that it leads to",
     kFopMove,
     {{"l", "l../to/l"}},
     {"l"},
     {{"l", "fold"}},
     {},
     {"File Scan: Can't move file(s) into itself."},
     {{"l", "l../to/l"}},
     {{"l", "fold"}}},
    {"into itself",
     kFopMove,
     kTwo,
     {"a", "b"},
     {},
     {},
     {"File Scan: Can't move file(s) into itself."},
     kTwo,
     {},
     0,
     "from"},
};
INSTANTIATE_TEST_SUITE_P(Move, WorkerTest, testing::ValuesIn(kMoves));

const char* const kFileA = "Delete: File '@/from/a'\n";
const char* const kFileB = "Delete: File '@/from/b'\n";
const Row kDeletes[] = {
    {"a tree", kFopDelete, kDeep, {"d"}, {}, {}, {}, {}, {}},
    {"links, never followed",
     kFopDelete,
     {{"l", "l../to"}, {"m", "lnowhere"}},
     {"l", "m"},
     {{"a", "f1"}},
     {},
     {},
     {},
     {{"a", "f1"}}},
    {"Skip and Delete, from the last",
     kFopDelete,
     kTwo,
     {"a", "b"},
     {},
     {1, 2},
     {kFileB, kFileA},
     {{"b", "f2"}},
     {},
     kFopAskEach},
    {"Delete all", kFopDelete, kTwo, {"a", "b"}, {}, {3}, {kFileB}, {}, {}, kFopAskEach},
    {"Abort", kFopDelete, kTwo, {"a", "b"}, {}, {4}, {kFileB}, kTwo, {}, kFopAskEach},
    {"Skip, and what holds it",
     kFopDelete,
     {{"d", "d"}, {"d/a", "f1"}},
     {"d"},
     {},
     {1},
     {"Delete: File '@/from/d/a'\n"},
     {{"d", "d"}, {"d/a", "f1"}},
     {},
     kFopAskEach},
    {"what is gone",
     kFopDelete,
     {{"b", "f2"}},
     {"a", "b"},
     {},
     {1},
     {"File Scan: Unable to stat '@/from/a'\nNo such file or directory\n"},
     {},
     {}},
};
INSTANTIATE_TEST_SUITE_P(Delete, WorkerTest, testing::ValuesIn(kDeletes));

using WorkerOrderTest = WorkerTest;

TEST_F(WorkerOrderTest, WhatAppearsInADirectoryWhileItIsDeletedIsAskedAboutOnce) {
    make_tree(sandbox_, "from", {{"d", "d"}, {"d/e", "d"}, {"d/e/a", "f1"}});
    headless::on_alert([&](const headless::Alert& alert) {
        const bool is_first = alert.message.find("/a'") != std::string::npos;
        if (is_first) sandbox_.write("from/d/e/new", "2");
        headless::answer({is_first ? 3 : 1});
    });
    run_operation({kFopDelete, sandbox_.file("from"), {"d"}, "", kFopAskEach});
    ASSERT_EQ(asked().size(), 2U);
    EXPECT_EQ(asked()[1], "Delete: Unable to delete '" + sandbox_.file("from/d/e") +
                              "'\nDirectory not empty\n");
    EXPECT_EQ(tree_of(sandbox_.file("from/d")), (Tree{{"e", "d"}, {"e/new", "f2"}}));
}

TEST_F(WorkerOrderTest, WhatDoneReachesTheCallbackForAndTheSlotShows) {
    static Texts sDone;
    sDone.clear();
    make_tree(sandbox_, "from", kDeep);
    run_operation({kFopDelete,
                   sandbox_.file("from"),
                   {"d"},
                   "",
                   kFopDeleteAll,
                   [](const char* directory, const char* name) {
                       sDone.push_back(fs::path(directory).filename().native() + "/" + name);
                       return 0;
                   }});
    std::ranges::sort(sDone);
    EXPECT_EQ(sDone, (Texts{"d/e", "d/g", "e/f", "from/d"}));
    EXPECT_EQ(headless::texts("slot_from_text").back(), "Done");
}

}  // namespace
}  // namespace dorn
