// The fixture of the tree's tests: the main window with an empty hotlist.
#pragma once

#include "hotlist/hotlist_tree.h"
#include "hotlist/tree_item.h"
#include "support_gui/window_test.h"

#include <QTreeWidget>

namespace dorn {

using Names = std::vector<std::string>;

class HotlistTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        tree_ = qt_instance<QTreeWidget>("tree");
        clear();
    }
    void TearDown() override {
        clear();
        WindowTest::TearDown();
    }

    void clear() {
        tree_->clear();
        gTree.entries.clear();
    }

    /// Adds a directory of the sandbox; the sandbox itself without a name.
    QTreeWidgetItem* add(const std::string& name = {}) {
        const std::string path = name.empty() ? sandbox_.path() : sandbox_.file(name);
        EXPECT_EQ(tree_add(&gTree, path.c_str()), 0);
        return tree_->topLevelItem(tree_->topLevelItemCount() - 1);
    }

    static bool wait_for(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, 20000);
    }

    /// Opens the item as the user does and waits for its children.
    static void expand(QTreeWidgetItem* item) {
        item->setExpanded(true);
        ASSERT_TRUE(wait_for([item] { return item->childCount() > 0 || !item->isExpanded(); }));
    }

    static std::string name_of(const QTreeWidgetItem* item) {
        return item->data(0, kTreeNameRole).toByteArray().toStdString();
    }
    static TreeImage image_of(const QTreeWidgetItem* item) {
        return TreeImage(item->data(0, kTreeImageRole).toInt());
    }
    static Names children_of(const QTreeWidgetItem* item) {
        Names names;
        for (int i = 0; i < item->childCount(); ++i)
            names.push_back(name_of(item->child(i)));
        return names;
    }
    Names shown() const {
        return children_of(tree_->invisibleRootItem());
    }

    /// The middle of an item's text, in the viewport.
    QPoint middle_of(const QTreeWidgetItem* item) const {
        return tree_->visualItemRect(item).center();
    }
    void click(QTreeWidgetItem* item) const {
        tree_->scrollToItem(item);
        QTest::mouseClick(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, middle_of(item));
    }

    QTreeWidget* tree_ = nullptr;
};

}  // namespace dorn
