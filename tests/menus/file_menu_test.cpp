#include "assoc/engine/association.h"
#include "menus/list_menu.h"
#include "menus/menus.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>

namespace dorn {
namespace {

using Texts = std::vector<std::string>;

class FileMenuTest : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"a.c", "b.h", "c.txt", "plain"})
            sandbox_.write(name);
        sandbox_.mkdir("dir");
        WindowTest::SetUp();
        for (const char* name : {"show", "edit", "lpr"})
            fakes_.add(name);
        apat = {{"*.c", "show open", "show edit", "show view"},
                {"*.h", "show open", "", " "},
                {"*.txt", "", "show edit", "show view"}};
    }
    void TearDown() override {
        apat.clear();
        FakePrograms::wait();
        WindowTest::TearDown();
    }

    // What the program was started with since the last call, each run as one text.
    Texts started(const char* program = "show") const {
        FakePrograms::wait();
        Texts texts;
        for (const std::vector<std::string>& run : fakes_.runs(program)) {
            std::string& text = texts.emplace_back();
            for (const std::string& argument : run)
                text += (text.empty() ? "" : " ") + argument;
        }
        return texts;
    }

    FakePrograms fakes_;
};

TEST_F(FileMenuTest, OpenViewAndEditRunTheAssociationsOfTheSelectedFiles) {
    std::snprintf(gConfig->edit_cmd, sizeof gConfig->edit_cmd, "edit -x @");
    select({"a.c", "b.h", "dir", "plain"});
    menus_run("fm_view");
    EXPECT_EQ(started(), Texts{"view a.c"});
    menus_run("fm_edit");
    EXPECT_EQ(started(), Texts{"edit a.c"});
    EXPECT_EQ(started("edit"), (Texts{"-x b.h", "-x plain"}));
    select({"a.c", "b.h", "c.txt"});
    press(Qt::Key_Return);
    EXPECT_EQ(started(), (Texts{"open a.c", "open b.h"}));
    type("a.c");
    press(Qt::Key_Return);
    EXPECT_EQ(started(), Texts{"open a.c"}) << "Enter confirms what is typed";
    select({});
    fl_goto("b.h", 0, 1);
    menus_run("fm_open");
    EXPECT_EQ(started(), Texts{"open b.h"});
    EXPECT_EQ(gDir->path, sandbox_.path());
}

TEST_F(FileMenuTest, PrintRunsForAllSelectedFilesAndSaysSo) {
    gConfig->print_cmd[0] = '\0';
    const std::tuple<Texts, Texts, std::string> rows[] = {
        {{"a.c", "b.h"}, {"a.c b.h"}, "2 items printed"},
        {{"b.h"}, {"b.h"}, "'b.h' printed"},
        {{"a.c", "dir"}, {}, ""}};  // nothing, and nothing is said
    for (const auto& [names, runs, said] : rows) {
        select(names);
        const std::string before = text_of("status1");
        EXPECT_EQ(menus_run("fm_print"), 0);
        EXPECT_EQ(started("lpr"), runs);
        EXPECT_EQ(text_of("status1"), said.empty() ? before : said);
    }
}

TEST_F(FileMenuTest, TheTerminalAndOtherWindowsAreStartedDirectly) {
    std::snprintf(gConfig->term_cmd, sizeof gConfig->term_cmd, "show");
    menus_run("fm_open_orterm");
    EXPECT_EQ(started(), Texts{""});
    // A window of "this very build" is, here, this test program, which tells of itself.
    const std::string log = sandbox_.file("windows"), program = "/usr/orrin/bin/dorn";
    setenv("DORN_TEST_STARTED", log.c_str(), 1);
    for (const Texts& names : {Texts{"dir"}, {"dir", "a.c"}, {"a.c"}}) {
        select(names);
        menus_run("fm_open_another");
    }
    FakePrograms::wait();
    menus_run("fm_new_window");
    FakePrograms::wait();
    unsetenv("DORN_TEST_STARTED");
    EXPECT_EQ(read_file(log), program + " " + sandbox_.file("dir") + "\n" + program + "\n");
}

TEST_F(FileMenuTest, TheListMenuIsMadeForWhatEverySelectedFileCanBe) {
    const std::string one = "- Print - Cut Copy Delete Rename Symlink - Copy To Move To - Inspect ";
    const std::string several = "- Print - Cut Copy Delete - Copy To Move To - Inspect ";
    const std::pair<Texts, std::string> rows[] = {
        {{"a.c"}, "New Open View Edit Open With " + one},
        {{"c.txt"}, "New View Edit Open With " + one},
        {{"a.c", "b.h"}, "New Open Open With " + several},
        {{"b.h", "c.txt"}, "New Open With " + several},
        {{"a.c", "plain"}, "New Open With " + several},
        {{"a.c", "dir"}, "New Open Open In Window - Cut Copy Delete - Copy To Move To - Inspect "},
        {{}, "New "}};
    const auto labels = [] {
        std::string text;
        QMenu menu;
        lcm_setup(&menu);
        for (const QAction* action : menu.actions())
            text += (action->isSeparator() ? "-" : action->text().remove(u'&').toStdString()) + " ";
        return text;
    };
    QGuiApplication::clipboard()->clear();
    for (const auto& [names, expected] : rows) {
        select(names);
        EXPECT_EQ(labels(), expected);
    }
    select({"dir"});
    menus_run("em_copy");
    select({});
    EXPECT_EQ(labels(), "New Paste ");
}

}  // namespace
}  // namespace dorn
