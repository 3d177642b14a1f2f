#include "filelist/file_drop.h"
#include "filelist/list_drag.h"
#include "filelist/list_drop.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "fileops/slots.h"
#include "fileops/transfer_mime.h"
#include "support_gui/window_test.h"
#include "ui/dialogs.h"

#include <QDropEvent>
#include <QMimeData>

#include <memory>

namespace dorn {
namespace {

// The list shows "here"; what is dropped lies in "far".
class Drop : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"far", "near", "here", "here/dir", "here/bad\xff"})
            sandbox_.mkdir(name);
        sandbox_.write("here/file");
        WindowTest::SetUp();
        ASSERT_EQ(fl_setpath(sandbox_.file("here").c_str()), 0);
        dnd_start_timestamp = 0;
    }
    void TearDown() override {
        await_operations();
        WindowTest::TearDown();
    }

    // Where a drop on the row of that name is let go: "" is empty space, "|" between two rows.
    static QPoint place(const std::string& target) {
        const QRect rows = gPane.view->viewport()->rect();
        if (target.empty()) return {40, rows.bottom() - 20};
        const int row = fl_row_of(target == ".." ? -1 : index_of(target == "|" ? "dir" : target));
        const QRect area = gPane.view->visualRect(gPane.view->model()->index(row, 0));
        return {40, target == "|" ? area.top() : area.center().y()};
    }

    void own(const std::string& directory, const std::string& name) {
        auto list = std::make_shared<FileTransfer>();
        list->directory = sandbox_.file(directory);
        list->names = {name};
        data_.reset(transfer_mime_data(*list, false));
    }
    void foreign(const std::string& uris) {
        data_ = std::make_unique<QMimeData>();
        data_->setData(QLatin1String(kTypeUriList), QByteArray::fromStdString(uris));
    }

    template <class Event>
    std::unique_ptr<Event> send(QPoint where, Qt::DropActions offered = kAll,
                                Qt::KeyboardModifiers held = Qt::NoModifier) const {
        auto event = std::make_unique<Event>(where, offered, data_.get(), Qt::LeftButton, held);
        QCoreApplication::sendEvent(gPane.view->viewport(), event.get());
        return event;
    }
    // What the hovering drag is told; IgnoreAction for a refusal.
    Qt::DropAction hover(QPoint where, Qt::DropActions offered = kAll,
                         Qt::KeyboardModifiers held = Qt::NoModifier) const {
        send<QDragEnterEvent>(where, offered, held);
        const auto motion = send<QDragMoveEvent>(where, offered, held);
        return motion->isAccepted() ? motion->dropAction() : Qt::IgnoreAction;
    }
    // Lets go and tells whether an operation came of it.
    bool drop(QPoint where, Qt::DropActions offered = kAll,
              Qt::KeyboardModifiers held = Qt::NoModifier) const {
        const int before = n_slots;
        const auto event = send<QDropEvent>(where, offered, held);
        EXPECT_FALSE(event->isAccepted() && event->dropAction() == Qt::MoveAction &&
                     offered.testFlag(Qt::CopyAction))
            << "nobody may delete because of our answer";
        QApplication::processEvents();
        EXPECT_FALSE(event->isAccepted() && dnd_active);
        return n_slots != before;
    }
    // The toolkit proposes what the keys ask for, without any a copy where that is offered.
    static constexpr Qt::DropActions kAll = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    std::unique_ptr<QMimeData> data_;
};

TEST_F(Drop, TargetAndActionFollowTheRowTheKeysAndWhoseListItIs) {
    constexpr auto kNothing = Qt::IgnoreAction;
    const struct {
        const char* target;
        bool own;
        Qt::DropActions offered;
        Qt::KeyboardModifiers held;
        Qt::DropAction done;
        const char* directory;
    } rows[] = {
        {"dir", true, kAll, Qt::NoModifier, Qt::MoveAction, "here/dir/"},
        {"dir", true, kAll, Qt::ControlModifier, Qt::CopyAction, "here/dir/"},
        {"..", true, kAll, Qt::NoModifier, Qt::MoveAction, ""},
        {"", true, kAll, Qt::ShiftModifier, Qt::MoveAction, "here/"},
        {"|", true, kAll, Qt::ControlModifier, Qt::CopyAction, "here/"},
        {"file", true, kAll, Qt::NoModifier, kNothing, ""},
        {"bad\xff", true, kAll, Qt::NoModifier, kNothing, ""},
        {"dir", false, kAll, Qt::NoModifier, Qt::CopyAction, "here/dir/"},
        {"", false, Qt::MoveAction, Qt::ControlModifier, Qt::MoveAction, "here/"},
        {"dir", false, Qt::LinkAction, Qt::NoModifier, kNothing, ""},
        {"dir", false, kNothing, Qt::NoModifier, kNothing, ""},
    };
    int number = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.target) + (row.own ? " own " : " foreign ") +
                     std::to_string(number));
        const std::string name = "f" + std::to_string(number++);
        sandbox_.write("far/" + name);
        row.own ? own("far", name) : foreign("file://" + sandbox_.file("far/" + name) + "\r\n");
        EXPECT_EQ(hover(place(row.target), row.offered, row.held), row.done);
        EXPECT_EQ(drop(place(row.target), row.offered, row.held), row.done != kNothing);
        const bool moved = row.done == Qt::MoveAction;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            const bool arrived = row.done == kNothing || mode_of(row.directory + name) != 0;
            return arrived && (mode_of("far/" + name) == 0) == moved;
        }));
    }
}

TEST_F(Drop, NothingIsDroppedOntoItselfOrWhereItIsOrWithinASecond) {
    const std::tuple<const char*, const char*, const char*, int64_t> rows[] = {
        {"here", "file", "", 0}, {"here", "dir", "dir", 0}, {"far", "x", "dir", dnd_clock() - 500}};
    for (const auto& [directory, name, target, began] : rows) {
        own(directory, name);
        dnd_start_timestamp = began;
        hover(place(target));
        EXPECT_FALSE(drop(place(target))) << name;
    }
}

TEST_F(Drop, ADropGoesWhereItWasShownToGoOrNowhere) {
    own("far", "x");
    hover(place("dir"));
    EXPECT_EQ(fl_drop_shown(), sandbox_.file("here/dir"));
    const QPoint aimed = place("dir");
    sandbox_.mkdir("here/aaa");
    sandbox_.mkdir("here/aab");
    fl_refresh();  // another folder lies under the pointer
    ASSERT_NE(place("dir"), aimed);
    EXPECT_FALSE(drop(aimed));
}

TEST_F(Drop, ABlockedWindowTakesNothing) {
    own("far", "x");
    ASSERT_EQ(hover(place("dir")), Qt::MoveAction);
    {
        const ScopedBlock block(handle(window_));
        EXPECT_EQ(hover(place("dir")), Qt::IgnoreAction);
        EXPECT_FALSE(send<QDropEvent>(place("dir"))->isAccepted());
    }
    EXPECT_EQ(hover(place("dir")), Qt::MoveAction);
    EXPECT_EQ(n_slots, 0);
    send<QDropEvent>(place("file"));
}

TEST_F(Drop, AForeignListOfSeveralDirectoriesIsOneOperationEachAndTheRestIsRefused) {
    sandbox_.write("far/a");
    sandbox_.write("near/b\xff");
    foreign("file://" + sandbox_.file("far/a") + "\r\nsftp://host/x\r\nfile://" +
            sandbox_.file("near/b%FF") + "\r\n");
    hover(place("dir"));
    EXPECT_EQ(alerts_of([this] { EXPECT_TRUE(drop(place("dir"))); }),
              "Drop: Dropped items that are not files of this computer were left out: 1.");
    EXPECT_EQ(n_slots, 2);
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return mode_of("here/dir/a") != 0 && mode_of("here/dir/b\xff") != 0; }));
}

}  // namespace
}  // namespace dorn
