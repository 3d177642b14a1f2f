// Drag and drop with the mouse, between windows and programs.
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "fileops/slots.h"
#include "support/child.h"
#include "support_gui/window_test.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <unistd.h>

namespace dorn {
namespace {

constexpr int kUnhurried =
    1000;  // milliseconds of rest; the drag then takes over a second from its start

QString xdotool(const QStringList& words) {
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), words);
    EXPECT_TRUE(QTest::qWaitFor([&] { return tool.state() == QProcess::NotRunning; }, 30000));
    return QString::fromLatin1(tool.readAllStandardOutput()).trimmed();
}

// The list shows "here" in the left half of the screen.
class MouseDrag : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"here", "here/dir", "other", "far"})
            sandbox_.mkdir(name);
        for (const char* name : {"here/a", "here/b", "here/c", "here/d", "other/x"})
            sandbox_.write(name);
        sandbox_.write("far/\xff y");
        WindowTest::SetUp();
        window_->setGeometry(5, 25, 500, 500);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
        ASSERT_TRUE(QTest::qWaitFor([] { return window_->geometry() != window_->frameGeometry(); }))
            << "decorated, so that it stays where it is";
        ASSERT_EQ(fl_setpath(sandbox_.file("here").c_str()), 0);
    }
    void TearDown() override {
        for (const pid_t pid : others_) {
            kill(pid, SIGKILL);
            end_of_child(pid);
        }
        EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000));
        WindowTest::TearDown();
    }

    // On the screen: the row of that name, "" for empty space.
    static QPoint place(const std::string& name) {
        const QWidget* list = gPane.view->viewport();
        if (name.empty()) return list->mapToGlobal(list->rect().bottomLeft() + QPoint(60, -40));
        const int row = fl_row_of(name == ".." ? -1 : index_of(name));
        const QRect area = gPane.view->visualRect(gPane.view->model()->index(row, 0));
        return list->mapToGlobal(QPoint(30, area.center().y()));
    }

    // Starts another program and returns where its window is.
    QPoint start(const std::vector<std::string>& words) {
        others_.push_back(start_child(words));
        const QString window = xdotool(
            QStringLiteral("search --sync --onlyvisible --pid %1").arg(others_.back()).split(u' '));
        // (What getwindowgeometry tells counts the frame twice.)
        const QString geometry =
            xdotool(QStringLiteral("mousemove --window %1 0 0 getmouselocation --shell")
                        .arg(window.section(u'\n', 0, 0))
                        .split(u' '));
        auto value = [&](QLatin1String key) {
            return geometry.section(key, 1).section(u'\n', 0, 0).toInt();
        };
        return {value(QLatin1String("X=")), value(QLatin1String("Y="))};
    }

    // With `via` a sweep to that place becomes the drag, else the row is selected first.
    static void drag(QPoint from, QPoint to, int rest = kUnhurried, bool ctrl = false,
                     QPoint via = {}) {
        QStringList words;
        auto add = [&](const char* text) { words += QString::fromLatin1(text).split(u' '); };
        auto move = [&](QPoint at) {
            words +=
                {QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y())};
        };
        move(from);
        if (gDir->n_selected < 2 && via.isNull())
            add("click 1 sleep 0.6");  // the rest makes it no double click
        add("mousedown 1");
        if (!via.isNull()) move(via);
        if (!via.isNull()) from = via;
        constexpr int kSteps = 8;
        for (int step = 1; step <= kSteps; ++step) {
            add("sleep 0.06");
            move(from + (to - from) * step / kSteps);
            if (step == 1 && ctrl) add("keydown ctrl");
        }
        add("sleep");
        words += QString::number(rest / 1000.0);
        add(ctrl ? "mouseup 1 keyup ctrl" : "mouseup 1");
        xdotool(words);
    }

    // Whether the file comes to be at the place and comes to be, or not to be, at the other.
    bool arrives(const std::string& there, const std::string& from, bool stays) const {
        return QTest::qWaitFor([&] {
            return access(sandbox_.file(there).c_str(), F_OK) == 0 &&
                   (access(sandbox_.file(from).c_str(), F_OK) == 0) == stays;
        });
    }
    static void settle() {
        EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000));
        fl_refresh();
    }

    std::vector<pid_t> others_;
};

TEST_F(MouseDrag, WithinTheListMovesOrCopies) {
    drag(place("c"), place("dir"), 50);
    EXPECT_EQ(n_slots, 0) << "within a second of its start it is no drop";
    drag(place("c"), place(""));
    EXPECT_EQ(n_slots, 0) << "they are there already";
    drag(place("c"), place("dir"), kUnhurried, true);
    EXPECT_TRUE(arrives("here/dir/c", "here/c", true));
    settle();
    click("a");
    click("b", Qt::ShiftModifier);
    drag(place("a"), place(".."));
    EXPECT_TRUE(arrives("a", "here/a", false));
    EXPECT_TRUE(arrives("b", "here/b", false));
}

TEST_F(MouseDrag, BetweenTwoProcesses) {
    const QPoint other =
        start({DORN_PROGRAM, "-x520", "-y25", "-w490", "-h500", sandbox_.file("other")});
    const QPoint offset = other - window_->geometry().topLeft();
    drag(place("a") + offset, place(""));  // the first file of the other list
    EXPECT_TRUE(arrives("here/x", "other/x", false));
    settle();
    drag(place("d"), place("") + offset);
    EXPECT_TRUE(arrives("other/d", "here/d", false));
    settle();
    const QPoint last = place("c");
    drag(place("b"), QPoint(place("").x() + offset.x(), last.y()), kUnhurried, false, last);
    EXPECT_TRUE(arrives("other/b", "here/b", false));
    EXPECT_TRUE(arrives("other/c", "here/c", false));
}

TEST_F(MouseDrag, FromAnotherProgramCopiesAndKeepsTheNameByteForByte) {
    const QPoint peer =
        start({"/proc/self/exe", "offer", "file://" + sandbox_.file("far/%FF%20y")});
    drag(peer + QPoint(50, 30), place("dir"));
    EXPECT_TRUE(arrives("here/dir/\xff y", "far/\xff y", true));
}

}  // namespace
}  // namespace dorn
