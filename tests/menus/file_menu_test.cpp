#include "assoc/engine/association.h"
#include "config/config.h"
#include "dirmodel/dir_entry.h"
#include "filelist/navigation.h"
#include "menus/list_menu.h"
#include "menus/menus.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace dorn {
namespace {

class FileMenuTest : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"a.c", "b.h", "c.txt", "plain"})
            sandbox_.write(name);
        sandbox_.mkdir("dir");
        WindowTest::SetUp();
        fakes_.add("show");
        fakes_.add("edit");
        apat = {{"*.c", "show open", "show edit", "show view"},
                {"*.h", "show open", "", " "},
                {"*.txt", "", "show edit", "show view"}};
    }
    void TearDown() override {
        apat.clear();
        FakePrograms::wait();
        WindowTest::TearDown();
    }

    /// What the program was started with, each run as one text.
    std::vector<std::string> started(const char* program = "show") const {
        FakePrograms::wait();
        std::vector<std::string> texts;
        for (const std::vector<std::string>& run : fakes_.runs(program)) {
            std::string text;
            for (const std::string& argument : run)
                text += (text.empty() ? "" : " ") + argument;
            texts.push_back(text);
        }
        return texts;
    }

    FakePrograms fakes_;
};

using Texts = std::vector<std::string>;

TEST_F(FileMenuTest, OpenViewAndEditRunTheAssociationsOfTheSelectedFiles) {
    std::snprintf(gConfig->edit_cmd, sizeof gConfig->edit_cmd, "edit -x @");
    select({"a.c", "b.h", "dir", "plain"});
    menus_run("fm_view");
    EXPECT_EQ(started(), Texts{"view a.c"});
    menus_run("fm_edit");
    EXPECT_EQ(started(), Texts{"edit a.c"});
    EXPECT_EQ(started("edit"), (Texts{"-x b.h", "-x plain"}));
    select({"a.c", "b.h", "c.txt"});
    menus_run("fm_open");
    EXPECT_EQ(started(), (Texts{"open a.c", "open b.h"}));
    press(Qt::Key_Return);
    EXPECT_EQ(started(), (Texts{"open a.c", "open b.h"}));
    select({});
    fl_goto("b.h", 0, 1);
    menus_run("fm_open");
    EXPECT_EQ(started(), Texts{"open b.h"});
    EXPECT_EQ(gDir->path, sandbox_.path());
}

TEST_F(FileMenuTest, EnterWhileSomethingIsTypedIsTheInterpreters) {
    select({"b.h"});
    type("a.c");
    press(Qt::Key_Return);
    EXPECT_EQ(started(), Texts{"open a.c"});
    type("?b");
    press(Qt::Key_Return);
    EXPECT_EQ(started(), Texts{});
}

TEST_F(FileMenuTest, PrintRunsForAllSelectedFilesAndSaysSo) {
    fakes_.add("lpr");
    gConfig->print_cmd[0] = '\0';
    select({"a.c", "b.h"});
    menus_run("fm_print");
    EXPECT_EQ(started("lpr"), Texts{"a.c b.h"});
    EXPECT_STREQ(gConfig->print_cmd, "lpr @");
    EXPECT_EQ(text_of("status1"), "2 items printed");
    select({"b.h"});
    menus_run("fm_print");
    EXPECT_EQ(text_of("status1"), "'b.h' printed");
    EXPECT_EQ(started("lpr"), Texts{"b.h"});
    select({"a.c", "dir"});
    const std::string before = text_of("status1");
    EXPECT_EQ(menus_run("fm_print"), 0);
    EXPECT_EQ(menus_run("fm_print_directory"), 0);
    EXPECT_EQ(text_of("status1"), before);
    EXPECT_EQ(started("lpr"), Texts{});
}

TEST_F(FileMenuTest, TheTerminalAndOtherWindowsAreStartedDirectly) {
    std::snprintf(gConfig->term_cmd, sizeof gConfig->term_cmd, "show");
    menus_run("fm_open_orterm");
    EXPECT_EQ(started(), Texts{""});
    // A window of "this very build" is, here, this test program, which tells of itself.
    const std::string log = sandbox_.file("windows");
    setenv("DORN_TEST_STARTED", log.c_str(), 1);
    menus_run("fm_new_window");
    select({"dir"});
    menus_run("fm_open_another");
    select({"dir", "a.c"});
    menus_run("fm_open_another");
    select({"a.c"});
    menus_run("fm_open_another");
    FakePrograms::wait();
    unsetenv("DORN_TEST_STARTED");
    std::istringstream stream(read_file(log));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    const std::string program = "/usr/orrin/bin/dorn";
    EXPECT_EQ(lines, (Texts{program, program + " " + sandbox_.file("dir")}));
}

TEST_F(FileMenuTest, TheListMenuKnowsWhatEverySelectedFileCanBe) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"a.c"}, "open view edit "},
        {{"c.txt"}, "view edit "},
        {{"a.c", "b.h"}, "open "},
        {{"b.h", "c.txt"}, ""},
        {{"a.c", "plain"}, ""},
        {{"a.c", "dir"}, "open view edit "},
        {{"dir"}, ""},
        {{}, ""}};
    for (const auto& [names, expected] : rows) {
        select(names);
        ListMenuFacts facts;
        facts.selected = gDir->n_selected;
        facts.directories = gDir->n_selected_dirs;
        lcm_look_at_associations(&facts);
        const std::string can = std::string(facts.can_open ? "open " : "") +
                                (facts.can_view ? "view " : "") + (facts.can_edit ? "edit " : "");
        EXPECT_EQ(can, expected) << selected();
    }
}

}  // namespace
}  // namespace dorn
