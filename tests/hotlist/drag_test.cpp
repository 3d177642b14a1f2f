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
    }
    QTreeWidgetItem* entry(int index) const {
        return tree_->topLevelItem(index);
    }
    QPoint half_of(const QTreeWidgetItem* item, bool lower) const {
        const QRect row = tree_->visualItemRect(item);
        return {row.center().x(), lower ? row.bottom() - 1 : row.top() + 1};
    }
    // Tells the tree of the drag as the window system does; whether it is taken.
    template <class Event>
    bool send(QPoint where, Qt::KeyboardModifiers held = Qt::NoModifier) const {
        Event event(where, Qt::CopyAction | Qt::MoveAction, data_.get(), Qt::LeftButton, held);
        QApplication::sendEvent(tree_->viewport(), &event);
        return event.isAccepted();
    }
    void drag(const QTreeWidgetItem* item, const QTreeWidgetItem* target, bool lower) const {
        QTest::mousePress(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, middle_of(item));
        EXPECT_TRUE(send<QDragEnterEvent>({1, 1}));
        send<QDropEvent>(half_of(target, lower));
        QTest::mouseRelease(tree_->viewport(), Qt::LeftButton, Qt::NoModifier, {1, 10000});
    }
    // The last letters of the hotlist's paths, which the tree shows in the same order.
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
                {2, 0, true, "acb"}, {0, 1, false, "abc"}, {1, 1, true, "abc"}};
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

TEST_F(DragTest, NothingMovesFromOrToAChildOrFromElsewhereAndAnExpandedEntryIsReadAnew) {
    expand(entry(0));
    const QTreeWidgetItem* child = entry(0)->child(0);
    drag(entry(2), child, true);
    drag(child, entry(2), true);
    send<QDropEvent>(half_of(entry(0), false));  // by another program: no entry was pressed
    EXPECT_EQ(order(), "abc");
    drag(entry(0), entry(2), true);
    EXPECT_EQ(order(), "bca");
    EXPECT_TRUE(wait_for([this] { return children_of(entry(2)) == Names{"below"}; }));
    data_ = std::make_unique<QMimeData>();
    data_->setText(QStringLiteral("This is dorn hotlist entry"));
    EXPECT_FALSE(send<QDragEnterEvent>({1, 1}));
}

TEST_F(DragTest, FilesDroppedOnAnItemMoveIntoItsDirectoryOrWithCtrlAreCopied) {
    expand(entry(0));
    FileTransfer list;
    list.directory = sandbox_.path();
    const struct {
        const char* name;
        QTreeWidgetItem* target;
        Qt::KeyboardModifiers held;
        const char* arrives;
        bool stays;
    } rows[] = {{"f", entry(1), Qt::NoModifier, "b/f", false},
                {"g", entry(0)->child(0), Qt::ControlModifier, "a/below/g", true},
                {"h", add("gone"), Qt::NoModifier, "", true}};
    ASSERT_TRUE(wait_for([&] { return image_of(entry(3)) == TreeImage::InvalidFolder; }));
    for (const auto& row : rows) {
        sandbox_.write(row.name, row.name);
        list.names = {row.name};
        data_.reset(transfer_mime_data(list, false));
        const bool taken = *row.arrives != '\0';
        EXPECT_TRUE(send<QDragEnterEvent>({1, 1}));
        EXPECT_EQ(send<QDragMoveEvent>(middle_of(row.target)), taken) << row.name;
        send<QDropEvent>(middle_of(row.target), row.held);
        EXPECT_TRUE(wait_for([&] {
            return n_slots == 0 && (!taken || sandbox_.read(row.arrives) == row.name) &&
                   sandbox_.read(row.name).empty() != row.stays;
        })) << row.name;
    }
}

}  // namespace
}  // namespace dorn
