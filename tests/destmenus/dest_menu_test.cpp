#include "destmenus/dest_menu.h"

#include "config/config.h"
#include "config/history.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/navigation.h"
#include "filelist/selection.h"
#include "hotlist/hotlist_tree.h"
#include "support_gui/window_test.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <filesystem>
#include <gtest/gtest.h>

namespace dorn {
namespace {

class DestMenuTest : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name :
             {"src", "to", "to/10", "to/9", "to/9/deep", "to/.dot", "to/a&b", "to/x\xff\n", "bare"})
            sandbox_.mkdir(name);
        sandbox_.write("src/one", "1");
        sandbox_.write("src/two", "2");
        WindowTest::SetUp();
        ASSERT_EQ(fl_newpath(nullptr, sandbox_.file("src").c_str()), 0);
        clear_hotlist();
        for (const char* root : {"to", "bare", "missing"})
            tree_add(&gTree, sandbox_.file(root).c_str());
        fl_select_all();
    }
    void TearDown() override {
        clear_hotlist();
        WindowTest::TearDown();
    }

    static void clear_hotlist() {
        while (!gTree.entries.empty())
            tree_remove(&gTree, gTree.entries.front().c_str());
    }
    static void close_menus() {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
        QApplication::processEvents();
    }
    static DestMenu* top_menu() {
        return dynamic_cast<DestMenu*>(QApplication::activePopupWidget());
    }
    /// Opens Copy To or Move To of the Edit menu by its mnemonic, and the submenus of the entries
    /// by the keyboard; all is known of the last one then.
    static DestMenu* open_menu(Qt::Key mnemonic, const std::vector<std::size_t>& way = {}) {
        QApplication::setActiveWindow(window_);  // a question before may have taken that
        press(Qt::Key_E, Qt::AltModifier);
        QTest::keyClick(QApplication::activePopupWidget(), mnemonic);
        EXPECT_TRUE(QTest::qWaitFor([] { return top_menu() != nullptr; }));
        for (const std::size_t index : way) {
            DestMenu* menu = top_menu();
            menu->go_to(index);
            QTest::keyClick(menu, Qt::Key_Right);
            EXPECT_TRUE(
                QTest::qWaitFor([menu] { return top_menu() != menu && top_menu()->finished(); }));
        }
        return top_menu();
    }
    static std::string labels(const DestMenu* menu) {
        std::string text;
        for (std::size_t i = 0; i < menu->entries().size(); ++i) {
            const char kind = "?>-"[static_cast<int>(menu->entries()[i].kind)];
            text += menu->action_of(i)->text().toStdString() + kind + ' ';
        }
        return text;
    }
    bool on_disk(const std::string& name, bool there = true) const {
        return QTest::qWaitFor(
            [&] { return std::filesystem::exists(sandbox_.file(name)) == there; });
    }
};

TEST_F(DestMenuTest, WithoutASelectionThereAreNoSuchMenus) {
    fl_unselect_all();
    QMenu menu;
    mgen_work_insert(&menu);
    EXPECT_TRUE(menu.isEmpty());
}

TEST_F(DestMenuTest, RootsAndSubdirectoriesAreItemsAndOnlyThoseWithDirectoriesOpen) {
    gConfig->flags |= kHideDotFiles;
    const DestMenu* roots = open_menu(Qt::Key_C);
    const std::string here = sandbox_.path();
    const std::string expected = here + "/to/> " + here + "/bare/- " + here + "/missing/- ";
    EXPECT_TRUE(QTest::qWaitFor([&] { return labels(roots) == expected; })) << labels(roots);
    close_menus();
    const DestMenu* to = open_menu(Qt::Key_C, {0});
    EXPECT_EQ(labels(to), "9/> 10/- a&&b/- ?x?\u21B5/- ");
    EXPECT_EQ(to->path_of(3), sandbox_.file("to/x\xff\n"));
    EXPECT_EQ(to->current(), 0);
}

TEST_F(DestMenuTest, ADirectoryIsChosenByEnterByAClickOnAPlainOneAndByADoubleClick) {
    const auto enter = [](DestMenu* menu, const QPoint&) { QTest::keyClick(menu, Qt::Key_Return); };
    const auto click = [](DestMenu* menu, const QPoint& at) {
        QTest::mouseClick(menu, Qt::LeftButton, {}, at);
    };
    const auto twice = [](DestMenu* menu, const QPoint& at) {
        QTest::mouseClick(menu, Qt::LeftButton, {}, at);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        QTest::mouseClick(menu, Qt::LeftButton, {}, at);
    };
    const struct {
        Qt::Key cascade;
        std::vector<std::size_t> way;  // to the menu of the entry
        std::size_t entry;
        void (*choose)(DestMenu* menu, const QPoint& at);
        const char* answer;
        std::string directory;
    } rows[] = {
        {Qt::Key_C, {}, 0, enter, "", "to"},
        {Qt::Key_C, {0}, 0, enter, "&Yes", "to/9"},
        {Qt::Key_C, {0}, 1, click, "&Yes", "to/10"},
        {Qt::Key_M, {}, 0, twice, "&Yes", "to"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.directory);
        DestMenu* menu = open_menu(row.cascade, row.way);
        menu->go_to(row.entry);
        const auto choose = [&] {
            row.choose(menu, menu->actionGeometry(menu->action_of(row.entry)).center());
            EXPECT_TRUE(QTest::qWaitFor([] { return top_menu() == nullptr; }));
            QApplication::processEvents();  // the question comes when the menus have gone
        };
        const std::string verb = row.cascade == Qt::Key_C ? "copy" : "move";
        EXPECT_EQ(alerts_of(choose, row.answer), verb + ": Do you want to " + verb +
                                                     " 2 files to\n'" +
                                                     sandbox_.file(row.directory) + "'\n");
        EXPECT_TRUE(on_disk(row.directory + "/two", *row.answer != '\0'));
    }
    EXPECT_TRUE(on_disk("src/two", false));
}

TEST_F(DestMenuTest, ALongListIsAWindowThatKeysTypingAndItsEndsMove) {
    for (int i = 0; i < 300; ++i)
        sandbox_.mkdir("bare/d" + std::to_string(i));
    DestMenu* menu = open_menu(Qt::Key_C, {1});
    ASSERT_EQ(menu->entries().size(), 300U);
    ASSERT_LT(menu->shown(), 200U);
    EXPECT_LE(menu->height(), menu->screen()->availableGeometry().height());
    const std::tuple<Qt::Key, const char*, const char*> rows[] = {
        {Qt::Key_End, "", "d99"},     {Qt::Key_Down, "", "d0"},   {Qt::Key_Up, "", "d99"},
        {Qt::Key_Home, "d25", "d25"}, {Qt::Key_Down, "", "d250"}, {Qt::Key_PageDown, "", nullptr},
        {Qt::Key_PageUp, "", "d250"},
    };
    for (const auto& [key, typed, expected] : rows) {
        QTest::keyClick(menu, key);
        QTest::keyClicks(menu, QString::fromUtf8(typed));
        const std::size_t entry = menu->current().value_or(0);
        const std::string name = menu->entries()[entry].name;
        EXPECT_EQ(name, expected == nullptr ? name : expected);
        ASSERT_NE(menu->action_of(entry), nullptr) << "out of sight: " << name;
        EXPECT_EQ(menu->activeAction()->text().toStdString(), name + "/");
    }
    EXPECT_FALSE(menu->has_open_submenu());
    const std::size_t first = menu->first_shown();
    const QRect below = menu->actionGeometry(menu->actions().back());
    QTest::mouseClick(menu, Qt::LeftButton, {}, below.center());
    EXPECT_GT(menu->first_shown(), first);
    EXPECT_TRUE(menu->isVisible());
}

TEST_F(DestMenuTest, ClosingTheMenusAThousandTimesWhileTheyAreFilledLeavesNothing) {
    for (int i = 0; i < 60; ++i)
        sandbox_.mkdir("to/9/d" + std::to_string(i));
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    QMenu outer;
    const auto before = threads();
    for (int i = 0; i < 1000; ++i) {
        outer.clear();
        qDeleteAll(outer.findChildren<QMenu*>(Qt::FindDirectChildrenOnly));
        mgen_work_insert(&outer);
        outer.popup({0, 0});
        auto* menu = dynamic_cast<DestMenu*>(outer.actions().front()->menu());
        menu->popup({0, 0});
        DestMenu* below = menu->submenu_of(0);
        below->popup({50, 0});
        for (int turns = i % 5; turns > 0; --turns)
            QApplication::processEvents(QEventLoop::AllEvents, 1);
        if (!below->entries().empty())
            if (DestMenu* third = below->submenu_of(0)) third->popup({90, 0});
        close_menus();
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return threads() <= before; })) << threads();
}

TEST_F(DestMenuTest, OtherAsksForADirectoryAndKeepsAHistory) {
    fl_unselect_all();
    type("one");
    fl_select_all();
    std::strcpy(gConfig->alt_encoding, "ISO-8859-1");
    const struct {
        const char* typed;
        Qt::Key key;
        const char* copied;  // the copy; empty: there is none
        std::string said = {};
    } rows[] = {
        {"../bare", Qt::Key_Escape, ""},
        {"../bare\n", Qt::Key_Return, "bare/one"},
        {"\u20AC", Qt::Key_Return, "",
         "Error: Unable to translate '\u20AC' into 'ISO-8859-1' encoding."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        if (!row.said.empty()) fname_set_translation(kEncodingAlternate, "ISO-8859-1");
        bool seen = false;
        QTimer::singleShot(20, [&] {
            const QWidget* dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            seen = dialog->windowTitle() == QStringLiteral("Copy to");
            enter("dest_path", row.typed);
            press_in("dest_path", row.key);
            EXPECT_FALSE(dialog->isVisible());
        });
        QTest::keyClick(open_menu(Qt::Key_C), Qt::Key_O);
        EXPECT_EQ(alerts_of([&] { EXPECT_TRUE(QTest::qWaitFor([&] { return seen; })); }), row.said);
        EXPECT_TRUE(*row.copied == '\0' || on_disk(row.copied));
    }
    EXPECT_STREQ(cl_get(gCopyList.get(), 2), "../bare");
}

}  // namespace
}  // namespace dorn
