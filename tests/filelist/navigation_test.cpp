#include "filelist/navigation.h"

#include "app/base.h"
#include "assoc/engine/association.h"
#include "filelist/pane.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace dorn {
namespace {

class Navigation : public WindowTest {
  protected:
    int go(const std::string& path) const {
        return fl_newpath(nullptr, path.c_str());
    }
};

TEST_F(Navigation, UpSelectsTheDirectoryJustLeftAndEndsInTheRoot) {
    sandbox_.mkdir("!b");
    sandbox_.mkdir("*b");  // as a pattern it would mean the other one
    ASSERT_EQ(go(sandbox_.file("*b")), 0);
    fl_up();
    EXPECT_EQ(gDir->path, sandbox_.path());
    EXPECT_EQ(selected(), "*b");
    EXPECT_EQ(gDir->current, index_of("*b"));
    ASSERT_EQ(go("/"), 0);
    const int steps = fl_get_back_count();
    fl_up();
    EXPECT_EQ(fl_get_back_count(), steps);
    EXPECT_NE(row_name(0), "..");
}

TEST_F(Navigation, HistoryKeepsTenStepsEachWay) {
    for (int i = 0; i < 12; ++i)
        sandbox_.mkdir(std::to_string(i));
    for (int i = 0; i < 12; ++i)
        ASSERT_EQ(go(sandbox_.file(std::to_string(i))), 0);
    EXPECT_EQ(fl_get_back_count(), 10);
    for (int i = 0; i < 10; ++i)
        fl_back();
    EXPECT_EQ(gDir->path, sandbox_.file("1"));
    EXPECT_EQ(fl_get_back_count(), 0);
    EXPECT_EQ(fl_get_forward_count(), 10);
    fl_forward();
    EXPECT_EQ(gDir->path, sandbox_.file("2"));
    ASSERT_EQ(go(sandbox_.file("7")), 0);
    EXPECT_EQ(fl_get_forward_count(), 0);
}

TEST_F(Navigation, RefusedMovesSayWhyAndChangeNothing) {
    sandbox_.write("file");
    sandbox_.mkdir("gone");
    ASSERT_EQ(go(sandbox_.file("gone")), 0);
    ASSERT_EQ(go(sandbox_.path()), 0);
    rmdir(sandbox_.file("gone").c_str());
    const std::string before = gDir->path, missing = before + "/missing", file = before + "/file";
    const int steps = fl_get_back_count();
    const std::pair<std::string, std::string> rows[] = {
        {missing, "Error: Directory '" + missing + "', not found"},
        {file, "Error: Path '" + file + "' not found"},
        {before + "//", ""},
        {"", "Error: Directory '', not found"}};
    for (const auto& row : rows)
        EXPECT_EQ(alerts_of([&] { EXPECT_EQ(go(row.first), -1); }), row.second) << row.first;
    EXPECT_EQ(gDir->path, before);
    EXPECT_EQ(fl_get_back_count(), steps);

    static int told = 0;
    fl_set_notify_cb([] { ++told; });
    EXPECT_NE(alerts_of(fl_back), "");
    fl_set_notify_cb(base_update);
    EXPECT_EQ(told, 1) << "the buttons for back and forward follow";
    EXPECT_EQ(gDir->path, before);
    EXPECT_EQ(fl_get_back_count(), steps - 1);
}

TEST_F(Navigation, EveryRoadEntersADirectoryOfAnyName) {
    const std::vector<std::string> names = hostile_names();
    for (const std::string& name : names)
        sandbox_.mkdir(name);
    show_sandbox();
    for (const std::string& name : names) {
        click(name, Qt::NoModifier, true);
        EXPECT_EQ(gDir->path, sandbox_.file(name));
        press(Qt::Key_Home);
        press(Qt::Key_Return);  // ".." is the current row
        EXPECT_EQ(gDir->path, sandbox_.path()) << name;
        EXPECT_NE(gDir->current, -2) << name;
    }
}

TEST_F(Navigation, EnterTakesTheSelectedDirectoryWhicheverEntryIsCurrent) {
    sandbox_.mkdir("one");
    sandbox_.mkdir("two");
    sandbox_.write("zfile");
    show_sandbox();
    const FakePrograms fakes;
    fakes.add("show");
    apat = {
        {"z*", "show one", "", ""}, {"y*", "show two", "", ""}, {"^*FILE", "show three", "", ""}};
    click("one");
    click("zfile", Qt::ControlModifier);
    press(Qt::Key_Return);
    FakePrograms::wait();
    const FakePrograms::Runs every_match{{"one", "zfile"}, {"three", "zfile"}};
    EXPECT_EQ(fakes.runs("show"), every_match);
    EXPECT_EQ(gDir->path, sandbox_.file("one"));
    fl_up();
    click("one");
    click("two", Qt::ControlModifier);
    press(Qt::Key_Return);
    EXPECT_EQ(gDir->path, sandbox_.path());
    apat.clear();
}

TEST_F(Navigation, AnExecutableFileWithoutAnAssociationIsRunWhateverItsName) {
    const FakePrograms fakes;
    std::vector<std::string> names = hostile_names();
    names.push_back("plain-1.0");
    for (const std::string& name : names)
        sandbox_.script(name, "echo run >>done");
    sandbox_.script("data", "touch owned");
    chmod(sandbox_.file("data").c_str(), 0655);  // others may execute it, its owner may not
    show_sandbox();
    for (const std::string& name : names)
        fl_open(index_of(name));
    fl_open(index_of("data"));
    FakePrograms::wait();
    EXPECT_EQ(std::filesystem::file_size(sandbox_.file("done")), 4 * names.size());
    EXPECT_FALSE(std::filesystem::exists(sandbox_.file("owned")));
    const FakePrograms::Runs runs = fakes.runs("orterm");
    EXPECT_EQ(runs.size(), names.size());
    const std::vector<std::string> plain{"-U", "/bin/sh", "-c", "./plain-1.0"};
    EXPECT_EQ(std::count(runs.begin(), runs.end(), plain), 1);
}

}  // namespace
}  // namespace dorn
