#include "hotlist/tree_expand.h"
#include "hotlist_fixture.h"
#include "platform/dirstream.h"
#include "ui/dialogs.h"

#include <QTimer>

#include <atomic>
#include <filesystem>
#include <unistd.h>

namespace dorn {
namespace {

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
    static bool is_blocked() {
        return ui_is_blocked(w_instance("base"));
    }
};

TEST_F(ExpandTest, ListsEverySubdirectoryInTheOrderOfItsBytes) {
    Names directories = hostile_names();
    std::erase_if(directories, [](const std::string& name) { return name.starts_with("bad"); });
    directories.insert(directories.end(), {".hidden", "B", "a"});
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

TEST_F(ExpandTest, WhatVanishedHasNoChildrenAndASortedTreeDropsIt) {
    for (const char* name : {"here", "here/stays", "here/vanishes"})
        sandbox_.mkdir(name);
    QTreeWidgetItem* here = add("here");
    expand(here);
    ASSERT_EQ(here->childCount(), 2);
    ASSERT_EQ(rmdir(sandbox_.file("here/vanishes").c_str()), 0);
    here->child(1)->setExpanded(true);
    EXPECT_TRUE(wait_for([&] { return children_of(here) == Names{"stays"}; }));
    std::filesystem::remove_all(sandbox_.file("here"));
    here->setExpanded(false);
    expand(here);
    EXPECT_EQ(here->childCount(), 0);
    EXPECT_TRUE(wait_for([&] { return image_of(here) == TreeImage::InvalidFolder; }));
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
        sHeld = true;
        dirstream_set_test_hook(hold);
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

}  // namespace
}  // namespace dorn
