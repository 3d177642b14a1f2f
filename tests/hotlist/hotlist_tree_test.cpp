#include "dirmodel/dir_entry.h"
#include "filelist/navigation.h"
#include "hotlist_fixture.h"

namespace dorn {
namespace {

int sNotified = 0;
int sMenus = 0;

class HotlistTreeTest : public HotlistTest {
  protected:
    void SetUp() override {
        HotlistTest::SetUp();
        sNotified = sMenus = 0;
        tree_set_notify_cb([] { ++sNotified; });
        tree_set_menu_cb([](int, int) { ++sMenus; });
    }
    void TearDown() override {
        tree_set_notify_cb(nullptr);
        tree_set_menu_cb(nullptr);
        HotlistTest::TearDown();
    }
    std::string path(const char* name) const {
        return sandbox_.file(name);
    }
};

TEST_F(HotlistTreeTest, ShowsAtOnceAndTakesThePictureOfWhatIsThere) {
    for (const char* name : {"branch", "branch/below", "leaf"})
        sandbox_.mkdir(name);
    sandbox_.write("plain");
    const std::tuple<const char*, TreeImage, bool> rows[] = {
        {"branch", TreeImage::ClosedFolder, true},
        {"leaf", TreeImage::ClosedFolder, false},
        {"plain", TreeImage::File, false},
        {"none", TreeImage::InvalidFolder, false}};
    for (const auto& [name, image, has_children] : rows) {
        const QTreeWidgetItem* item = add(name);
        EXPECT_EQ(image_of(item), TreeImage::ClosedFolder) << name;
        EXPECT_TRUE(wait_for([&] {
            return image_of(item) == image && expandable(item) == has_children;
        })) << name;
    }
}

TEST_F(HotlistTreeTest, ListAndTreeChangeTogether) {
    EXPECT_EQ(tree_add(&gTree, "/b"), 0);
    EXPECT_EQ(tree_add(&gTree, "/a"), 0);
    EXPECT_EQ(tree_add(&gTree, "/b"), -1);
    EXPECT_EQ(shown(), (Names{"/b", "/a"}));
    tree_remove(&gTree, "/none");
    EXPECT_EQ(gTree.entries, (Names{"/b", "/a"}));
    tree_remove(&gTree, "/b");  // while its picture is being asked for
    EXPECT_EQ(gTree.entries, Names{"/a"});
    EXPECT_EQ(shown(), Names{"/a"});
    EXPECT_TRUE(
        wait_for([this] { return image_of(tree_->topLevelItem(0)) == TreeImage::InvalidFolder; }));
}

TEST_F(HotlistTreeTest, LoadsDropsDuplicatesAndSavesInOrderAndWithoutAFileIsTheRoot) {
    sandbox_.write("hotlist.001", "/b\n\n/a\n/b\n");
    for (int i = 0; i < 2; ++i) {
        clear();
        tree_load(sandbox_.path(), "hotlist.001");
        EXPECT_EQ(shown(), (Names{"/b", "", "/a"}));
        EXPECT_EQ(tree_save(sandbox_.path(), "hotlist.001"), 0);
    }
    clear();
    tree_load(nullptr, "hotlist.001");
    EXPECT_EQ(shown(), Names{"/"});
    EXPECT_EQ(tree_save(nullptr, "hotlist.001"), -1);
}

TEST_F(HotlistTreeTest, AFileThatCouldNotBeReadIsNotReplacedByTheRoot) {
    sandbox_.link("/dev/null", "hotlist.001");  // what is no regular file isn't read, but written
    tree_load(sandbox_.path(), "hotlist.001");
    EXPECT_EQ(shown(), Names{"/"});
    EXPECT_EQ(tree_save(sandbox_.path(), "hotlist.001"), -1);
}

TEST_F(HotlistTreeTest, AClickOrEnterShowsTheDirectoryAndLeavesNothingSelected) {
    for (const char* name : {"one", "one/below", "two"})
        sandbox_.mkdir(name);
    QTreeWidgetItem* one = add("one");
    QTreeWidgetItem* two = add("two");
    click(two);
    EXPECT_EQ(gDir->path, path("two"));
    EXPECT_TRUE(tree_->selectedItems().isEmpty());

    const QPoint expander(tree_->visualItemRect(one).left() - 8, middle_of(one).y());
    QTest::mouseClick(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, expander);
    ASSERT_TRUE(wait_for([one] { return one->childCount() == 1; }));
    EXPECT_EQ(gDir->path, path("two"));

    tree_->setCurrentItem(one);
    QTest::keyClick(tree_, Qt::Key_Down);
    QTest::keyClick(tree_, Qt::Key_Return);
    EXPECT_EQ(gDir->path, path("one/below"));
    EXPECT_TRUE(tree_->selectedItems().isEmpty());
    const int steps = fl_get_back_count();
    QTest::keyClick(tree_, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(fl_get_back_count(), steps);
}

TEST_F(HotlistTreeTest, ANameThatCannotBeShownOpensAndCanBeKept) {
    const std::string name = "caf\xE9\t";
    sandbox_.mkdir(name);
    sandbox_.mkdir(name + "/below");
    QTreeWidgetItem* item = add();
    expand(item);
    ASSERT_EQ(children_of(item), Names{"?caf?\t"});
    click(item->child(0));
    EXPECT_EQ(gDir->path, path(name.c_str()));
    tree_add_cb();
    EXPECT_EQ(gTree.entries.back(), path(name.c_str()));
    EXPECT_EQ(sNotified, 1);
    for (QTreeWidgetItem* kept : {item->child(0), tree_->topLevelItem(1)}) {
        expand(kept);
        EXPECT_EQ(children_of(kept), Names{"below"});
    }
}

TEST_F(HotlistTreeTest, TheContextItemIsAnyItemAndOnlyATopLevelOneIsRemoved) {
    sandbox_.mkdir("one");
    sandbox_.mkdir("one/below");
    QTreeWidgetItem* item = add("one");
    expand(item);
    tree_->setCurrentItem(item->child(0));
    QTest::keyClick(tree_, Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(gTree.context_item, item->child(0));
    tree_delete_cb();
    EXPECT_EQ(gTree.context_item, nullptr);
    EXPECT_EQ(shown(), Names{path("one")});

    QContextMenuEvent press(QContextMenuEvent::Mouse, middle_of(item), QPoint());
    QApplication::sendEvent(tree_->viewport(), &press);
    EXPECT_EQ(gTree.context_item, item);
    EXPECT_EQ(sMenus, 2);
    tree_delete_cb();
    EXPECT_EQ(shown(), Names{});
    EXPECT_EQ(gTree.entries, Names{});
    EXPECT_EQ(sNotified, 2);
}

TEST_F(HotlistTreeTest, NoNameBreaksARowOrIsTakenForMarkUp) {
    const TreeItem item("/<b>\n\xE2\x80\xAE\xFF");
    const QString text = item.data(0, Qt::DisplayRole).toString();
    EXPECT_EQ(text.toStdString(), "/?<b>\xE2\x86\xB5\xEF\xBF\xBD?");
    const QString tip = item.data(0, Qt::ToolTipRole).toString();
    EXPECT_TRUE(tip.contains(QStringLiteral("/&lt;b&gt;\u21B5"))) << tip.toStdString();
}

}  // namespace
}  // namespace dorn
