#include "dirmodel/dir_entry.h"
#include "filelist/navigation.h"
#include "hotlist_fixture.h"

namespace dorn {
namespace {

class HotlistTreeTest : public HotlistTest {
  protected:
    // Closes the menu that has come up; false: there is none.
    static bool close_menu() {
        QWidget* menu = QApplication::activePopupWidget();
        return menu != nullptr && menu->close();
    }
};

TEST_F(HotlistTreeTest, ShowsAtOnceAndTakesThePictureOfWhatIsThere) {
    for (const char* name : {"branch", "branch/below", "leaf"})
        sandbox_.mkdir(name);
    sandbox_.write("plain");
    constexpr auto kOpens = QTreeWidgetItem::ShowIndicator;
    const struct {
        const char* name;
        TreeImage image;
        bool opens;
    } rows[] = {{"branch", TreeImage::ClosedFolder, true},
                {"leaf", TreeImage::ClosedFolder, false},
                {"plain", TreeImage::File, false},
                {"none", TreeImage::InvalidFolder, false}};
    for (const auto& row : rows) {
        const QTreeWidgetItem* item = add(row.name);
        EXPECT_EQ(image_of(item), TreeImage::ClosedFolder) << row.name;
        EXPECT_TRUE(wait_for([&] {
            const bool opens = item->childIndicatorPolicy() == kOpens;
            return image_of(item) == row.image && opens == row.opens;
        })) << row.name;
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
    sandbox_.link("/dev/null", "other");  // what is no regular file isn't read, but written
    tree_load(sandbox_.path(), "other");
    EXPECT_EQ(tree_save(sandbox_.path(), "other"), -1) << "the root would take its place";
}

TEST_F(HotlistTreeTest, AClickOrEnterShowsTheDirectoryAndLeavesNothingSelected) {
    for (const char* name : {"one", "one/below", "two"})
        sandbox_.mkdir(name);
    QTreeWidgetItem* one = add("one");
    QTreeWidgetItem* two = add("two");
    click(two);
    EXPECT_EQ(gDir->path, sandbox_.file("two"));
    EXPECT_TRUE(tree_->selectedItems().isEmpty());

    const QPoint expander(tree_->visualItemRect(one).left() - 8, middle_of(one).y());
    QTest::mouseClick(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, expander);
    ASSERT_TRUE(wait_for([one] { return one->childCount() == 1; }));
    EXPECT_EQ(gDir->path, sandbox_.file("two"));

    tree_->setCurrentItem(one);
    QTest::keyClick(tree_, Qt::Key_Down);
    QTest::keyClick(tree_, Qt::Key_Return);
    EXPECT_EQ(gDir->path, sandbox_.file("one/below"));
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
    EXPECT_EQ(gDir->path, sandbox_.file(name));
    tree_add_cb();
    EXPECT_EQ(gTree.entries.back(), sandbox_.file(name));
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
    EXPECT_TRUE(close_menu());
    EXPECT_EQ(gTree.context_item, item->child(0));
    tree_delete_cb();
    EXPECT_EQ(gTree.context_item, nullptr);
    EXPECT_EQ(shown(), Names{sandbox_.file("one")});

    QContextMenuEvent press(QContextMenuEvent::Mouse, middle_of(item), QPoint());
    QApplication::sendEvent(tree_->viewport(), &press);
    EXPECT_EQ(gTree.context_item, item);
    EXPECT_TRUE(close_menu());
    tree_delete_cb();
    EXPECT_EQ(shown(), Names{});
    EXPECT_EQ(gTree.entries, Names{});
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
