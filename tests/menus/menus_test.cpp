#include "menus/menus.h"

#include "config/config.h"
#include "dirmodel/dir_entry.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "hotlist/hotlist_tree.h"
#include "menus/list_menu.h"
#include "menus/menu_build.h"
#include "menus/path_bar.h"
#include "menus/view_toggles.h"
#include "support_gui/window_test.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QMenu>
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

TEST_F(MenusTest, KeysSelectAndTheSelectionDecidesWhatIsEnabled) {
    sandbox_.write("a");
    sandbox_.write("b");
    show_sandbox();
    EXPECT_FALSE(menu_item_enabled("em_unselect_all"));
    EXPECT_FALSE(menu_item_enabled("em_unselect"));
    EXPECT_TRUE(menu_item_enabled("em_select_all"));
    EXPECT_TRUE(menu_item_enabled("em_invert"));
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected(), "a b");
    EXPECT_TRUE(menu_item_enabled("em_unselect_all"));
    press(Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(selected(), "");
    press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(selected(), "a b");
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
    EXPECT_FALSE(menu_item_enabled("gm_home"));
    EXPECT_FALSE(menu_item_enabled("gm_forward"));
    EXPECT_FALSE(button("tb_home")->isEnabled());
    EXPECT_FALSE(button("tb_forward")->isEnabled());
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(gDir->path, sandbox_.path());
    EXPECT_TRUE(menu_item_enabled("gm_forward"));
    button("tb_forward")->click();
    EXPECT_EQ(gDir->path, home);
    press(Qt::Key_Backspace);
    EXPECT_EQ(gDir->path, sandbox_.path());
    fl_newpath(nullptr, "/");
    EXPECT_FALSE(menu_item_enabled("gm_up"));
    EXPECT_FALSE(button("tb_up")->isEnabled());
    unsetenv("HOME");
    tb_update();
    EXPECT_FALSE(button("tb_home")->isEnabled());
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
    EXPECT_FALSE(menu_item_enabled("hm_remove"));
    sandbox_.mkdir("R&D\tnew");
    const std::string odd = sandbox_.file("R&D\tnew");
    ASSERT_EQ(fl_newpath(nullptr, odd.c_str()), 0);
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_FALSE(menu_item_enabled("hm_add"));
    EXPECT_TRUE(menu_item_enabled("hm_remove"));
    EXPECT_FALSE(button("tb_add")->isEnabled());
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(gTree.entries, std::vector<std::string>{odd});

    show_sandbox();
    auto* menu = window_->findChild<QMenu*>(QStringLiteral("hotlist_menu"));
    Q_EMIT menu->aboutToShow();
    const QList<QAction*> items = menu->actions();
    ASSERT_EQ(items.size(), 4);
    EXPECT_TRUE(items[0]->isEnabled());
    EXPECT_FALSE(items[1]->isEnabled()) << "the shown directory is no bookmark";
    EXPECT_EQ(items[3]->text(), ui_label_text(odd.c_str()));
    items[3]->trigger();
    EXPECT_EQ(gDir->path, odd);
    press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(gTree.entries.empty());
    EXPECT_TRUE(button("tb_add")->isEnabled());
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
    for (const auto& [name, instance] :
         {std::pair{"vm_hotlist", "hotlist_panel"}, {"vm_clip_tb", "clip_tb"}}) {
        const QWidget* part = qt(w_instance(instance));
        const bool shown = part->isVisible();
        EXPECT_EQ(checked(name), shown);
        menus_run(name);
        EXPECT_EQ(part->isVisible(), !shown);
        EXPECT_EQ(checked(name), !shown);
        menus_run(name);
    }
    menu->close();
    qt(w_instance("tree"))->setFocus();
    button("hl_close")->click();
    EXPECT_EQ(gConfig->show_hotlist, 0);
    EXPECT_EQ(QApplication::focusWidget(), qt(w_instance("filelist")));
    button("tb_hotlist")->click();
    EXPECT_TRUE(qt(w_instance("hotlist_panel"))->isVisible());
    EXPECT_EQ(gConfig->show_hotlist, 1);
}

TEST_F(MenusTest, TheListMenuIsMadeForTheSelection) {
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
    const std::tuple<const char*, ListMenuFacts, const char*> rows[] = {
        {"", {0, 0, true, true, true, false}, "New"},
        {"", {0, 0, true, true, true, true}, "New Paste"},
        {"file",
         {0, 0, true, true, false, false},
         "New Open View Open With - Print - Cut Copy Delete Rename Symlink - "
         "Copy To Move To - Inspect"},
        {"file other",
         {0, 0, true, false, true, true},
         "New Open Edit Open With - Print - Cut Copy Paste Delete - Copy To Move To - "
         "Inspect"},
        {"dir file",
         {0, 0, false, true, true, false},
         "New Open Open In Window - Cut Copy Delete - Copy To Move To - Inspect"}};
    for (const auto& [select, facts, items] : rows) {
        menus_run("em_unselect_all");
        for (const QString& name : QString::fromLatin1(select).split(u' ', Qt::SkipEmptyParts))
            click(name.toStdString(), Qt::ControlModifier);
        extra = facts;
        QMenu menu;
        lcm_setup(&menu);
        EXPECT_EQ(labels(&menu), items) << select;
    }
}

TEST_F(MenusTest, TheQuickReferenceListsTheCommandsAndClosesByEscapeOrWithTheMainWindow) {
    using Ending = void (*)(QDialog * window);
    const Ending endings[] = {[](QDialog* window) { QTest::keyClick(window, Qt::Key_Escape); },
                              [](QDialog*) { window_->hide(); }};
    for (const Ending end : endings) {
        QApplication::setActiveWindow(window_);
        press(Qt::Key_F1);
        auto* window = qobject_cast<QDialog*>(qt(w_instance("quickref")));
        ASSERT_NE(window, nullptr);
        auto* list = window->findChild<QTreeWidget*>(QStringLiteral("quickref_list"));
        for (const auto& [command, key] : {std::pair{"Select > All", "Ctrl-A"},
                                           {"Inspect", "F9"},
                                           {"Print Directory", ""},
                                           {"Find backward", "?"}}) {
            const auto found =
                list->findItems(QLatin1String(command), Qt::MatchExactly | Qt::MatchRecursive);
            ASSERT_EQ(found.size(), 1) << command;
            EXPECT_EQ(found.front()->text(1), QLatin1String(key));
        }
        end(window);
        EXPECT_TRUE(QTest::qWaitFor([] { return w_instance("quickref") == nullptr; }));
        window_->show();
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
