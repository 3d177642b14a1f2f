#include "hotlist/tree_expand.h"
#include "hotlist_fixture.h"
#include "platform/dirstream.h"
#include "ui/dialogs.h"

#include <QElapsedTimer>
#include <QTimer>

#include <atomic>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

// The names of a directory's subdirectories by the C library, each opened and looked at once.
Names plain_subdirectories(const char* path) {
    Names names;
    DIR* directory = opendir(path);
    while (const dirent* entry = readdir(directory)) {
        const std::string name = entry->d_name;
        struct stat status;
        if (name == "." || name == "..") continue;
        const std::string full = std::string(path) + "/" + name;
        if (stat(full.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) continue;
        DIR* below = opendir(full.c_str());
        while (readdir(below) != nullptr) {
        }
        closedir(below);
        names.push_back(name);
    }
    closedir(directory);
    return names;
}

// Holds the stream's thread at the first status call until released.
std::atomic<bool> sHeld = false;
void hold(const char*) {
    while (sHeld)
        usleep(1000);
}

class ExpandTest : public HotlistTest {
  protected:
    void TearDown() override {
        sHeld = false;
        dirstream_set_test_hook(nullptr);
        HotlistTest::TearDown();
    }
    static void hold_streams() {
        sHeld = true;
        dirstream_set_test_hook(hold);
    }
    static bool is_blocked() {
        return ui_is_blocked(w_instance("base"));
    }
};

TEST_F(ExpandTest, ListsEverySubdirectoryInTheOrderOfItsBytes) {
    const Names directories = {" blank",  "-rf",         ".hidden",
                               "<b>bold", "B",           "a",
                               "a\nb",    "caf\xC3\xA9", "\xE2\x80\xAEnoitcerid"};
    for (const std::string& name : directories)
        sandbox_.mkdir(name);
    sandbox_.write("file");
    sandbox_.link("a", "link");
    sandbox_.link("none", "dangling");
    QTreeWidgetItem* item = add();
    expand(item);
    Names expected = directories;
    expected.push_back("link");
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(children_of(item), expected);
    for (int i = 0; i < item->childCount(); ++i)
        EXPECT_EQ(x_get_fullpath(item->child(i)), sandbox_.file(name_of(item->child(i))));
    EXPECT_EQ(image_of(item), TreeImage::OpenFolder);
    EXPECT_FALSE(is_blocked());
}

TEST_F(ExpandTest, FollowsTheOptionsForOrderAndDotNames) {
    for (const char* name : {"c", "a", ".dot", "b", "d"})
        sandbox_.mkdir(name);
    gOptions &= ~(kOptionTreeSorted | kOptionTreeDotEntries);
    Names expected = plain_subdirectories(sandbox_.path());
    std::erase(expected, ".dot");
    QTreeWidgetItem* item = add();
    expand(item);
    EXPECT_EQ(children_of(item), expected);
}

TEST_F(ExpandTest, AnswersSettleThePicturesOfChildren) {
    sandbox_.mkdir("branch");
    sandbox_.mkdir("branch/below");
    sandbox_.mkdir("leaf");
    QTreeWidgetItem* item = add();
    expand(item);
    ASSERT_EQ(item->childCount(), 2);
    EXPECT_TRUE(wait_for([&] { return !expandable(item->child(1)); }));
    EXPECT_TRUE(expandable(item->child(0)));
    EXPECT_EQ(image_of(item->child(1)), TreeImage::ClosedFolder);
}

TEST_F(ExpandTest, CollapsingFreesTheChildrenAndReopeningReadsThemAnew) {
    sandbox_.mkdir("one");
    QTreeWidgetItem* item = add();
    expand(item);
    tree_->setCurrentItem(item->child(0));
    gTree.context_item = item->child(0);
    item->setExpanded(false);
    EXPECT_EQ(item->childCount(), 0);
    EXPECT_EQ(tree_->currentItem(), item);
    EXPECT_EQ(gTree.context_item, nullptr);
    EXPECT_EQ(image_of(item), TreeImage::ClosedFolder);
    sandbox_.mkdir("two");
    expand(item);
    EXPECT_EQ(children_of(item), (Names{"one", "two"}));
}

TEST_F(ExpandTest, WhatCannotBeOpenedStaysWithoutChildrenAndGetsItsPicture) {
    sandbox_.mkdir("gone");
    QTreeWidgetItem* item = add("gone");
    ASSERT_EQ(rmdir(sandbox_.file("gone").c_str()), 0);
    expand(item);
    EXPECT_EQ(item->childCount(), 0);
    EXPECT_TRUE(wait_for([&] { return image_of(item) == TreeImage::InvalidFolder; }));
    EXPECT_FALSE(is_blocked());
}

TEST_F(ExpandTest, AVanishedChildLeavesASortedTree) {
    sandbox_.mkdir("stays");
    sandbox_.mkdir("vanishes");
    QTreeWidgetItem* item = add();
    expand(item);
    ASSERT_EQ(item->childCount(), 2);
    ASSERT_EQ(rmdir(sandbox_.file("vanishes").c_str()), 0);
    expand(item->child(1));
    EXPECT_TRUE(wait_for([&] { return children_of(item) == Names{"stays"}; }));
}

TEST_F(ExpandTest, TheEventLoopRunsAndTheWindowIsBlockedWhileADirectoryDoesNotAnswer) {
    sandbox_.mkdir("slow");
    hold_streams();
    QTreeWidgetItem* item = add();
    item->setExpanded(true);
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, &ticker, [&] {
        EXPECT_TRUE(is_blocked());
        if (++ticks == 5) sHeld = false;
    });
    QTimer::singleShot(0, &ticker, [&] { ticker.start(1); });
    ASSERT_TRUE(wait_for([&] {
        if (item->childCount() > 0) ticker.stop();
        return item->childCount() > 0;
    }));
    EXPECT_GE(ticks, 5);
    EXPECT_FALSE(is_blocked());
}

TEST_F(ExpandTest, AnItemMayGoOrCloseOrTheProgramEndWhileItIsFilled) {
    const std::function<void(QTreeWidgetItem*)> events[] = {
        [this](QTreeWidgetItem*) { tree_remove(&gTree, sandbox_.path()); },
        [](QTreeWidgetItem* item) { item->setExpanded(false); },
        [this](QTreeWidgetItem*) { clear(); },
        [](QTreeWidgetItem*) { tree_expand_stop(); },
    };
    sandbox_.mkdir("child");
    for (const auto& event : events) {
        hold_streams();
        QTreeWidgetItem* item = add();
        item->setExpanded(true);
        bool happened = false;
        QTimer::singleShot(0, tree_, [&] {
            EXPECT_TRUE(is_blocked());
            event(item);
            happened = true;
        });
        ASSERT_TRUE(wait_for([&] { return happened && !is_blocked(); }));
        for (int i = 0; i < tree_->topLevelItemCount(); ++i)
            EXPECT_EQ(tree_->topLevelItem(i)->childCount(), 0);
        sHeld = false;
        clear();
    }
}

TEST_F(ExpandTest, TenThousandChildrenTakeNoMoreThanSomePlainLoops) {
    constexpr int kChildren = 10000;
    if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);  // made in no time there
    const Sandbox many;
    unsetenv("TMPDIR");
    for (int i = 0; i < kChildren; ++i)
        many.mkdir("d" + std::to_string(i));
    QElapsedTimer watch;
    watch.start();
    ASSERT_EQ(plain_subdirectories(many.path()).size(), std::size_t(kChildren));
    const qint64 plain = watch.restart();
    ASSERT_EQ(tree_add(&gTree, many.path()), 0);
    QTreeWidgetItem* item = tree_->topLevelItem(0);
    expand(item);
    const qint64 expanded = watch.restart();
    ASSERT_EQ(item->childCount(), kChildren);
    ASSERT_TRUE(wait_for([&] {
        for (int i = 0; i < kChildren; ++i) {
            if (expandable(item->child(i))) return false;
        }
        return true;
    }));
    const qint64 settled = watch.elapsed();
    RecordProperty("plain_ms", int(plain));
    RecordProperty("expanded_ms", int(expanded));
    RecordProperty("settled_ms", int(settled));
    EXPECT_LT(expanded, 6 * plain + 100);
    EXPECT_LT(settled, 10 * plain + 1000);
}

}  // namespace
}  // namespace dorn
