#include "destmenus/dest_menu.h"

#include "config/config.h"
#include "config/history.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/navigation.h"
#include "filelist/selection.h"
#include "hotlist/hotlist_tree.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
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
        close_menus();
        clear_hotlist();
        fname_set_translation(0, nullptr);
        WindowTest::TearDown();
    }

    static void clear_hotlist() {
        while (!gTree.entries.empty()) {
            const std::string first = gTree.entries.front();
            tree_remove(&gTree, first.c_str());
        }
    }
    static void close_menus() {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
        QApplication::processEvents();
    }
    static DestMenu* top_menu() {
        return dynamic_cast<DestMenu*>(QApplication::activePopupWidget());
    }
    /// Opens Copy To or Move To of the Edit menu by its mnemonic.
    static DestMenu* open_cascade(Qt::Key mnemonic = Qt::Key_C) {
        QApplication::setActiveWindow(window_);  // a question before may have taken that
        press(Qt::Key_E, Qt::AltModifier);
        QTest::keyClick(QApplication::activePopupWidget(), mnemonic);
        EXPECT_TRUE(QTest::qWaitFor([] { return top_menu() != nullptr; }));
        return top_menu();
    }
    /// Opens the submenu of the entry by the keyboard and waits until all is known of it.
    static DestMenu* open_submenu(DestMenu* menu, std::size_t index) {
        menu->go_to(index);
        QTest::keyClick(menu, Qt::Key_Right);
        if (!QTest::qWaitFor([menu] { return top_menu() != menu && top_menu()->finished(); }))
            return nullptr;
        return top_menu();
    }
    static std::string labels(const DestMenu* menu) {
        std::string text;
        for (std::size_t i = 0; i < menu->shown(); ++i) {
            const std::size_t entry = menu->first_shown() + i;
            const char* kind = &"?>-"[static_cast<int>(menu->entries()[entry].kind)];
            text += menu->action_of(entry)->text().toStdString() + *kind + ' ';
        }
        return text;
    }
    /// What the question asks that comes up, which is answered by the button of that label.
    static std::string answer(const QString& button) {
        std::string said;
        const auto answered = [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr) return !said.empty();
            said = (box->windowTitle() + QStringLiteral(": ") + box->text()).toStdString();
            for (QAbstractButton* offered : box->buttons()) {
                if (offered->text() == button) offered->click();
            }
            return false;
        };
        QTimer timer;
        timer.callOnTimeout(answered);
        timer.start(1);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !said.empty(); }));
        return said;
    }
    bool on_disk(const std::string& name) const {
        return QTest::qWaitFor([&] { return std::filesystem::exists(sandbox_.file(name)); });
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
    DestMenu* roots = open_cascade();
    ASSERT_NE(roots, nullptr);
    EXPECT_EQ(roots->actions().front()->text(), QStringLiteral("&Other..."));
    const std::string here = sandbox_.path();
    const std::string expected = here + "/to/> " + here + "/bare/- " + here + "/missing/- ";
    EXPECT_TRUE(QTest::qWaitFor([&] { return labels(roots) == expected; })) << labels(roots);
    const DestMenu* to = open_submenu(roots, 0);
    ASSERT_NE(to, nullptr);
    EXPECT_EQ(labels(to), "9/> 10/- a&&b/- ?x?\u21B5/- ");
    EXPECT_EQ(to->path_of(3), sandbox_.file("to/x\xff\n"));
    EXPECT_EQ(to->current(), 0);
}

TEST_F(DestMenuTest, ADirectoryIsChosenByEnterByAClickOnAPlainOneAndByADoubleClick) {
    struct Row {
        Qt::Key cascade;
        std::vector<std::size_t> way;  // through the entries; the last one is chosen
        void (*choose)(DestMenu* menu, const QPoint& at);
        const char* button;
        std::string question;
        const char* copied;  // null: nothing happens
    };
    const auto enter = [](DestMenu* menu, const QPoint&) { QTest::keyClick(menu, Qt::Key_Return); };
    const auto click = [](DestMenu* menu, const QPoint& at) {
        QTest::mouseClick(menu, Qt::LeftButton, {}, at);
    };
    const auto twice = [](DestMenu* menu, const QPoint& at) {
        QTest::mouseClick(menu, Qt::LeftButton, {}, at);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        QTest::mouseClick(menu, Qt::LeftButton, {}, at);
    };
    const std::string to = sandbox_.file("to");
    const Row rows[] = {
        {Qt::Key_C,
         {0},
         enter,
         "&No",
         "copy: Do you want to copy 2 files to\n'" + to + "'\n",
         nullptr},
        {Qt::Key_C,
         {0, 0},
         enter,
         "&Yes",
         "copy: Do you want to copy 2 files to\n'" + to + "/9'\n",
         "to/9/two"},
        {Qt::Key_C,
         {0, 1},
         click,
         "&Yes",
         "copy: Do you want to copy 2 files to\n'" + to + "/10'\n",
         "to/10/one"},
        {Qt::Key_C,
         {0, 0},
         twice,
         "&No",
         "copy: Do you want to copy 2 files to\n'" + to + "/9'\n",
         nullptr},
        {Qt::Key_M,
         {0},
         twice,
         "&Yes",
         "move: Do you want to move 2 files to\n'" + to + "'\n",
         "to/one"},
    };
    for (const Row& row : rows) {
        const std::string at = row.question;
        DestMenu* menu = open_cascade(row.cascade);
        ASSERT_NE(menu, nullptr) << at;
        for (std::size_t step = 0; step + 1 < row.way.size(); ++step) {
            menu = open_submenu(menu, row.way[step]);
            ASSERT_NE(menu, nullptr) << at;
        }
        const std::size_t last = row.way.back();
        menu->go_to(last);
        row.choose(menu, menu->actionGeometry(menu->action_of(last)).center());
        EXPECT_EQ(answer(QString::fromUtf8(row.button)), row.question);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        if (row.copied != nullptr) {
            EXPECT_TRUE(on_disk(row.copied)) << row.copied;
        }
    }
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !std::filesystem::exists(sandbox_.file("src/two")); }));
}

TEST_F(DestMenuTest, ALongListIsAWindowThatKeysTypingAndItsEndsMove) {
    for (int i = 0; i < 300; ++i)
        sandbox_.mkdir("bare/d" + std::to_string(i));
    DestMenu* menu = open_submenu(open_cascade(), 1);
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->entries().size(), 300U);
    ASSERT_LT(menu->shown(), 200U);
    EXPECT_LE(menu->height(), menu->screen()->availableGeometry().height());
    const auto name = [menu] { return menu->entries()[menu->current().value_or(0)].name; };
    struct Row {
        Qt::Key key;
        const char* typed;
        const char* name;
    };
    const Row rows[] = {
        {Qt::Key_End, "", "d99"},        {Qt::Key_Down, "", "d0"},     {Qt::Key_Up, "", "d99"},
        {Qt::Key_Home, "", "d0"},        {Qt::Key(0), "d25", "d25"},   {Qt::Key_Down, "", "d250"},
        {Qt::Key_PageDown, "", nullptr}, {Qt::Key_PageUp, "", "d250"},
    };
    for (const Row& row : rows) {
        if (row.key != Qt::Key(0)) QTest::keyClick(menu, row.key);
        QTest::keyClicks(menu, QString::fromUtf8(row.typed));
        if (row.name != nullptr) {
            EXPECT_EQ(name(), row.name);
        }
        const std::size_t entry = menu->current().value_or(5000);
        EXPECT_NE(menu->action_of(entry), nullptr) << "out of sight: " << entry;
        EXPECT_EQ(menu->activeAction()->text().toStdString(), name() + "/");
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

TEST_F(DestMenuTest, OtherAsksForADirectoryWithHistoryAndCompletion) {
    fl_unselect_all();
    type("one");
    fl_select_all();
    struct Row {
        QString typed;
        Qt::Key key;        // pressed after typing
        const char* field;  // what is there then; null: the prompt is gone
        const char* copied;
        const char* said;  // by an alert
    };
    const QString here = QString::fromStdString(sandbox_.path());
    const std::string to = sandbox_.file("to/");
    const Row rows[] = {
        {here + QStringLiteral("/t"), Qt::Key_Tab, to.c_str(), nullptr, ""},
        {QString(), Qt::Key_Return, "", nullptr, ""},
        {here + QStringLiteral("/bare"), Qt::Key_Escape, nullptr, nullptr, ""},
        {QStringLiteral("../bare\n"), Qt::Key_Return, nullptr, "bare/one", ""},
        {QStringLiteral("\u20AC"), Qt::Key_Return, nullptr, nullptr,
         "Error: Unable to translate '\u20AC' into 'ISO-8859-1' encoding."},
    };
    for (const Row& row : rows) {
        if (row.said[0] != '\0') {
            std::strcpy(gConfig->alt_encoding, "ISO-8859-1");
            fname_set_translation(kEncodingAlternate, "ISO-8859-1");
        }
        bool seen = false;
        QTimer::singleShot(20, [&] {
            auto* combo = qt_instance<QComboBox>("dest_path");
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (combo == nullptr || dialog == nullptr) return;
            seen = dialog->windowTitle() == QStringLiteral("Copy to");
            combo->setEditText(row.typed);
            QTest::keyClick(combo->lineEdit(), row.key);
            EXPECT_EQ(dialog->isVisible(), row.field != nullptr);
            if (row.field != nullptr) {
                EXPECT_EQ(combo->currentText().toStdString(), row.field);
            }
            if (dialog->isVisible()) dialog->reject();
        });
        DestMenu* menu = open_cascade();
        QTest::keyClick(menu, Qt::Key_O);
        const std::string said =
            alerts_of([&] { EXPECT_TRUE(QTest::qWaitFor([&] { return seen; })); });
        EXPECT_EQ(said, row.said);
        EXPECT_TRUE(seen) << row.typed.toStdString();
        if (row.copied != nullptr) {
            EXPECT_TRUE(on_disk(row.copied));
        }
    }
    EXPECT_STREQ(cl_get(gCopyList.get(), 2), "../bare");
}

}  // namespace
}  // namespace dorn
