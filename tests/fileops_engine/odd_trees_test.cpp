// Trees of what is rare: special files, foreign owners, long names, deep paths, huge files.
#include "fileops/engine/fop.h"
#include "fileops/engine/prompts.h"
#include "support/lossless_test.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace dorn {
namespace {

namespace fs = std::filesystem;

const std::vector<Fault> kOtherFileSystem = {
    {"rename", 0, EXDEV}, {"renameat", 0, EXDEV}, {"renameat2", 0, EXDEV}};

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
};

std::string attributes(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return "none";
    std::string text = std::to_string(status.st_mode) + " owner " + std::to_string(status.st_uid) +
                       ":" + std::to_string(status.st_gid);
    const timespec& time = status.st_mtim;
    return text + " time " + std::to_string(time.tv_sec) + "." + std::to_string(time.tv_nsec);
}

TEST_P(OddTreesTest, ModesTimesAndOwnersComeWithTheCopies) {
    const timespec times[] = {{1000000, 5}, {2000000, 123456789}};
    std::map<std::string, std::string> before;
    for (const auto& [name, text] : tree_of(sandbox_.file("from"))) {
        const int given_away = lchown(from(name).c_str(), 1234, 4321);
        EXPECT_TRUE(given_away == 0 || geteuid() != 0);
        if (text == "ffirst") chmod(from(name).c_str(), 06751);
        utimensat(AT_FDCWD, from(name).c_str(), times, AT_SYMLINK_NOFOLLOW);
        if (name != "unchosen") before[name] = attributes(from(name));
    }
    run(GetParam(), kOtherFileSystem, {});
    EXPECT_EQ(asked_, Labels{});
    for (const auto& [name, text] : before)
        EXPECT_EQ(attributes(to(name)), text) << name;
}

TEST_P(OddTreesTest, NoDirectoryIsLeftOpenThatGetsNoContent) {
    const Fault cancel = {"write", 1, 0, "big", [] { running_operation()->cancelled = 1; }};
    const Fault unlisted = {"openat", 1, EACCES, "locked"};
    const struct {
        const char* name;
        const Fault& fault;
        mode_t there;  // mode of what has the copy's name; 0: nothing
        mode_t after;
    } rows[] = {{"dir", cancel, 0, 0700},
                {"dir", cancel, 0711, 0711},
                {"dir/locked", unlisted, 0, 0700},
                {"dir/locked", unlisted, 0711, 0711}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(row.there));
        make_trees();
        chmod(from(row.name).c_str(), 0700);
        if (row.there != 0) {
            fs::create_directories(to(row.name));
            chmod(to(row.name).c_str(), row.there);
        }
        std::vector<Fault> faults = kOtherFileSystem;
        faults.push_back(row.fault);
        run(GetParam(), faults, {"Continue", "Overwrite"});
        struct stat status {};
        ASSERT_EQ(stat(to(row.name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, row.after);
    }
}

TEST_P(OddTreesTest, SocketsAndDevicesStayWithoutAWord) {
    const auto make = [&](const char* name, mode_t mode, dev_t device) {
        return mknod(from(name).c_str(), mode | 0600, device) == 0;
    };
    EXPECT_TRUE(make("socket", S_IFSOCK, 0));
    EXPECT_TRUE(make("dir/socket", S_IFSOCK, 0));
    const bool has_device = make("dir/null", S_IFCHR, makedev(1, 3));
    names_ = {"socket", "dir", "a"};
    run(GetParam(), kOtherFileSystem, {});
    EXPECT_EQ(asked_, Labels{});
    EXPECT_EQ(tree_of(sandbox_.file("to")).count("dir/big"), 1U);
    const Tree source = tree_of(sandbox_.file("from"));
    EXPECT_EQ(source.count("socket") + source.count("dir/socket"), 2U);
    EXPECT_EQ(source.count("dir/null"), has_device ? 1U : 0U);
}

TEST_P(OddTreesTest, NothingGoesIntoItself) {
    sandbox_.link("from/dir/sub", "within");
    sandbox_.link("from", "same");
    sandbox_.mkdir("bound");
    const bool is_bound = mount(from("dir/sub").c_str(), sandbox_.file("bound").c_str(), nullptr,
                                MS_BIND, nullptr) == 0;
    const struct {
        Labels names;
        std::string destination;
    } rows[] = {{{"dir"}, "from/dir/sub"}, {{"dir"}, "from/dir"},   {{"dir"}, "within"},
                {{"a", "dir"}, "within"},  {{"dir"}, "from"},       {{"a"}, "same"},
                {{"dir"}, "from/./dir/"},  {{"a", "link"}, "same"}, {{"dir"}, "bound"}};
    for (const auto& row : rows) {
        if (row.destination == "bound" && !is_bound) continue;
        SCOPED_TRACE(row.destination);
        Request asked = request(GetParam());
        asked.names = row.names;
        asked.destination = sandbox_.file(row.destination);
        const Tree before = tree_of(sandbox_.file("from"));
        headless::reset();
        EXPECT_GE(run_operation(asked), 0);
        EXPECT_EQ(tree_of(sandbox_.file("from")), before);
        ASSERT_EQ(headless::alerts().size(), 1U);
        EXPECT_NE(headless::alerts()[0].message.find("into itself."), std::string::npos);
    }
    if (is_bound) umount(sandbox_.file("bound").c_str());
}

TEST_P(OddTreesTest, ATooLongNameIsSkippedOrComesUnderTheNewOneWithItsQuestions) {
    static std::string sNewName;
    fop_set_long_name_cb([](Widget*) {
        do_rename = sNewName.empty() ? 0 : 1;
        newfile = sNewName;
    });
    const bool is_copy = GetParam() == kFopCopy;
    const struct {
        const char* new_name;
        const char* asked;  // how the question ends
        std::string there;  // afterwards, under the new name
        bool stays;         // the source
    } rows[] = {{"", "", "", true},
                {"fresh", "", "first", is_copy},
                {"else/kept", "file exists.\nWhat do you want to do ?\n", "somebody's", true},
                {"from/a", "into itself.", "first", true}};
    names_ = {"a"};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.new_name);
        make_trees();
        sNewName = row.new_name[0] == '\0' ? "" : sandbox_.file(row.new_name);
        std::vector<Fault> faults = kOtherFileSystem;
        faults.push_back({"openat", 2, ENAMETOOLONG, "a"});  // the first opens the source
        run(GetParam(), faults, {"Skip"}, {"a"});
        EXPECT_EQ(asked_.size(), row.asked[0] == '\0' ? 0U : 1U);
        for (const std::string& message : asked_)
            EXPECT_TRUE(message.ends_with(row.asked)) << message;
        const std::string there = sNewName.empty() ? "" : sandbox_.read(row.new_name);
        EXPECT_EQ(there, row.there);
        EXPECT_EQ(fs::exists(from("a")), row.stays);
        EXPECT_EQ(tree_of(sandbox_.file("to")), Tree{});
    }
    EXPECT_EQ(fop_cut_name(std::string(46, 'n') + "\u00e4tail"), std::string(46, 'n'));
    EXPECT_EQ(fop_cut_name(std::string(60, '\xbf')), std::string(47, '\xbf'));
    fop_set_long_name_cb(nullptr);
}

// Makes, or walks down, `depth` directories of that name below `path`. How many there were.
int descend(const std::string& path, const std::string& name, int depth, bool make) {
    int at = open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    int reached = 0;
    while (reached < depth) {
        if (make) mkdirat(at, name.c_str(), 0755);
        const int next = openat(at, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        close(at);
        at = next;
        if (at < 0) return reached;
        ++reached;
    }
    if (make) close(openat(at, "leaf", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    const bool has_leaf = faccessat(at, "leaf", F_OK, 0) == 0;
    close(at);
    return has_leaf ? reached : 0;
}

TEST_P(OddTreesTest, LongNamesAndDeepTreesAreDoneLikeOthers) {
    const struct {
        std::string name;
        int depth;
    } rows[] = {{std::string(255, 'n'), 1},
                {std::string(255, '\xff'), 5},
                {std::string(200, 'p'), 40},
                {"d", 3000}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name.substr(0, 1) + " " + std::to_string(row.depth));
        ASSERT_EQ(descend(sandbox_.file("from"), row.name, row.depth, true), row.depth);
        headless::reset();
        const Faults holding(kOtherFileSystem);
        Request asked = request(GetParam());
        asked.names = {row.name};
        EXPECT_GE(run_operation(asked), 0);
        EXPECT_EQ(descend(sandbox_.file("from"), row.name, row.depth, false),
                  GetParam() == kFopMove ? 0 : row.depth);
        EXPECT_EQ(descend(sandbox_.file("to"), row.name, row.depth, false), row.depth);
        EXPECT_TRUE(headless::alerts().empty());
        if (GetParam() == kFopCopy) {
            EXPECT_GE(run_operation(asked), 0);
            ASSERT_EQ(headless::alerts().size(), 1U);
            EXPECT_NE(headless::alerts()[0].message.find("/leaf' file exists"), std::string::npos);
        }
        headless::reset();
        asked.kind = kFopDelete;
        asked.directory = sandbox_.file("to");
        EXPECT_GE(run_operation(asked), 0);
        EXPECT_EQ(tree_of(asked.directory), Tree{});
        EXPECT_TRUE(headless::alerts().empty());
    }
}

TEST_P(OddTreesTest, ASparseFileOfFiveGigabytesStaysSparse) {
    constexpr off_t kSize = 5'000'000'000;
    sandbox_.write("from/sparse", "head");
    truncate(from("sparse").c_str(), kSize);
    names_ = {"sparse"};
    headless::reset();
    const Faults holding(kOtherFileSystem);
    EXPECT_GE(run_operation(request(GetParam())), 0);
    EXPECT_TRUE(headless::alerts().empty());
    struct stat status {};
    ASSERT_EQ(stat(to("sparse").c_str(), &status), 0);
    EXPECT_EQ(status.st_size, kSize);
    EXPECT_LT(status.st_blocks, 1000);
    EXPECT_EQ(fs::exists(from("sparse")), GetParam() == kFopCopy);
}

INSTANTIATE_TEST_SUITE_P(CopyAndMove, OddTreesTest, testing::Values(kFopCopy, kFopMove));

}  // namespace
}  // namespace dorn
