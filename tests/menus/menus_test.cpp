#include "menus/menus.h"

#include "destmenus/dest_commands.h"
#include "hotlist/hotlist_tree.h"
#include "menus/menu_build.h"
#include "menus/path_bar.h"
#include "menus/view_toggles.h"
#include "support_gui/window_test.h"
#include "ui/dialogs.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QTreeWidget>

namespace dorn {
namespace {

class MenusTest : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"a", "b"})
            sandbox_.write(name);
        for (const char* name : {"dir", "home"})
            sandbox_.mkdir(name);
        WindowTest::SetUp();
        qt(w_instance("filelist"))->setFocus();
        while (!gTree.entries.empty())
            tree_remove(&gTree, std::string(gTree.entries.front()).c_str());
        tb_update();
    }
    // Which of these items of the menu bar and buttons are enabled.
    static std::string enabled(std::initializer_list<const char*> names) {
        std::string text;
        for (const std::string name : names) {
            const bool is_button = name.starts_with("tb_");
            if (is_button ? qt(w_instance(name.c_str()))->isEnabled() : menu_item_enabled(name))
                text += name + " ";
        }
        return text;
    }
};

TEST_F(MenusTest, KeysSelectAndTheSelectionDecidesWhatIsEnabled) {
    const auto states = [] {
        return enabled({"em_unselect_all", "em_unselect", "em_select_all", "em_invert"});
    };
    EXPECT_EQ(states(), "em_select_all em_invert ");
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected(), "a b dir home");
    EXPECT_EQ(states(), "em_unselect_all em_unselect em_select_all em_invert ");
    press(Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(selected(), "");
    press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(selected(), "a b dir home");
    const ScopedBlock blocked(handle(window_));
    EXPECT_EQ(menus_run("em_unselect_all"), -1);
    EXPECT_EQ(menus_run("no such command"), -1);
    EXPECT_EQ(selected(), "a b dir home");
}

TEST_F(MenusTest, KeysGoAndWhatLeadsNowhereIsDisabled) {
    const auto states = [] {
        return enabled({"gm_up", "tb_up", "gm_home", "tb_home", "gm_forward", "tb_forward"});
    };
    const std::string home = sandbox_.file("home"), before = std::getenv("HOME");
    setenv("HOME", home.c_str(), 1);
    press(Qt::Key_F6);
    EXPECT_EQ(gDir->path, home);
    EXPECT_EQ(states(), "gm_up tb_up ");
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(gDir->path, sandbox_.path());
    EXPECT_EQ(states(), "gm_up tb_up gm_home tb_home gm_forward tb_forward ");
    push("tb_forward");
    EXPECT_EQ(gDir->path, home);
    press(Qt::Key_Backspace);
    EXPECT_EQ(gDir->path, sandbox_.path());
    fl_newpath(nullptr, "/");
    EXPECT_EQ(states(), "gm_home tb_home ");
    unsetenv("HOME");
    tb_update();
    EXPECT_FALSE(qt(w_instance("tb_home"))->isEnabled());
    press(Qt::Key_F6);
    EXPECT_EQ(gDir->path, "/");
    setenv("HOME", before.c_str(), 1);
}

TEST_F(MenusTest, BookmarksAreAddedRemovedAndListed) {
    const auto states = [] { return enabled({"hm_add", "tb_add", "hm_remove"}); };
    sandbox_.mkdir("R&D\tnew");
    const std::string odd = sandbox_.file("R&D\tnew");
    ASSERT_EQ(fl_newpath(nullptr, odd.c_str()), 0);
    EXPECT_EQ(states(), "hm_add tb_add ");
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(states(), "hm_remove ");
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(gTree.entries, std::vector<std::string>{odd});

    show_sandbox();
    auto* menu = window_->findChild<QMenu*>(QStringLiteral("hotlist_menu"));
    Q_EMIT menu->aboutToShow();
    const QList<QAction*> items = menu->actions();
    ASSERT_EQ(items.size(), 4);
    EXPECT_TRUE(items[0]->isEnabled());
    EXPECT_FALSE(items[1]->isEnabled()) << "the shown directory is no bookmark";
    EXPECT_EQ(items[3]->text(), ui_text(odd.c_str()).replace(u'&', QStringLiteral("&&")));
    items[3]->trigger();
    EXPECT_EQ(gDir->path, odd);
    press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(gTree.entries.empty());
    EXPECT_EQ(states(), "hm_add tb_add ");
}

TEST_F(MenusTest, TheViewMenuOpensOnTheToolbarAndItsMarksFollowTheWindow) {
    QWidget* area = qt(w_instance("nav_tb"));
    QContextMenuEvent press_menu(QContextMenuEvent::Mouse, QPoint(1, 1),
                                 area->mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(area, &press_menu);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    const auto checked = [menu](const char* name) {
        menus_open_view_menu(0, 0);
        return menu->findChild<QAction*>(QLatin1String(name))->isChecked();
    };
    for (const auto& [name, instance] :
         {std::pair{"vm_hotlist", "hotlist_panel"}, {"vm_clip_tb", "clip_tb"}}) {
        const QWidget* part = qt(w_instance(instance));
        for (int time = 0; time < 2; ++time) {
            const bool shown = part->isVisible();
            EXPECT_EQ(checked(name), shown);
            menus_run(name);
            EXPECT_EQ(part->isVisible(), !shown);
        }
    }
    menu->close();
    qt(w_instance("tree"))->setFocus();
    push("hl_close");
    EXPECT_EQ(gConfig->show_hotlist, 0);
    EXPECT_EQ(QApplication::focusWidget(), qt(w_instance("filelist")));
    push("tb_hotlist");
    EXPECT_TRUE(qt(w_instance("hotlist_panel"))->isVisible());
    EXPECT_EQ(gConfig->show_hotlist, 1);
}

TEST_F(MenusTest, ARefreshWaitsForAnOpenMenuAndForWhatIsChosenFromIt) {
    const auto ask_behind_a_menu = [] {
        select({"a"});
        menus_open_list_menu(0, 0);
        fl_refresh();
        EXPECT_EQ(selected(), "a");
        QApplication::activePopupWidget()->close();
    };
    ask_behind_a_menu();
    EXPECT_TRUE(QTest::qWaitFor([] { return selected().empty(); }));

    static std::string seen;
    ask_behind_a_menu();
    re_route([](const char*) { seen = selected(); });
    EXPECT_TRUE(QTest::qWaitFor([] { return selected().empty(); }));
    EXPECT_EQ(seen, "a");

    ask_behind_a_menu();
    menus_run("em_select_all");
    QCoreApplication::processEvents();
    EXPECT_NE(selected(), "") << "cleared by the refresh";
}

TEST_F(MenusTest, TheQuickReferenceListsTheCommandsAndClosesByEscapeOrWithTheMainWindow) {
    for (const bool by_key : {true, false}) {
        press(Qt::Key_F1);
        const auto* list = qt_instance<QTreeWidget>("quickref_list");
        ASSERT_NE(list, nullptr);
        for (const auto& [command, key] : {std::pair{"Select > All", "Ctrl-A"},
                                           {"Open In Window", "Ctrl-Ret"},
                                           {"Back", "Alt-<-"},
                                           {"Print Directory", ""},
                                           {"Find backward", "?"}}) {
            const auto found =
                list->findItems(QLatin1String(command), Qt::MatchExactly | Qt::MatchRecursive);
            ASSERT_EQ(found.size(), 1) << command;
            EXPECT_EQ(found.front()->text(1), QLatin1String(key));
        }
        by_key ? press_in("quickref", Qt::Key_Escape) : window_->hide();
        EXPECT_TRUE(QTest::qWaitFor([] { return w_instance("quickref") == nullptr; }));
        window_->show();
        QApplication::setActiveWindow(window_);
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
