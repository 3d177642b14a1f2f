#include "fileops/slots.h"
#include "fileops/transfer_mime.h"
#include "hotlist/tree_drag.h"
#include "hotlist_fixture.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>

#include <memory>

namespace dorn {
namespace {

class DragTest : public HotlistTest {
  protected:
    void SetUp() override {
        HotlistTest::SetUp();
        for (const char* name : {"a", "a/below", "b", "c"})
            sandbox_.mkdir(name);
        for (const char* name : {"a", "b", "c"})
            add(name);
        expand(tree_->topLevelItem(0));
    }
    QTreeWidgetItem* entry(int index) const {
        return tree_->topLevelItem(index);
    }
    QTreeWidgetItem* child() const {
        return entry(0)->child(0);
    }

    QPoint half_of(const QTreeWidgetItem* item, bool lower) const {
        const QRect row = tree_->visualItemRect(item);
        return {row.center().x(), lower ? row.bottom() - 1 : row.top() + 1};
    }
    void enter() const {
        QDragEnterEvent event({1, 1}, Qt::MoveAction, data_.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(tree_->viewport(), &event);
        EXPECT_TRUE(event.isAccepted());
    }
    bool move(QPoint where) const {
        QDragMoveEvent event(where, Qt::MoveAction, data_.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(tree_->viewport(), &event);
        return event.isAccepted();
    }
    void drag(const QTreeWidgetItem* item, const QTreeWidgetItem* target, bool lower) const {
        QTest::mousePress(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, middle_of(item));
        enter();
        QDropEvent event(half_of(target, lower), Qt::MoveAction, data_.get(), Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(tree_->viewport(), &event);
        QTest::mouseRelease(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, {1, 10000});
    }
    // The last components of the hotlist's paths, which the tree shows in the same order.
    std::string order() const {
        EXPECT_EQ(gTree.entries, shown());
        std::string names;
        for (const std::string& path : gTree.entries)
            names += path.back();
        return names;
    }

    std::unique_ptr<QMimeData> data_{tree_drag_data()};
};

TEST_F(DragTest, ADropMovesAnEntryBeforeOrBehindAnother) {
    const struct {
        int item, target;
        bool lower;
        const char* order;
    } rows[] = {{0, 2, true, "bca"}, {0, 2, false, "bac"}, {2, 0, false, "cab"},
                {2, 0, true, "acb"}, {0, 1, false, "abc"}, {1, 0, true, "abc"},
                {1, 1, true, "abc"}};
    for (const auto& row : rows) {
        clear();
        for (const char* name : {"a", "b", "c"})
            add(name);
        gTree.context_item = entry(1);
        drag(entry(row.item), entry(row.target), row.lower);
        EXPECT_EQ(order(), row.order) << row.item << " to " << row.target;
        EXPECT_EQ(gTree.context_item, row.item == row.target ? entry(1) : nullptr);
        EXPECT_TRUE(tree_->selectedItems().isEmpty());
    }
}

TEST_F(DragTest, NothingMovesFromOrToAChildOrFromElsewhere) {
    drag(entry(2), child(), true);
    EXPECT_EQ(order(), "abc");
    drag(child(), entry(2), true);
    EXPECT_EQ(order(), "abc");
    enter();  // by another program: no entry of this tree was pressed
    QDropEvent event(half_of(entry(0), false), Qt::MoveAction, data_.get(), Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(tree_->viewport(), &event);
    EXPECT_EQ(order(), "abc");
}

TEST_F(DragTest, AnExpandedEntryIsReadAnewInItsOtherPlace) {
    drag(entry(0), entry(2), true);
    EXPECT_EQ(order(), "bca");
    EXPECT_TRUE(wait_for([this] { return children_of(entry(2)) == Names{"below"}; }));
}

TEST_F(DragTest, TheBellRingsOnceForEachChildEntered) {
    QTest::mousePress(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, middle_of(entry(2)));
    enter();
    testing::internal::CaptureStdout();
    EXPECT_TRUE(move(half_of(entry(1), true)));
    EXPECT_FALSE(move(half_of(entry(2), true)));
    EXPECT_FALSE(move(half_of(child(), true)));
    EXPECT_FALSE(move(half_of(child(), false)));
    move(half_of(entry(0), false));
    move(half_of(child(), false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\a\a");
    QTest::mouseRelease(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, {1, 10000});
}

TEST_F(DragTest, FilesDroppedOnAnItemMoveIntoItsDirectoryOrWithCtrlAreCopied) {
    auto list = std::make_shared<FileTransfer>();
    list->directory = sandbox_.path();
    const struct {
        const char* name;
        QTreeWidgetItem* target;
        Qt::KeyboardModifiers held;
        const char* arrives;
        bool stays;
    } rows[] = {{"f", entry(1), Qt::NoModifier, "b/f", false},
                {"g", child(), Qt::ControlModifier, "a/below/g", true},
                {"h", add("gone"), Qt::NoModifier, "", true}};
    ASSERT_TRUE(wait_for([&] { return image_of(entry(3)) == TreeImage::InvalidFolder; }));
    for (const auto& row : rows) {
        sandbox_.write(row.name, row.name);
        list->names = {row.name};
        data_.reset(transfer_mime_data(*list, false));
        enter();
        EXPECT_EQ(move(middle_of(row.target)), *row.arrives != '\0') << row.name;
        QDropEvent event(middle_of(row.target), Qt::CopyAction | Qt::MoveAction, data_.get(),
                         Qt::LeftButton, row.held);
        QApplication::sendEvent(tree_->viewport(), &event);
        EXPECT_TRUE(wait_for([&] {
            const bool arrived = *row.arrives == '\0' || sandbox_.read(row.arrives) == row.name;
            return n_slots == 0 && arrived && sandbox_.read(row.name).empty() != row.stays;
        })) << row.name;
    }
}

TEST_F(DragTest, OtherDragsAreNotTaken) {
    QMimeData other;
    other.setText(QStringLiteral("This is dorn hotlist entry"));
    QDragEnterEvent event({1, 1}, Qt::CopyAction, &other, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(tree_->viewport(), &event);
    EXPECT_FALSE(event.isAccepted());
}

}  // namespace
}  // namespace dorn
