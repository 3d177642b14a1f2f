#include "menus/path_bar.h"

#include "config/history.h"
#include "dirmodel/path_completion.h"
#include "support_gui/window_test.h"
#include "ui/combo.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QWheelEvent>

namespace dorn {
namespace {

std::time_t sNow;

class PathBarTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        path_ = qt_instance<QComboBox>("tb_curpath");
        path_bar_set_clock([] { return sNow; });
        *gPathList = HistoryList{};
        base_ = std::string(sandbox_.path()) + "/";
    }
    void TearDown() override {
        path_bar_set_clock(nullptr);
        WindowTest::TearDown();
    }

    static void remember(const std::string& entry) {
        cl_add(gPathList.get(), entry.c_str());
        cl_apply(gPathList.get(), w_instance("tb_curpath"));
    }
    // Types in place of what the path field holds; the text that it holds then.
    std::string edit(const std::string& text) {
        path_->setFocus();
        path_->lineEdit()->selectAll();
        path_->lineEdit()->del();
        return add(text);
    }
    std::string add(const std::string& text) {
        QTest::keyClicks(path_, QString::fromStdString(text));
        return text_of("tb_curpath");
    }
    static void enter_path() {
        press_in("tb_curpath", Qt::Key_Return);
    }
    // Presses Escape twice, `seconds` apart, maybe another key between; the text of the field then.
    static std::string escape_twice(int seconds = 1, Qt::Key between = Qt::Key_unknown) {
        sNow += 100;
        press_in("tb_curpath", Qt::Key_Escape);
        if (between != Qt::Key_unknown) press_in("tb_curpath", between);
        sNow += seconds;
        press_in("tb_curpath", Qt::Key_Escape);
        return text_of("tb_curpath");
    }

    QComboBox* path_ = nullptr;
    std::string base_;
};

TEST_F(PathBarTest, EnterGoesToThePathAndRemembersItUnlessThereIsNone) {
    const std::string missing = base_ + "missing";
    edit(missing);
    EXPECT_EQ(alerts_of(enter_path), "Error: Directory '" + missing + "', not found");
    EXPECT_EQ(text_of("tb_curpath"), missing);
    EXPECT_EQ(gDir->path, sandbox_.path());
    EXPECT_EQ(gPathList->count, 0);
    QApplication::setActiveWindow(window_);  // the alert had the keyboard
    sandbox_.mkdir("sub");
    edit(base_ + "sub/");
    enter_path();
    EXPECT_EQ(gDir->path, base_ + "sub");
    EXPECT_EQ(text_of("tb_curpath"), base_ + "sub");
    EXPECT_EQ(path_->itemText(0).toStdString(), base_ + "sub");
    EXPECT_EQ(QApplication::focusWidget(), qt(w_instance("filelist")));
}

TEST_F(PathBarTest, APathThatCannotBeShownSurvivesAsLongAsItIsNotEdited) {
    const std::string odd = "in\nvalid\xFF";
    sandbox_.mkdir(odd);
    sandbox_.mkdir(odd + "/sub");
    ASSERT_EQ(fl_newpath(nullptr, (base_ + odd).c_str()), 0);
    path_->setFocus();
    EXPECT_TRUE(escape_twice().ends_with('/'));
    ASSERT_EQ(fl_newpath(nullptr, sandbox_.path()), 0);
    tb_curpath_set_text((base_ + odd).c_str());
    path_->setFocus();
    enter_path();
    EXPECT_EQ(gDir->path, base_ + odd);
}

TEST_F(PathBarTest, OnlyEnterAndAChoiceFromTheListGoAnywhere) {
    for (const char* name : {"one", "two"}) {
        sandbox_.mkdir(name);
        remember(base_ + name);
    }
    edit(base_ + "one");
    qt(w_instance("filelist"))->setFocus();
    path_->setFocus();
    QWheelEvent wheel(QPointF(5, 5), path_->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(path_, &wheel);
    press_in("tb_curpath", Qt::Key_Down);
    ASSERT_TRUE(path_->view()->isVisible());
    EXPECT_EQ(gDir->path, sandbox_.path());
    path_->view()->setCurrentIndex(path_->model()->index(1, 0));
    QTest::keyClick(path_->view(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return gDir->path == base_ + "one"; })) << gDir->path;
}

TEST_F(PathBarTest, TypingCompletesFromTheHistory) {
    const auto color = [this] { return path_->lineEdit()->palette().color(QPalette::Text); };
    remember("/srv/data/one");
    EXPECT_EQ(edit("/sr"), "/srv/data/one");
    EXPECT_EQ(path_->lineEdit()->selectedText(), QStringLiteral("v/data/one"));
    EXPECT_EQ(path_->lineEdit()->cursorPosition(), 3);
    EXPECT_EQ(color(), path_->palette().color(QPalette::Text));
    EXPECT_EQ(add("v/x"), "/srv/x");
    press_in("tb_curpath", Qt::Key_Backspace);
    EXPECT_EQ(text_of("tb_curpath"), "/srv/") << "not completed again while deleting";
    path_->lineEdit()->setCursorPosition(0);
    EXPECT_EQ(add("/"), "//srv/") << "nor away from the end";
    remember("http://example.net/index");
    EXPECT_EQ(edit("ftp://exa"), "ftp://example.net/index") << "a typed prefix stays in front";
    EXPECT_EQ(color(), QColor(0, 0, 255));
    const uint32_t options = gOptions;
    gOptions &= ~kOptionInlineCompletion;
    EXPECT_EQ(edit("/sr"), "/sr");
    gOptions = options;
}

TEST_F(PathBarTest, EscapeTwiceCompletesTheDirectory) {
    for (const char* name : {"lib", "local", ".dot", "only", "only/child"})
        sandbox_.mkdir(name);
    sandbox_.write("file");
    sandbox_.link("lib", "link");
    sandbox_.link("nowhere", "broken");
    const std::pair<const char*, const char*> rows[] = {
        {"lib", "lib/"},          {"lo", "local/"}, {"l", "l"},
        {"link", "link/"},        {".", ".dot/"},   {"fi", nullptr},
        {"only/", "only/child/"}, {"br", nullptr},  {"none/", nullptr},
        {"only/child/", nullptr}, {"", nullptr}};
    for (const auto& [typed, found] : rows) {
        const std::string path = base_ + typed;
        const auto expected = found == nullptr ? std::nullopt : std::optional(base_ + found);
        EXPECT_EQ(find_matching_dir(path.c_str()), expected) << typed;
        edit(path);
        EXPECT_EQ(escape_twice(), expected.value_or(path)) << typed;
        EXPECT_EQ(path_->lineEdit()->cursorPosition(), path_->currentText().size());
    }
    EXPECT_EQ(find_matching_dir("/us"), "/usr/");
    for (const std::string& none :
         {std::string("us"), std::string(), base_ + std::string(1300, 'x')})
        EXPECT_EQ(find_matching_dir(none.c_str()), std::nullopt);
    edit(base_ + "lo");
    EXPECT_EQ(escape_twice(3), base_ + "lo") << "too slow for a pair";
    EXPECT_EQ(escape_twice(1, Qt::Key_End), base_ + "lo") << "no pair";
    remember(base_ + "local time");
    ASSERT_EQ(edit(base_ + "loc"), base_ + "local time");
    EXPECT_EQ(escape_twice(), base_ + "local/") << "the selected tail does not count";
}

TEST_F(PathBarTest, TheFilterFieldFiltersByEnter) {
    sandbox_.write("a.c");
    sandbox_.write("b.h");
    show_sandbox();
    auto* filter = qt_instance<QComboBox>("tb_filespec");
    filter->setFocus();
    enter("tb_filespec", "");
    QTest::keyClicks(filter, QStringLiteral("*.c"));
    EXPECT_EQ(gDir->count, 2);
    press_in("tb_filespec", Qt::Key_Return);
    EXPECT_EQ(gDir->count, 1);
    EXPECT_STREQ(cl_get(gSpecList.get(), 1), "*.c");
    filter->setFocus();
    enter("tb_filespec", "half");
    press_in("tb_filespec", Qt::Key_Escape);
    EXPECT_EQ(text_of("tb_filespec"), "*.c");
    EXPECT_EQ(QApplication::focusWidget(), qt(w_instance("filelist")));
}

TEST_F(PathBarTest, EditingKeysAreTheFieldsOwn) {
    sandbox_.write("a");
    show_sandbox();
    edit("/typed");
    QTest::keyClick(path_, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(path_->lineEdit()->selectedText(), QStringLiteral("/typed"));
    EXPECT_EQ(selected(), "");
    QTest::keyClick(path_, Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(text_of("tb_curpath"), "");
    press_in("tb_curpath", Qt::Key_F5);
    EXPECT_EQ(text_of("tb_curpath"), sandbox_.path());
}

}  // namespace
}  // namespace dorn
