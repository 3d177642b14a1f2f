#include "filelist/selection.h"

#include "filelist/columns.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "filelist/typeahead.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"

namespace dorn {
namespace {

class Selection : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"ab.c", "abc", "b.h", "c.c"})
            sandbox_.write(name, "12345");
        sandbox_.mkdir("d");
        WindowTest::SetUp();
    }

    static QPoint at(const char* name) {
        const int row = fl_row_of(index_of(name));
        return {30, gPane.view->visualRect(gPane.view->model()->index(row, 0)).center().y()};
    }
};

TEST_F(Selection, CountsFollowEveryOperation) {
    const std::tuple<const char*, void (*)(), const char*, int> steps[] = {
        {"all", fl_select_all, "ab.c abc b.h c.c d", 1},
        {"invert all", fl_invert_all, "", 0},
        {"pattern", [] { fl_select("*.c|b*", 0); }, "ab.c b.h c.c", 0},
        {"invert", fl_invert_all, "abc d", 1},
        {"unselect pattern", [] { fl_unselect("d", kFindExact); }, "abc", 0},
        {"skip directories", [] { fl_select("*", kFindSkipDirectories); }, "ab.c abc b.h c.c", 0},
        {"out of range", [] { fl_select_index(99), fl_unselect_index(-1); }, "ab.c abc b.h c.c", 0},
        {"none", fl_unselect_all, "", 0},
    };
    for (const auto& [what, act, names, directories] : steps) {
        act();
        EXPECT_EQ(selected(), names) << what;
        EXPECT_EQ(gDir->n_selected_dirs, directories) << what;
    }
    fl_select("*.c", 0);
    EXPECT_EQ(gDir->n_selected, 2);
    EXPECT_EQ(text_of("status1"), "2 selected items, 10 bytes");
}

TEST_F(Selection, MouseSelectsTogglesAndExtends) {
    click("abc");
    click("c.c", Qt::ControlModifier);
    EXPECT_EQ(selected(), "abc c.c");
    click("abc", Qt::ControlModifier);
    EXPECT_EQ(selected(), "c.c");
    click("ab.c");
    click("b.h", Qt::ShiftModifier);
    EXPECT_EQ(selected(), "ab.c abc b.h");
    click("c.c", Qt::ShiftModifier);
    EXPECT_EQ(selected(), "ab.c abc b.h c.c");
    click("abc");
    EXPECT_EQ(selected(), "abc") << "a click on a selected row narrows the selection";
    EXPECT_EQ(gDir->current, index_of("abc"));
    click("..");
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(gDir->current, -1);
    click("d", Qt::ControlModifier, true);
    EXPECT_EQ(gDir->path, sandbox_.path()) << "a double click that adds opens nothing";
}

TEST_F(Selection, ARebuildEndsWhatTheHeldButtonIsAbout) {
    click("abc");
    QTest::mousePress(gPane.view->viewport(), Qt::LeftButton, Qt::NoModifier, at("abc"));
    fl_refresh();
    fl_select_all();
    QTest::mouseRelease(gPane.view->viewport(), Qt::LeftButton, Qt::NoModifier, at("abc"));
    EXPECT_EQ(gDir->n_selected, gDir->count);
}

TEST_F(Selection, SweepingSelectsARange) {
    QWidget* list = gPane.view->viewport();
    QTest::mousePress(list, Qt::LeftButton, Qt::NoModifier, at("abc"));
    QMouseEvent move(QEvent::MouseMove, at("c.c"), list->mapToGlobal(at("c.c")), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list, &move);
    QTest::mouseRelease(list, Qt::LeftButton, Qt::NoModifier, at("c.c"));
    EXPECT_EQ(selected(), "abc b.h c.c");
}

TEST_F(Selection, KeysMoveExtendAndToggle) {
    const std::tuple<Qt::Key, Qt::KeyboardModifiers, const char*, const char*> rows[] = {
        {Qt::Key_Down, Qt::NoModifier, "abc", "abc"},
        {Qt::Key_Down, Qt::ShiftModifier, "abc b.h", "b.h"},
        {Qt::Key_Down, Qt::ShiftModifier, "abc b.h c.c", "c.c"},
        {Qt::Key_Up, Qt::ShiftModifier, "abc b.h", "b.h"},
        {Qt::Key_End, Qt::ControlModifier, "abc b.h", "d"},
        {Qt::Key_Space, Qt::ControlModifier, "abc b.h d", "d"}};
    click("ab.c");
    for (const auto& [key, held, names, current] : rows) {
        press(key, held);
        EXPECT_EQ(selected(), names);
        EXPECT_EQ(gDir->current, index_of(current)) << names;
    }
    press(Qt::Key_Home);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(gDir->current, -1);
}

TEST_F(Selection, KeysGoOnWhereAnEntryWasThatIsGone) {
    const std::pair<const char*, Qt::Key> moves[] = {{"b.h", Qt::Key_Down}, {"c.c", Qt::Key_Up}};
    for (const auto& [name, key] : moves) {
        click(name);
        std::filesystem::remove(sandbox_.file(name));
        fl_refresh();
        EXPECT_EQ(gDir->current, -2);
        press(key);
        EXPECT_EQ(selected(), key == Qt::Key_Up ? "abc" : "c.c") << name;
    }
    click("d");
    for (const char* name : {"abc", "d"})  // the row's place is gone, too
        std::filesystem::remove(sandbox_.file(name));
    fl_refresh();
    press(Qt::Key_Up);
    EXPECT_EQ(gPane.view->current_row(), static_cast<int>(gPane.rows.size()) - 1);
}

TEST_F(Selection, TypingSearchesEscapeKeepsTheSelectionAndEnterConfirms) {
    type("ab");
    EXPECT_EQ(text_of("status1"), "/ab");
    EXPECT_EQ(selected(), "ab.c");
    type("c");
    EXPECT_EQ(selected(), "abc");
    press(Qt::Key_Backspace);
    EXPECT_EQ(selected(), "ab.c");
    press(Qt::Key_Escape);
    EXPECT_EQ(text_of("status1"), "");
    EXPECT_EQ(selected(), "ab.c");
    EXPECT_FALSE(interp_active());
    type("/*.h");
    EXPECT_EQ(selected(), "b.h") << "typed text may be a pattern";
    press(Qt::Key_Escape);
    for (const char* typed : {"d", "/"}) {  // the last search again
        type(typed);
        press(Qt::Key_Return);
        EXPECT_EQ(gDir->path, sandbox_.file("d")) << typed;
        fl_up();
        fl_goto_index(0);
    }
    type("?ab");
    EXPECT_EQ(selected(), "ab.c");
    press(Qt::Key_Return);
    EXPECT_EQ(gDir->path, sandbox_.path());
}

TEST_F(Selection, ACommandLineIsRunInATerminalThatStaysAndSearchesNothing) {
    const FakePrograms fakes;
    fakes.add("d");
    click("abc");
    type(":d /x:y");
    EXPECT_EQ(selected(), "abc");
    EXPECT_EQ(text_of("status1"), ":d /x:y");
    press(Qt::Key_Return);
    FakePrograms::wait();
    EXPECT_EQ(fakes.runs("orterm"), (FakePrograms::Runs{{"-zU", "/bin/sh", "-c", "d /x:y"}}));
    EXPECT_EQ(fakes.runs("d"), (FakePrograms::Runs{{"/x:y"}}));
    EXPECT_FALSE(interp_active());
}

TEST_F(Selection, TheCommandLineClosesByItselfAndByAClick) {
    gConfig->keyfind_timeout = 30;
    type("ab");
    EXPECT_TRUE(QTest::qWaitFor([] { return !interp_active(); }));
    EXPECT_EQ(text_of("status1").substr(0, 10), "1 selected");
    gConfig->keyfind_timeout = 60000;
    type("ab");
    click("b.h");
    EXPECT_FALSE(interp_active());
}

TEST_F(Selection, SortingKeepsTheCurrentEntryAndTheSelection) {
    click("c.c");
    Widget* header = w_instance("fh_filename");
    fl_sort_cb(header);
    EXPECT_EQ(gDir->entries[gDir->current]->name, std::string("c.c"));
    EXPECT_EQ(row_name(1), "d");
    EXPECT_EQ(selected(), "c.c");
    fl_sort_cb(w_instance("fh_size"));
    EXPECT_EQ(fl_sort_order(), 0) << "another column keeps the direction";
    fl_sort_cb(w_instance("fh_size"));
    fl_sort_cb(header);
    EXPECT_EQ(row_name(1), "ab.c");
}

}  // namespace
}  // namespace dorn
