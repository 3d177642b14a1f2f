#include "menus/menus.h"

#include "config/config.h"
#include "dirmodel/dir_entry.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "hotlist/hotlist_tree.h"
#include "menus/list_menu.h"
#include "menus/path_bar.h"
#include "menus/view_toggles.h"
#include "support_gui/window_test.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace dorn {
namespace {

class MenusTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        QApplication::setActiveWindow(window_);  // a menu closed before may have taken that
        qt(w_instance("filelist"))->setFocus();
        while (!gTree.entries.empty()) {
            const std::string first = gTree.entries.front();
            tree_remove(&gTree, first.c_str());
        }
        tb_update();
    }
    void TearDown() override {
        if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
        lcm_set_facts_cb(lcm_look_at_associations);
        WindowTest::TearDown();
    }

    static QMenu* opened(const char* name) {
        auto* menu = window_->findChild<QMenu*>(QLatin1String(name));
        if (menu != nullptr) Q_EMIT menu->aboutToShow();
        return menu;
    }
    static QAction* item(const char* menu, const char* name) {
        QMenu* top = opened(menu);
        QList<QMenu*> menus = top->findChildren<QMenu*>();
        menus.append(top);
        for (const QMenu* each : menus) {
            for (QAction* action : each->actions()) {
                if (action->objectName() == QLatin1String(name)) return action;
            }
        }
        return nullptr;
    }
    static bool enabled(const char* menu, const char* name) {
        const QAction* action = item(menu, name);
        EXPECT_NE(action, nullptr) << name;
        return action != nullptr && action->isEnabled();
    }
    static QToolButton* button(const char* name) {
        return qt_instance<QToolButton>(name);
    }
    static std::string labels(const QMenu* menu) {
        std::string text;
        for (const QAction* action : menu->actions()) {
            if (!text.empty()) text += ' ';
            text += action->isSeparator() ? "-" : action->text().remove(u'&').toStdString();
        }
        return text;
    }
};

TEST_F(MenusTest, TheMenuBarOpensByItsMnemonicsAndShowsTheKeys) {
    for (const auto& [key, name] :
         std::vector<std::pair<Qt::Key, const char*>>{{Qt::Key_F, "file_menu"},
                                                      {Qt::Key_E, "edit_menu"},
                                                      {Qt::Key_G, "go_menu"},
                                                      {Qt::Key_B, "hotlist_menu"},
                                                      {Qt::Key_H, "help_menu"}}) {
        press(key, Qt::AltModifier);
        auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(popup, nullptr) << name;
        EXPECT_EQ(popup->objectName(), QLatin1String(name));
        EXPECT_FALSE(popup->isEmpty());
        QTest::keyClick(popup, Qt::Key_Escape);
        QTest::keyClick(window_->menuBar(), Qt::Key_Escape);
    }
    EXPECT_EQ(labels(opened("file_menu")),
              "New - Open\tRet Open In Window\tCtrl-Ret View\tAlt-V Edit\tCtrl-E "
              "Open With...\tShift-Ret - Open Terminal\tCtrl-T - Refresh\tF5 - Print\tCtrl-P "
              "Print Directory - Exit\tAlt-X");
    EXPECT_EQ(labels(opened("edit_menu")),
              "Select Unselect Invert Selection\tCtrl-I - Associations...\tF11");
    EXPECT_EQ(labels(opened("go_menu")),
              "Back\tAlt-<- Forward\tAlt--> Up One Level\tBksp Home\tF6");
}

TEST_F(MenusTest, KeysSelectAndTheSelectionDecidesWhatIsEnabled) {
    sandbox_.write("a");
    sandbox_.write("b");
    show_sandbox();
    EXPECT_FALSE(enabled("edit_menu", "em_unselect_all"));
    EXPECT_FALSE(enabled("edit_menu", "em_unselect"));
    EXPECT_TRUE(enabled("edit_menu", "em_select_all"));
    EXPECT_TRUE(enabled("edit_menu", "em_invert"));
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected(), "a b");
    EXPECT_TRUE(enabled("edit_menu", "em_unselect_all"));
    press(Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(selected(), "");
    press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(selected(), "a b");
    item("edit_menu", "em_invert")->trigger();
    EXPECT_EQ(selected(), "");
}

TEST_F(MenusTest, KeysGoAndWhatLeadsNowhereIsDisabled) {
    sandbox_.mkdir("home");
    const std::string home = sandbox_.file("home");
    const std::string before = std::getenv("HOME");
    setenv("HOME", home.c_str(), 1);
    show_sandbox();
    EXPECT_TRUE(button("tb_home")->isEnabled());
    press(Qt::Key_F6);
    EXPECT_EQ(gDir->path, home);
    EXPECT_FALSE(enabled("go_menu", "gm_home"));
    EXPECT_FALSE(enabled("go_menu", "gm_forward"));
    EXPECT_FALSE(button("tb_home")->isEnabled());
    EXPECT_FALSE(button("tb_forward")->isEnabled());
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(gDir->path, sandbox_.path());
    EXPECT_TRUE(enabled("go_menu", "gm_forward"));
    button("tb_forward")->click();
    EXPECT_EQ(gDir->path, home);
    press(Qt::Key_Backspace);
    EXPECT_EQ(gDir->path, sandbox_.path());
    fl_newpath(nullptr, "/");
    EXPECT_FALSE(enabled("go_menu", "gm_up"));
    EXPECT_FALSE(button("tb_up")->isEnabled());
    unsetenv("HOME");
    tb_update();
    EXPECT_FALSE(button("tb_home")->isEnabled());
    EXPECT_TRUE(enabled("go_menu", "gm_home"));
    press(Qt::Key_F6);
    EXPECT_EQ(gDir->path, "/");
    setenv("HOME", before.c_str(), 1);
}

TEST_F(MenusTest, ABlockedWindowRunsNoCommand) {
    sandbox_.write("a");
    show_sandbox();
    const ScopedBlock blocked(handle(window_));
    EXPECT_EQ(menus_run("em_select_all"), -1);
    EXPECT_EQ(menus_run("no such command"), -1);
    EXPECT_EQ(selected(), "");
}

TEST_F(MenusTest, BookmarksAreAddedRemovedAndListed) {
    EXPECT_TRUE(enabled("hotlist_menu", "hm_add"));
    EXPECT_FALSE(enabled("hotlist_menu", "hm_remove"));
    EXPECT_EQ(opened("hotlist_menu")->actions().size(), 2);
    sandbox_.mkdir("R&D\tnew");
    const std::string odd = sandbox_.file("R&D\tnew");
    ASSERT_EQ(fl_newpath(nullptr, odd.c_str()), 0);
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(gTree.entries, std::vector<std::string>{odd});
    EXPECT_FALSE(enabled("hotlist_menu", "hm_add"));
    EXPECT_TRUE(enabled("hotlist_menu", "hm_remove"));
    EXPECT_FALSE(button("tb_add")->isEnabled());
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(gTree.entries.size(), 1u);

    show_sandbox();
    const QList<QAction*> items = opened("hotlist_menu")->actions();
    ASSERT_EQ(items.size(), 4);
    EXPECT_TRUE(items[2]->isSeparator());
    EXPECT_EQ(items[3]->text(), ui_label_text(odd.c_str()));
    EXPECT_TRUE(items[3]->text().contains(QStringLiteral("R&&D")));
    EXPECT_FALSE(items[3]->text().contains(u'\t'));
    items[3]->trigger();
    EXPECT_EQ(gDir->path, odd);
    press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(gTree.entries.empty());
    EXPECT_TRUE(button("tb_add")->isEnabled());
}

TEST_F(MenusTest, TheHotlistPaneItsButtonAndItsRecordGoTogether) {
    QWidget* panel = qt(w_instance("hotlist_panel"));
    ASSERT_TRUE(panel->isVisible());
    EXPECT_TRUE(button("tb_hotlist")->isChecked());
    qt(w_instance("tree"))->setFocus();
    button("hl_close")->click();
    EXPECT_TRUE(panel->isHidden());
    EXPECT_EQ(gConfig->show_hotlist, 0);
    EXPECT_FALSE(button("tb_hotlist")->isChecked());
    EXPECT_EQ(QApplication::focusWidget(), qt(w_instance("filelist")));
    button("tb_hotlist")->click();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(gConfig->show_hotlist, 1);
    EXPECT_TRUE(button("tb_hotlist")->isChecked());
}

TEST_F(MenusTest, TheViewMenuOpensOnTheToolbarAndItsMarksFollowTheWindow) {
    QWidget* area = qt(w_instance("nav_tb"));
    QContextMenuEvent press_menu(QContextMenuEvent::Mouse, QPoint(1, 1),
                                 area->mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(area, &press_menu);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(labels(menu), "Toolbars Icon Pane Hotlist Pane Status Pane");
    auto checked = [menu](const char* name) {
        menus_open_view_menu(0, 0);
        return menu->findChild<QAction*>(QLatin1String(name))->isChecked();
    };
    EXPECT_TRUE(checked("vm_hotlist"));
    menus_run("vm_hotlist");
    EXPECT_FALSE(checked("vm_hotlist"));
    menus_run("vm_hotlist");

    QWidget* clipboard = qt(w_instance("clip_tb"));
    const bool shown = clipboard->isVisible();
    EXPECT_EQ(checked("vm_clip_tb"), shown);
    menus_run("vm_clip_tb");
    EXPECT_EQ(clipboard->isVisible(), !shown);
    EXPECT_EQ(checked("vm_clip_tb"), !shown);
    menus_run("vm_clip_tb");
    for (const char* inert : {"vm_nav_tb", "vm_misc_tb", "vm_hotlist_tb", "vm_path_tb",
                              "vm_filter_tb", "vm_icon", "vm_status"}) {
        EXPECT_TRUE(checked(inert)) << inert;
        EXPECT_EQ(menus_run(inert), 0);
        EXPECT_TRUE(checked(inert)) << inert;
    }
    for (const char* inert : {"vm_text_and_images", "vm_text_only", "vm_images_only"})
        EXPECT_EQ(menus_run(inert), 0);
    menu->close();
}

TEST_F(MenusTest, TheLineAboveTheStatusPaneFollowsTheWindow) {
    for (const QSize size : {QSize(700, 500), QSize(640, 420)}) {
        window_->resize(size);
        QCoreApplication::processEvents();
        const QRect line = qt(w_instance("bottom_tbg"))->geometry();
        EXPECT_EQ(line.x(), 0);  // a left edge of 2 pixels is overlapped wholly
        EXPECT_EQ(line.bottom() + 1, qt(w_instance("status_pane"))->y());
        EXPECT_EQ(line.x() + line.width(), qt(w_instance("right_tbg"))->x() + 1);
    }
    QWidget* left = qt(w_instance("left_tbg"));
    left->setFixedWidth(6);
    QCoreApplication::processEvents();
    EXPECT_EQ(qt(w_instance("bottom_tbg"))->x(), 5);
    left->setFixedWidth(2);
}

TEST_F(MenusTest, TheListMenuIsMadeForTheSelection) {
    int runs = 0;
    static int* counter;
    counter = &runs;
    for (const char* name : {"lcm_new_file", "lcm_new_folder", "fm_open_with", "em_cut", "em_copy",
                             "em_paste", "em_delete", "fm_inspect", "fm_symlink"})
        menus_register(name, [] { return ++*counter; });
    sandbox_.write("file");
    sandbox_.write("other");
    sandbox_.mkdir("dir");
    show_sandbox();
    static ListMenuFacts extra;
    lcm_set_facts_cb([](ListMenuFacts* facts) {
        facts->can_open = extra.can_open;
        facts->can_view = extra.can_view;
        facts->can_edit = extra.can_edit;
        facts->can_paste = extra.can_paste;
    });
    struct Row {
        const char* select;
        ListMenuFacts facts;
        const char* items;
    };
    const std::string head = "New ";
    for (const Row& row : std::vector<Row>{
             {"", {}, "New"},
             {"", {0, 0, true, true, true, true}, "New Paste"},
             {"file", {}, "New Open With - Print - Cut Copy Delete Rename Symlink - Inspect"},
             {"file",
              {0, 0, true, true, false, false},
              "New Open View Open With - Print - Cut Copy Delete Rename Symlink - Inspect"},
             {"file other",
              {0, 0, true, false, true, true},
              "New Open Edit Open With - Print - Cut Copy Paste Delete - Inspect"},
             {"dir", {}, "New Open Open In Window - Cut Copy Delete Rename Symlink - Inspect"},
             {"dir file",
              {0, 0, false, true, true, false},
              "New Open Open In Window - Cut Copy Delete - Inspect"}}) {
        menus_run("em_unselect_all");
        for (const QString& name : QString::fromLatin1(row.select).split(u' ', Qt::SkipEmptyParts))
            click(name.toStdString(), Qt::ControlModifier);
        extra = row.facts;
        QMenu menu;
        lcm_setup(&menu);
        EXPECT_EQ(labels(&menu), row.items) << row.select;
    }
    for (const char* name : {"lcm_new_file", "lcm_new_folder", "fm_open_with", "em_cut", "em_copy",
                             "em_paste", "em_delete", "fm_inspect", "fm_symlink"})
        menus_register(name, nullptr);
    menus_run("em_unselect_all");
    menus_open_list_menu(10, 10);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(MenusTest, TheQuickReferenceListsWhatThereIsAndClosesByEscape) {
    press(Qt::Key_F1);
    auto* window = qobject_cast<QDialog*>(qt(w_instance("quickref")));
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->isModal());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Quick Reference"));
    auto* list = window->findChild<QTreeWidget*>(QStringLiteral("quickref_list"));
    auto key_of = [list](const char* command) {
        const auto found =
            list->findItems(QLatin1String(command), Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? QStringLiteral("none") : found.front()->text(1);
    };
    EXPECT_EQ(key_of("Select > All"), QStringLiteral("Ctrl-A"));
    EXPECT_EQ(key_of("Home"), QStringLiteral("F6"));
    EXPECT_EQ(key_of("Find backward"), QStringLiteral("?"));
    EXPECT_EQ(key_of("Inspect"), QStringLiteral("none"));
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([] { return w_instance("quickref") == nullptr; }));
}

TEST_F(MenusTest, ToolTipsNameTheKeysOfTheMenus) {
    EXPECT_EQ(button("tb_back")->toolTip(), QStringLiteral("Back (Alt-<-)"));
    EXPECT_EQ(button("tb_refresh")->toolTip(), QStringLiteral("Refresh (F5)"));
    EXPECT_EQ(button("tb_hotlist")->toolTip(), QStringLiteral("Show Bookmarks"));
    for (QToolButton* each : window_->findChildren<QToolButton*>()) {
        if (each->objectName().startsWith(QStringLiteral("tb_"))) {
            EXPECT_FALSE(each->icon().isNull()) << each->objectName().toStdString();
        }
    }
}

TEST_F(MenusTest, TabWalksThroughEveryPart) {
    fl_newpath(nullptr, "/");
    show_sandbox();
    qt(w_instance("filelist"))->setFocus();
    std::string walk;
    for (int i = 0; i < 10; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        walk += QApplication::focusWidget()->objectName().toStdString() + " ";
    }
    EXPECT_EQ(walk,
              "tree hl_close tb_back tb_up tb_home tb_refresh tb_add tb_hotlist tb_curpath "
              "tb_filespec ");
}

}  // namespace
}  // namespace dorn
