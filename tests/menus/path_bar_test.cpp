#include "menus/path_bar.h"

#include "config/config.h"
#include "config/history.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/path_completion.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "support_gui/window_test.h"
#include "ui/combo.h"
#include "ui/qt_widget.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace dorn {
namespace {

std::time_t sNow;

class PathBarTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        path_ = qt_instance<QComboBox>("tb_curpath");
        filter_ = qt_instance<QComboBox>("tb_filespec");
        path_bar_set_clock([] { return sNow; });
        *gPathList = HistoryList{};
    }
    void TearDown() override {
        path_bar_set_clock(nullptr);
        WindowTest::TearDown();
    }

    void enter() const {
        QTest::keyClick(path_, Qt::Key_Return);
    }
    void remember(const std::string& entry) {
        cl_add(gPathList.get(), entry.c_str());
        cl_apply(gPathList.get(), handle(path_));
    }
    void edit(const QString& text) {
        path_->setFocus();
        path_->lineEdit()->selectAll();
        path_->lineEdit()->del();
        QTest::keyClicks(path_, text);
    }
    std::string typed_text() const {
        return path_->currentText().toStdString();
    }
    // Presses Escape twice, `seconds` apart.
    void escape_twice(int seconds = 1) {
        QTest::keyClick(path_, Qt::Key_Escape);
        sNow += seconds;
        QTest::keyClick(path_, Qt::Key_Escape);
        sNow += 100;
    }
    QComboBox* path_ = nullptr;
    QComboBox* filter_ = nullptr;
};

TEST_F(PathBarTest, EnterGoesToThePathAndRemembersIt) {
    sandbox_.mkdir("sub");
    edit(QString::fromStdString(sandbox_.file("sub") + "/"));
    enter();
    EXPECT_EQ(gDir->path, sandbox_.file("sub"));
    EXPECT_EQ(typed_text(), sandbox_.file("sub"));
    ASSERT_EQ(gPathList->count, 1);
    EXPECT_EQ(cl_get(gPathList.get(), 1), sandbox_.file("sub"));
    EXPECT_EQ(path_->itemText(0).toStdString(), sandbox_.file("sub"));
    EXPECT_EQ(QApplication::focusWidget(), qt(w_instance("filelist")));
}

TEST_F(PathBarTest, APathThatDoesNotExistStaysInTheFieldAndOutOfTheHistory) {
    const std::string missing = sandbox_.file("missing");
    edit(QString::fromStdString(missing));
    EXPECT_EQ(alerts_of([this] { enter(); }), "Error: Directory '" + missing + "', not found");
    EXPECT_EQ(typed_text(), missing);
    EXPECT_EQ(gDir->path, sandbox_.path());
    EXPECT_EQ(gPathList->count, 0);
}

TEST_F(PathBarTest, APathThatCannotBeShownSurvivesAsLongAsItIsNotEdited) {
    const std::string odd = "in\nvalid\xFF";
    sandbox_.mkdir(odd);
    sandbox_.mkdir(odd + "/sub");
    ASSERT_EQ(fl_newpath(nullptr, sandbox_.file(odd).c_str()), 0);
    path_->setFocus();
    escape_twice();
    EXPECT_TRUE(path_->currentText().endsWith(u'/'));
    ASSERT_EQ(fl_newpath(nullptr, sandbox_.path()), 0);
    tb_curpath_set_text(sandbox_.file(odd).c_str());
    path_->setFocus();
    enter();
    EXPECT_EQ(gDir->path, sandbox_.file(odd));
}

TEST_F(PathBarTest, OnlyEnterAndAChoiceFromTheListGoAnywhere) {
    sandbox_.mkdir("one");
    sandbox_.mkdir("two");
    remember(sandbox_.file("one"));
    remember(sandbox_.file("two"));
    edit(QString::fromStdString(sandbox_.file("one")));
    qt(w_instance("filelist"))->setFocus();
    path_->setFocus();
    QWheelEvent wheel(QPointF(5, 5), path_->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(path_, &wheel);
    QTest::keyClick(path_, Qt::Key_Down);
    ASSERT_TRUE(path_->view()->isVisible());
    EXPECT_EQ(gDir->path, sandbox_.path());
    path_->view()->setCurrentIndex(path_->model()->index(1, 0));
    QTest::keyClick(path_->view(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return gDir->path == sandbox_.file("one"); })) << gDir->path;
}

TEST_F(PathBarTest, TypingCompletesFromTheHistory) {
    remember("/srv/data/one");
    edit(QStringLiteral("/sr"));
    EXPECT_EQ(typed_text(), "/srv/data/one");
    EXPECT_EQ(path_->lineEdit()->selectedText(), QStringLiteral("v/data/one"));
    EXPECT_EQ(path_->lineEdit()->cursorPosition(), 3);
    QTest::keyClicks(path_, QStringLiteral("v/x"));
    EXPECT_EQ(typed_text(), "/srv/x");
    QTest::keyClick(path_, Qt::Key_Backspace);
    EXPECT_EQ(typed_text(), "/srv/");  // not completed again while deleting
    path_->lineEdit()->setCursorPosition(0);
    QTest::keyClicks(path_, QStringLiteral("/"));
    EXPECT_EQ(typed_text(), "//srv/");  // nor away from the end
    path_->setEditText(QStringLiteral("/sr"));
    EXPECT_EQ(typed_text(), "/sr");  // nor without a key
    const uint32_t options = gOptions;
    gOptions &= ~kOptionInlineCompletion;
    edit(QStringLiteral("/sr"));
    EXPECT_EQ(typed_text(), "/sr");
    gOptions = options;
}

TEST_F(PathBarTest, ATypedWebPrefixStaysInFrontAndWebAddressesAreColoured) {
    const auto color = [this] { return path_->lineEdit()->palette().color(QPalette::Text); };
    remember("http://example.net/index");
    edit(QStringLiteral("ftp://exa"));
    EXPECT_EQ(typed_text(), "ftp://example.net/index");
    EXPECT_EQ(color(), QColor(0, 0, 255));
    edit(QStringLiteral("/x"));
    EXPECT_EQ(color(), path_->palette().color(QPalette::Text));
}

TEST_F(PathBarTest, EscapeTwiceCompletesTheDirectory) {
    sandbox_.mkdir("alone");
    sandbox_.mkdir("pair_one");
    sandbox_.mkdir("pair_other");
    const std::string base = std::string(sandbox_.path()) + "/";
    const std::tuple<const char*, int, const char*> rows[] = {
        {"al", 2, "alone/"}, {"al", 3, "al"}, {"p", 0, "pair_o"}, {"none", 1, "none"}};
    for (const auto& [typed, seconds, text] : rows) {
        edit(QString::fromStdString(base + typed));
        escape_twice(seconds);
        EXPECT_EQ(typed_text(), base + text) << typed << " after " << seconds;
        EXPECT_EQ(path_->lineEdit()->cursorPosition(), path_->currentText().size());
    }
    edit(QString::fromStdString(base + "al"));
    QTest::keyClick(path_, Qt::Key_Escape);
    QTest::keyClick(path_, Qt::Key_End);
    QTest::keyClick(path_, Qt::Key_Escape);
    EXPECT_EQ(typed_text(), base + "al");
    remember(base + "along the way");
    edit(QString::fromStdString(base + "alo"));
    ASSERT_EQ(typed_text(), base + "along the way");
    escape_twice();
    EXPECT_EQ(typed_text(), base + "alone/");  // the selected tail does not count
}

TEST_F(PathBarTest, MatchingDirectoriesAreFoundByTheirBeginning) {
    for (const char* name : {"lib", "local", ".dot", "only", "only/child"})
        sandbox_.mkdir(name);
    sandbox_.write("file");
    sandbox_.link("lib", "link");
    sandbox_.link("nowhere", "broken");
    const std::string base = std::string(sandbox_.path()) + "/";
    const std::pair<const char*, const char*> rows[] = {
        {"lib", "lib/"},          {"l", "l"},         {"link", "link/"},
        {"only/", "only/child/"}, {".", ".dot/"},     {"fi", nullptr},
        {"br", nullptr},          {"none/", nullptr}, {"", nullptr},
        {"only/child/", nullptr}};
    for (const auto& [typed, found] : rows) {
        const auto expected = found == nullptr ? std::nullopt : std::optional(base + found);
        EXPECT_EQ(find_matching_dir((base + typed).c_str()), expected) << typed;
    }
    EXPECT_EQ(find_matching_dir("/us"), "/usr/");
    EXPECT_EQ(find_matching_dir("us"), std::nullopt);
    EXPECT_EQ(find_matching_dir(""), std::nullopt);
    EXPECT_EQ(find_matching_dir((base + std::string(1300, 'x')).c_str()), std::nullopt);
}

TEST_F(PathBarTest, TheFilterFieldFiltersByEnter) {
    sandbox_.write("a.c");
    sandbox_.write("b.h");
    show_sandbox();
    filter_->setFocus();
    filter_->setEditText(QString());
    QTest::keyClicks(filter_, QStringLiteral("*.c"));
    EXPECT_EQ(gDir->count, 2);
    QTest::keyClick(filter_, Qt::Key_Return);
    EXPECT_EQ(gDir->count, 1);
    EXPECT_STREQ(cl_get(gSpecList.get(), 1), "*.c");
    filter_->setFocus();
    filter_->setEditText(QStringLiteral("half"));
    QTest::keyClick(filter_, Qt::Key_Escape);
    EXPECT_EQ(filter_->currentText(), QStringLiteral("*.c"));
    EXPECT_EQ(QApplication::focusWidget(), qt(w_instance("filelist")));
}

TEST_F(PathBarTest, EditingKeysAreTheFieldsOwn) {
    sandbox_.write("a");
    show_sandbox();
    edit(QStringLiteral("/typed"));
    QTest::keyClick(path_, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(path_->lineEdit()->selectedText(), QStringLiteral("/typed"));
    EXPECT_EQ(selected(), "");
    QTest::keyClick(path_, Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(typed_text(), "");
    QTest::keyClick(path_, Qt::Key_F5);
    EXPECT_EQ(typed_text(), sandbox_.path());
}

}  // namespace
}  // namespace dorn
