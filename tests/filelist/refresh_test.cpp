#include "dirmodel/dir_read.h"
#include "filelist/list_model.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "platform/dirstream.h"
#include "support_gui/window_test.h"
#include "ui/dialogs.h"

#include <QAbstractButton>
#include <QScrollBar>
#include <QTimer>

#include <set>
#include <thread>

namespace dorn {
namespace {

class Refresh : public WindowTest {
  protected:
    void TearDown() override {
        dirstream_set_test_hook(nullptr);
        WindowTest::TearDown();
    }
    void make_files(int count) const {
        for (int i = 0; i < count; ++i)
            sandbox_.write("f" + std::to_string(1000 + i));
    }
};

TEST_F(Refresh, EveryKindOfEntryHasItsPicture) {
    sandbox_.mkdir("dir");
    sandbox_.write("file");
    sandbox_.script("exec", "");
    sandbox_.link("dir", "ldir");
    sandbox_.link("file", "lfile");
    sandbox_.link("exec", "lexec");
    sandbox_.link("nowhere", "broken");
    sandbox_.link("loop", "loop");
    show_sandbox();
    const std::pair<const char*, RowImage> expected[] = {
        {"dir", kImageClosedFolder},  {"file", kImageFile},        {"exec", kImageExec},
        {"ldir", kImageLinkedFolder}, {"lfile", kImageLinkedFile}, {"lexec", kImageLinkedExec},
        {"broken", kImageBrokenLink}, {"loop", kImageBrokenLink}};
    for (const auto& [name, image] : expected)
        EXPECT_EQ(gDir->entries[index_of(name)]->row->image, image) << name;
    EXPECT_EQ(fl_column_text(index_of("broken"), 7), "nowhere");
}

TEST_F(Refresh, RereadingKeepsPlaceAndFirstSelectedEntry) {
    make_files(200);
    fl_refresh();
    click("f1100");
    click("f1105", Qt::ControlModifier);
    gPane.view->set_first_visible_row(95);
    sandbox_.write("f1100a");
    fl_refresh();
    EXPECT_EQ(gPane.view->first_visible_row(), 95);
    EXPECT_EQ(gDir->current, index_of("f1100"));
    EXPECT_EQ(gDir->n_selected, 0);
    fl_newpath(nullptr, "/");
    fl_back();
    EXPECT_EQ(gPane.view->first_visible_row(), 0);
    EXPECT_EQ(gDir->current, -1);
}

TEST_F(Refresh, AVanishedDirectoryShowsEmptyWithTheReason) {
    sandbox_.mkdir("gone");
    const std::string path = sandbox_.file("gone");
    ASSERT_EQ(fl_newpath(nullptr, path.c_str()), 0);
    rmdir(path.c_str());
    fl_refresh();
    EXPECT_EQ(gDir->count, 0);
    EXPECT_EQ(text_of("status1"),
              "Cannot access directory '" + path + "': No such file or directory");
    fl_up();
    EXPECT_EQ(gDir->path, sandbox_.path());
}

TEST_F(Refresh, AStormOfRequestsDuringAReadLeavesOneCorrectList) {
    make_files(300);
    static int sReads;
    sReads = 0;
    // Each status call takes a moment, so that requests come while the directory is read.
    dirstream_set_test_hook(
        [](const char*) { std::this_thread::sleep_for(std::chrono::microseconds(300)); });
    fl_set_notify_cb([] { ++sReads; });
    QTimer storm;
    int requests = 0, nested = 0;
    storm.callOnTimeout([&] {
        const bool reading = fl_is_reading();
        const int before = sReads;
        if (++requests <= 200) fl_refresh();
        if (reading && sReads != before) ++nested;
    });
    storm.start(0);
    fl_refresh();
    EXPECT_TRUE(QTest::qWaitFor([&] { return requests > 200 && !fl_is_reading(); }, 60000));
    EXPECT_EQ(nested, 0);
    EXPECT_LE(sReads, 210);
    EXPECT_EQ(text_of("status2"), "300 items, 0 bytes");
    EXPECT_EQ(gPane.model->rowCount(), 301);
}

struct ScrollBar : QScrollBar {
    static SliderAction action_of(const QScrollBar* bar) {
        return (bar->*&ScrollBar::repeatAction)();
    }
};

TEST_F(Refresh, AReleaseDuringABlockEndsWhatThePressBegan) {
    make_files(200);
    show_sandbox();
    QScrollBar* bar = gPane.view->verticalScrollBar();
    const QPoint end(bar->width() / 2, bar->height() - 3);
    QTest::mousePress(bar, Qt::LeftButton, {}, end);
    EXPECT_NE(ScrollBar::action_of(bar), QAbstractSlider::SliderNoAction);
    auto* refresh = qt_instance<QAbstractButton>("tb_refresh");
    refresh->setDown(true);
    {
        const ScopedBlock block(w_instance("base"));
        QTest::mouseRelease(bar, Qt::LeftButton, {}, end);
        QTest::mouseRelease(refresh, Qt::LeftButton);
    }
    EXPECT_EQ(ScrollBar::action_of(bar), QAbstractSlider::SliderNoAction);
    EXPECT_FALSE(refresh->isDown());
}

TEST_F(Refresh, TheWindowIsBlockedButAliveDuringALongRead) {
    make_files(60);
    dirstream_set_test_hook(
        [](const char*) { std::this_thread::sleep_for(std::chrono::milliseconds(20)); });
    bool blocked = false;
    std::set<std::string> progress;
    QTimer looker;
    looker.callOnTimeout([&] {
        if (!fl_is_reading()) return;
        blocked = ui_is_blocked(w_instance("base"));
        type("f1001");  // input is swallowed
        progress.insert(text_of("status2"));
    });
    looker.start(5);
    fl_refresh();
    EXPECT_TRUE(blocked);
    EXPECT_GT(progress.size(), 2U) << "the count that is shown moves";
    EXPECT_FALSE(ui_is_blocked(w_instance("base")));
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(gDir->count, 60);
}

}  // namespace
}  // namespace dorn
