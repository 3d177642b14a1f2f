#include "filelist/file_drop.h"
#include "filelist/list_drag.h"
#include "filelist/list_drop.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "fileops/slots.h"
#include "fileops/transfer_mime.h"
#include "support_gui/window_test.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QDropEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QTimer>

#include <memory>
#include <unistd.h>

namespace dorn {
namespace {

// The list shows "here"; what is dropped lies in "far".
class Drop : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"far", "here", "here/dir", "here/bad\xff"})
            sandbox_.mkdir(name);
        sandbox_.write("here/file");
        WindowTest::SetUp();
        ASSERT_EQ(fl_setpath(sandbox_.file("here").c_str()), 0);
        dnd_start_timestamp = 0;
    }
    void TearDown() override {
        EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000));
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
    bool there(const std::string& name) const {
        return access(sandbox_.file(name).c_str(), F_OK) == 0;
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
            const bool arrived = row.done == kNothing || there(row.directory + name);
            return arrived && there("far/" + name) != moved;
        }));
    }
}

TEST_F(Drop, NothingIsDroppedOntoItselfOrWhereItIsOrWithinASecond) {
    own("here", "file");
    hover(place(""));
    EXPECT_FALSE(drop(place("")));
    own("here", "dir");
    hover(place("dir"));
    EXPECT_FALSE(drop(place("dir")));
    own("far", "x");
    dnd_start_timestamp = dnd_clock() - 500;
    hover(place("dir"));
    EXPECT_FALSE(drop(place("dir")));
}

TEST_F(Drop, ADropGoesWhereItWasShownToGoOrNowhere) {
    own("far", "x");
    hover(place("dir"));
    EXPECT_EQ(fl_drop_shown(), sandbox_.file("here/dir"));
    const QPoint aimed = place("dir");
    sandbox_.mkdir("here/aaa");
    sandbox_.mkdir("here/bbb");
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
    sandbox_.mkdir("near");
    sandbox_.write("far/a");
    sandbox_.write("near/b\xff");
    foreign("file://" + sandbox_.file("far/a") + "\r\nsftp://host/x\r\nfile://" +
            sandbox_.file("near/b%FF") + "\r\n");
    QString told;
    QTimer answer;
    answer.callOnTimeout([&told] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) return;
        told = box->text();
        box->accept();
    });
    answer.start(1);
    hover(place("dir"));
    EXPECT_TRUE(drop(place("dir")));
    EXPECT_EQ(n_slots, 2);
    EXPECT_TRUE(told.endsWith(QStringLiteral("left out: 1."))) << told.toStdString();
    EXPECT_TRUE(QTest::qWaitFor([this] { return there("here/dir/a") && there("here/dir/b\xff"); }));
}

}  // namespace
}  // namespace dorn
