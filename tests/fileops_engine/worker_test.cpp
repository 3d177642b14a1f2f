// What copies, moves and deletes leave on the disk, and what they ask on the way there.
#include "support/headless_screen.h"
#include "support/operation.h"
#include "support/sandbox.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <sys/stat.h>

namespace dorn {
namespace {

using Words = std::vector<std::string>;

Words words_of(const std::string& text) {
    std::istringstream stream(text);
    Words words;
    for (std::string word; std::getline(stream, word, ' ');)
        words.push_back(word);
    return words;
}

// Trees are told in words: "directory/", "fifo|", "link>target" and "file=content".
void make_tree(const Sandbox& sandbox, const std::string& directory, const std::string& tree) {
    sandbox.mkdir(directory);
    for (const std::string& word : words_of(tree)) {
        const std::size_t mark = word.find_first_of("|>=");
        const std::string name = directory + "/" + word.substr(0, mark);
        if (mark == std::string::npos)
            sandbox.mkdir(name);
        else if (word[mark] == '|')
            mkfifo(sandbox.file(name).c_str(), 0644);
        else if (word[mark] == '>')
            sandbox.link(word.substr(mark + 1), name);
        else
            sandbox.write(name, word.substr(mark + 1));
    }
}

std::string told(const std::string& directory) {
    std::string text;
    for (const auto& [name, what] : tree_of(directory))
        text += (text.empty() ? "" : " ") + name + what;
    return text;
}

// The questions asked, the sandbox's path as "@".
std::string asked(const Sandbox& sandbox) {
    std::string text;
    for (const headless::Alert& alert : gScreen.alerts)
        text += alert.title + ": " + alert.message;
    for (std::size_t at; (at = text.find(sandbox.path())) != std::string::npos;)
        text.replace(at, std::strlen(sandbox.path()), "@");
    return text;
}

const std::string kWhat = " file exists.\nWhat do you want to do ?\n";
const std::string kExists = "Copy/Move: The '@/to/a'" + kWhat;
const std::string kMoveExists = "Move: The '@/to/a'" + kWhat;
const std::string kLinks =
    "Copy: Symbolic links detected in the file list\nWhat do you want to copy ?";
const std::string kNoMove = "File Scan: Can't move file(s) into itself.";
const std::string kDeleteA = "Delete: File '@/from/a'\n";
const std::string kDeleteB = "Delete: File '@/from/b'\n";
const char* const kTwo = "a=1 b=2";
const char* const kOld = "a=old b=old";
const char* const kDeep = "d/ d/e/ d/e/f=x d/g=y";
const char* const kHostile = "%s%n=y -rf=x \xff\n'\"=z";
const char* const kSame = "as before";

const struct {
    const char* what;
    int32_t kind;
    std::string from, chosen, to;
    std::string answers;  // the buttons' numbers
    std::string asked, to_after;
    std::string from_after = kSame;
    uint32_t flags = 0;
    const char* destination = "to";
} kRows[] = {
    {"a tree", kFopCopy, kDeep, "d", "", "", "", kDeep},
    {"hostile names", kFopCopy, kHostile, "-rf %s%n \xff\n'\"", "", "", "", kHostile},
    {"Skip", kFopCopy, kTwo, "a b", "a=old", "1", kExists, "a=old b=2"},
    {"Overwrite", kFopCopy, kTwo, "a b", "a=old", "2", kExists, kTwo},
    {"Overwrite All", kFopCopy, kTwo, "a b", kOld, "3", kExists, kTwo},
    {"Abort", kFopCopy, kTwo, "a b", kOld, "4", kExists, kSame},
    {"the escape button", kFopCopy, kTwo, "a b", kOld, "", kExists, kSame},
    {"a directory where a file is", kFopCopy, kDeep, "d", "d=old", "1",
     "Copy/Move: The '@/to/d' is not a directory\n", kSame},
    {"a file where a directory is", kFopCopy, "a=1", "a", "a/", "21",
     kExists + "Copy/Move: Error writing '@/to/a'\nIs a directory\n", kSame},
    {"a file where a FIFO is", kFopCopy, "a=1", "a", "a|", "21",
     kExists + "Copy/Move: Error writing '@/to/a'\nOperation not supported\n", kSame},
    {"a FIFO where a file is", kFopCopy, "a|", "a", "a=old", "1",
     "Copy/Move: The '@/to/a' is not a FIFO\n", kSame},
    {"through a link to a file", kFopCopy, "a=1", "a", "a>b b=old", "2", kExists, "a>b b=1"},
    {"into a link to a directory", kFopCopy, kDeep, "d", "d>real real/", "", "",
     "d>real real/ real/e/ real/e/f=x real/g=y"},
    {"links, asked once", kFopCopy, "l>nowhere m>.", "l m", "", "2", kLinks, "l>nowhere m>."},
    {"links, followed", kFopCopy, "d/ d/a=1 l>d m>nowhere", "l m", "", "11",
     kLinks + "File Scan: Unable to stat '@/from/m'\nNo such file or directory\n", "l/ l/a=1"},
    {"a link that leads back", kFopCopy, "d/ d/a=1 d/up>../..", "d", "", "1",
     "Dir Reading: Unable to open '@/from/d/up' directory\nToo many levels of symbolic links\n",
     "d/ d/a=1", kSame, kFopLinksAsFiles},
    {"a link over the file that it leads to", kFopCopy, "d/ d/l>../../to/d/l", "d", "d/ d/l=old",
     "", "File Scan: Can't copy file(s) into itself.", kSame, kSame, kFopLinksAsLinks},
    {"one file to a path", kFopCopy, "a=1", "a", "", "", "", "named=1", kSame, 0, "to/named"},
    {"one directory to a path", kFopCopy, kDeep, "d", "", "", "", "n/ n/e/ n/e/f=x n/g=y", kSame, 0,
     "to/n/"},
    {"types that differ", kFopCopy, kDeep, "d", "a=old", "",
     "File Scan: Source and destination file types mismatch.", kSame, kSame, 0, "to/a"},
    {"what is gone", kFopCopy, "", "a", "", "", "File Scan: Unable to get stats for '@/from/a'",
     ""},
    {"several to a file", kFopCopy, kTwo, "a b", "a=old", "",
     "File Scan: Can't copy/move multiple files into \n'@/to/a'\n", kSame, kSame, 0, "to/a"},
    {"several to nothing, refused", kFopCopy, kTwo, "a b", "", "2",
     "Make Directory: The '@/other' directory doesn't exist\n"
     "Do you want to create this directory ?",
     "", kSame, 0, "other"},
    {"several to nothing, made", kFopMove, kTwo, "a b", "", "1",
     "Make Directory: The '@/to/other' directory doesn't exist\n"
     "Do you want to create this directory ?",
     "other/ other/a=1 other/b=2", "", 0, "to/other"},
    {"a tree", kFopMove, kDeep, "d", "", "", "", kDeep, ""},
    {"Skip, for the next too", kFopMove, kTwo, "a b", kOld, "1", kMoveExists, "a=old b=2", "a=1"},
    {"Abort", kFopMove, kTwo, "a b", kOld, "4", kMoveExists, kSame},
    {"merging", kFopMove, kDeep, "d", "d/ d/g=old d/h=old", "21",
     "Move: The '@/to/d'" + kWhat + "Copy/Move: The '@/to/d/g'" + kWhat,
     "d/ d/e/ d/e/f=x d/g=old d/h=old", "d/ d/g=y"},
    {"a dangling link", kFopMove, "l>nowhere", "l", "", "", "", "l>nowhere", ""},
    {"a link over the file that it leads to", kFopMove, "l>../to/l", "l", "l=old", "", kNoMove,
     kSame},
    {"into itself", kFopMove, kTwo, "a b", "", "", kNoMove, "", kSame, 0, "from"},
    {"a tree", kFopDelete, kDeep, "d", "", "", "", "", ""},
    {"links, never followed", kFopDelete, "l>../to m>nowhere", "l m", "a=1", "", "", kSame, ""},
    {"Delete and Skip, from the last", kFopDelete, kTwo, "a b", "", "21", kDeleteB + kDeleteA, "",
     "a=1", kFopAskEach},
    {"Delete all", kFopDelete, kTwo, "a b", "", "3", kDeleteB, "", "", kFopAskEach},
    {"Abort", kFopDelete, kTwo, "a b", "", "4", kDeleteB, "", kSame, kFopAskEach},
    {"Skip, and what holds it", kFopDelete, "d/ d/a=1", "d", "", "1", "Delete: File '@/from/d/a'\n",
     "", kSame, kFopAskEach},
    {"what is gone", kFopDelete, "b=2", "a b", "", "1",
     "File Scan: Unable to stat '@/from/a'\nNo such file or directory\n", "", ""},
};

std::set<std::string> sDone;

int note_done(const char* directory, const char* name) {
    return sDone.insert(std::string(directory) + "/" + name).second ? 0 : 1;
}

TEST(WorkerTest, LeavesWhatIsLaidDownAndAsksOnce) {
    for (const auto& row : kRows) {
        SCOPED_TRACE(std::to_string(row.kind) + ": " + row.what);
        const Sandbox sandbox;
        make_tree(sandbox, "from", row.from);
        make_tree(sandbox, "to", row.to);
        const auto before = tree_of(sandbox.file("from"));
        gScreen = {};
        for (const char digit : row.answers)
            gScreen.answers.push_back(digit - '0');
        sDone.clear();
        run_operation({row.kind, sandbox.file("from"), words_of(row.chosen),
                       sandbox.file(row.destination), row.flags, note_done});
        EXPECT_EQ(asked(sandbox), row.asked);
        EXPECT_EQ(told(sandbox.file("from")), row.from_after == kSame ? row.from : row.from_after);
        EXPECT_EQ(told(sandbox.file("to")), row.to_after == kSame ? row.to : row.to_after);
        for (const auto& [name, what] : before) {
            const std::string path = sandbox.file("from/" + name);
            if (row.kind != kFopDelete) continue;
            EXPECT_EQ(sDone.contains(path), !std::filesystem::exists(path)) << path;
        }
    }
}

TEST(WorkerTest, ALargeDeleteAsksAboutExactlyWhatIsUnwriteable) {
    const Sandbox sandbox;
    sandbox.mkdir("from");
    for (const char* directory : {"from/1", "from/2", "from/3", "from/4"}) {
        make_tree(sandbox, directory, "");
        for (int i = 0; i < 300; ++i)
            sandbox.write(directory + ("/" + std::to_string(i)), "");
    }
    std::set<std::string> kept = {"1/0", "1/299", "2/255", "2/256", "4/77"};
    for (const std::string& name : kept)
        chmod(sandbox.file("from/" + name).c_str(), 0444);
    gScreen = {};
    gScreen.answers.assign(kept.size(), 1);
    run_operation({kFopDelete, sandbox.file("from"), {"1", "2", "3", "4"}, ""});
    EXPECT_EQ(gScreen.alerts.size(), kept.size());
    kept.insert({"1", "2", "4"});
    for (const auto& [name, what] : tree_of(sandbox.file("from")))
        EXPECT_EQ(kept.erase(name), 1U) << name;
    EXPECT_TRUE(kept.empty());
}

TEST(WorkerTest, WhatAppearsInADirectoryWhileItIsDeletedIsAskedAboutOnce) {
    const Sandbox sandbox;
    make_tree(sandbox, "from", "d/ d/e/ d/e/a=1");
    gScreen = {};
    gScreen.on_alert = [&](const headless::Alert& alert) {
        const bool is_first = alert.message.find("/a'") != std::string::npos;
        if (is_first) sandbox.write("from/d/e/new", "2");
        gScreen.answers = {is_first ? 3 : 1};
    };
    run_operation({kFopDelete, sandbox.file("from"), {"d"}, "", kFopAskEach});
    EXPECT_EQ(asked(sandbox),
              "Delete: File '@/from/d/e/a'\n"
              "Delete: Unable to delete '@/from/d/e'\nDirectory not empty\n");
    EXPECT_EQ(told(sandbox.file("from")), "d/ d/e/ d/e/new=2");
}

}  // namespace
}  // namespace dorn
