// Trees of what is rare: special files, foreign owners, long names, deep paths, huge files.
#include "fileops/engine/fop.h"
#include "fileops/engine/prompts.h"
#include "support/lossless_test.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace dorn {
namespace {

namespace fs = std::filesystem;

class OddTreesTest : public LosslessTest, public testing::WithParamInterface<int32_t> {
  protected:
    OddTreesTest() {
        make_trees();
    }
    ~OddTreesTest() override {
        // Deeper than a path can say, which the sandbox's own clearing doesn't manage.
        [[maybe_unused]] const int status =
            std::system((std::string("rm -rf '") + sandbox_.path() + "'/*").c_str());
    }

    static std::vector<Fault> copying_with(const Fault& one) {
        std::vector<Fault> faults = kOtherFileSystem;
        faults.push_back(one);
        return faults;
    }

    // The message of its question, "" of none.
    std::string run_asking(const Request& request) {
        gScreen = {};
        const Faults holding(kOtherFileSystem);
        EXPECT_GE(run_operation(request), 0);
        std::string messages;
        for (const headless::Alert& alert : gScreen.alerts)
            messages += alert.message;
        return messages;
    }
};

std::string attributes(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return "none";
    return std::to_string(status.st_mode) + " owner " + std::to_string(status.st_uid) + ":" +
           std::to_string(status.st_gid) + " time " + std::to_string(status.st_mtim.tv_sec) + "." +
           std::to_string(status.st_mtim.tv_nsec);
}

TEST_P(OddTreesTest, ModesTimesAndOwnersComeWithTheCopies) {
    const timespec times[] = {{1000000, 5}, {2000000, 123456789}};
    Tree before = tree_of(from());
    before.erase("unchosen");
    for (auto& [name, text] : before) {
        const int given_away = lchown(from(name).c_str(), 1234, 4321);
        EXPECT_TRUE(given_away == 0 || geteuid() != 0);
        if (text == "=first") chmod(from(name).c_str(), 06751);
        utimensat(AT_FDCWD, from(name).c_str(), times, AT_SYMLINK_NOFOLLOW);
        text = attributes(from(name));
    }
    run(GetParam(), kOtherFileSystem, {});
    EXPECT_EQ(asked_, Labels{});
    for (const auto& [name, text] : before)
        EXPECT_EQ(attributes(to(name)), text) << name;
}

TEST_P(OddTreesTest, NoDirectoryIsLeftOpenThatGetsNoContent) {
    const Fault cancel = {"write", 1, 0, "big", [] { running_operation()->cancelled = 1; }};
    const Fault unlisted = {"openat", 1, EACCES, "locked"};
    const Fault foreign = {"fchownat", 1, EPERM, "dir"};  // where the user stops
    for (const auto& [name, fault] :
         {std::pair("dir", cancel), {"dir/locked", unlisted}, {"dir", foreign}}) {
        for (const mode_t there : {0U, 0711U}) {  // of what has the copy's name; 0: nothing
            SCOPED_TRACE(std::string(name) + " " + std::to_string(there));
            make_trees();
            chmod(from(name).c_str(), 0700);
            if (there != 0) fs::create_directories(to(name));
            if (there != 0) chmod(to(name).c_str(), there);
            run(GetParam(), copying_with(fault), {"Continue", "Overwrite"});
            EXPECT_EQ(static_cast<mode_t>(fs::status(to(name)).permissions()),
                      there == 0 ? 0700 : there);
        }
    }
}

TEST_P(OddTreesTest, OfADirectoryWhoseListingBreaksOffNothingIsRemoved) {
    run(GetParam(), copying_with({"getdents64", 2, EIO, "dir"}), {"Continue"});
    EXPECT_EQ(asked_.size(), 1U);
    EXPECT_EQ(from_.count("dir/big"), 1U);
}

TEST_P(OddTreesTest, AFailedCopyWhoseNameHasComeToMeanAnotherFileLeavesThatOne) {
    const auto take_its_place = [&] {
        fs::rename(to("dir/big"), sandbox_.file("aside"));
        sandbox_.write("to/dir/big", "newer");
    };
    run(GetParam(), copying_with({"write", 2, EIO, "big", take_its_place}), {"Continue"},
        {"dir/big"});
    EXPECT_TRUE(holds(to_, "dir/big", "=newer"));
}

TEST_P(OddTreesTest, NoTwoSourcesGoIntoOneFile) {
    names_ = {"a", "b"};
    for (const bool by_symbolic_link : {false, true}) {
        make_trees();
        sandbox_.write("from/b", "second");
        sandbox_.write("to/a", "older");
        if (by_symbolic_link)
            sandbox_.link("a", "to/b");
        else
            fs::create_hard_link(to("a"), to("b"));
        run(GetParam(), kOtherFileSystem, {"Overwrite All", "Continue"}, {"b"});
        EXPECT_EQ(asked_.back(), "Error writing '" + to("b") + "'\nFile exists\n");
        EXPECT_TRUE(holds(from_, "b", "=second") && holds(to_, "a", "=first"));
    }
}

TEST_P(OddTreesTest, SocketsAndDevicesStayWithoutAWord) {
    EXPECT_EQ(mknod(from("socket").c_str(), S_IFSOCK | 0600, 0), 0);
    EXPECT_EQ(mknod(from("dir/socket").c_str(), S_IFSOCK | 0600, 0), 0);
    const bool has_device = mknod(from("dir/null").c_str(), S_IFCHR | 0600, makedev(1, 3)) == 0;
    names_ = {"socket", "dir", "a"};
    run(GetParam(), kOtherFileSystem, {});
    EXPECT_EQ(asked_, Labels{});
    EXPECT_EQ(to_.count("dir/big"), 1U);
    EXPECT_EQ(from_.count("socket") + from_.count("dir/socket"), 2U);
    EXPECT_EQ(from_.count("dir/null"), has_device ? 1U : 0U);
}

TEST_P(OddTreesTest, NothingGoesIntoItself) {
    sandbox_.link("from/dir/sub", "within");
    sandbox_.link("from", "same");
    sandbox_.mkdir("bound");
    const std::string bound = sandbox_.file("bound");
    const bool is_bound =
        mount(from("dir/sub").c_str(), bound.c_str(), nullptr, MS_BIND, nullptr) == 0;
    const std::pair<Labels, std::string> rows[] = {
        {{"dir"}, "from/dir/sub"}, {{"dir"}, "from/dir"},   {{"dir"}, "within"},
        {{"a", "dir"}, "within"},  {{"dir"}, "from"},       {{"a"}, "same"},
        {{"dir"}, "from/./dir/"},  {{"a", "link"}, "same"}, {{"dir"}, "bound"}};
    for (const auto& [names, destination] : rows) {
        if (destination == "bound" && !is_bound) continue;
        SCOPED_TRACE(destination);
        const Tree before = tree_of(from());
        const std::string told =
            run_asking({GetParam(), from(), names, sandbox_.file(destination), kFopLinksAsLinks});
        EXPECT_EQ(tree_of(from()), before);
        EXPECT_TRUE(told.ends_with("into itself.")) << told;
    }
    if (is_bound) umount(bound.c_str());
}

TEST_P(OddTreesTest, ATooLongNameIsSkippedOrComesUnderTheNewOneWithItsQuestions) {
    static std::string sNewName;
    fop_set_long_name_cb([](Widget*) {
        do_rename = sNewName.empty() ? 0 : 1;
        newfile = sNewName;
    });
    const bool copies = GetParam() == kFopCopy;
    const std::string exists = "' file exists.\nWhat do you want to do ?\n";
    const std::tuple<const char*, std::string, const char*, bool> rows[] = {
        // the new name, the question, what is there afterwards, whether the source stays
        {"", "", "", true},
        {"fresh", "", "first", copies},
        {"else/kept", "The '" + sandbox_.file("else/kept") + exists, "somebody's", true},
        {"from/a", copies ? "Can't copy file(s) into itself." : "Can't move file(s) into itself.",
         "first", true}};
    names_ = {"a"};
    for (const auto& [new_name, asked, there, stays] : rows) {
        SCOPED_TRACE(new_name);
        make_trees();
        sNewName = new_name[0] == '\0' ? "" : sandbox_.file(new_name);
        // The first opens the source.
        run(GetParam(), copying_with({"openat", 2, ENAMETOOLONG, "a"}), {"Skip"}, {"a"});
        EXPECT_EQ(asked_, asked.empty() ? Labels{} : Labels{asked});
        EXPECT_EQ(read_file(sNewName), there);
        EXPECT_EQ(fs::exists(from("a")), stays);
        EXPECT_EQ(to_, Tree{});
    }
    fop_set_long_name_cb(nullptr);
}

// Makes, or walks down, `depth` directories of that name below `path`. How many there were.
int descend(const std::string& path, const std::string& name, int depth, bool make) {
    int at = open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    int reached = 0;
    for (; reached < depth && at >= 0; ++reached) {
        if (make) mkdirat(at, name.c_str(), 0755);
        const int next = openat(at, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        close(at);
        at = next;
    }
    if (make) close(openat(at, "leaf", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    const bool has_leaf = faccessat(at, "leaf", F_OK, 0) == 0;
    close(at);
    return has_leaf ? reached : 0;
}

TEST_P(OddTreesTest, LongNamesAndDeepTreesAreDoneLikeOthers) {
    const std::pair<std::string, int> rows[] = {
        {std::string(255, '\xff'), 5}, {std::string(200, 'p'), 40}, {"d", 3000}};
    for (const auto& [name, depth] : rows) {
        SCOPED_TRACE(depth);
        ASSERT_EQ(descend(from(), name, depth, true), depth);
        names_ = {name};
        Request asked = request(GetParam());
        EXPECT_EQ(run_asking(asked), "");
        EXPECT_EQ(descend(from(), name, depth, false), GetParam() == kFopMove ? 0 : depth);
        EXPECT_EQ(descend(to(), name, depth, false), depth);
        if (GetParam() == kFopCopy) {
            EXPECT_NE(run_asking(asked).find("/leaf' file exists"), std::string::npos);
        }
        asked.kind = kFopDelete;
        asked.directory = to();
        EXPECT_EQ(run_asking(asked), "");
        EXPECT_EQ(tree_of(to()), Tree{});
    }
}

TEST_P(OddTreesTest, ASparseFileOfFiveGigabytesStaysSparse) {
    constexpr off_t kSize = 5'000'000'000;
    sandbox_.write("from/sparse", "head");
    truncate(from("sparse").c_str(), kSize);
    names_ = {"sparse"};
    {
        const Faults failing(copying_with({"ftruncate", 1, EFBIG}));
        run_operation(request(GetParam()));
    }
    EXPECT_TRUE(fs::exists(from("sparse")) && !fs::exists(to("sparse")));
    EXPECT_EQ(run_asking(request(GetParam())), "");
    struct stat status {};
    ASSERT_EQ(stat(to("sparse").c_str(), &status), 0);
    EXPECT_EQ(status.st_size, kSize);
    EXPECT_LT(status.st_blocks, 1000);
    EXPECT_EQ(fs::exists(from("sparse")), GetParam() == kFopCopy);
}

INSTANTIATE_TEST_SUITE_P(CopyAndMove, OddTreesTest, testing::Values(kFopCopy, kFopMove));

}  // namespace
}  // namespace dorn
