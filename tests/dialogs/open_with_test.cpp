#include "dialogs/open_with.h"

#include "config/history.h"
#include "filelist/selection.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QComboBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace dorn {
namespace {

class OpenWithTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        *gWithList = HistoryList{};
        fakes_.add("orterm");
        for (const char* name : {"a b", "c", "d"})
            sandbox_.write(name);
        sandbox_.mkdir("folder");
        show_sandbox();
    }
    void TearDown() override {
        if (QWidget* dialog = shown()) dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        WindowTest::TearDown();
    }

    static QWidget* shown() {
        QWidget* dialog = qt(w_instance("open_with"));
        return dialog != nullptr && dialog->isVisible() ? dialog : nullptr;
    }
    static QComboBox* command() {
        return qt_instance<QComboBox>("ow_command");
    }
    static void push(const char* button) {
        QTest::mouseClick(qt_instance<QPushButton>(button), Qt::LeftButton);
    }
    static std::string offered() {
        std::string text;
        for (int i = 0; i < command()->count(); ++i)
            text += command()->itemText(i).toStdString() + '|';
        return text;
    }
    // Opens the dialog, types, and ends it with Done.
    static void open_with(const char* text) {
        fm_open_with();
        command()->setEditText(QString::fromUtf8(text));
        push("ow_done");
    }

    // The commands run since the last call, in order of their text.
    std::vector<std::string> commands() const {
        FakePrograms::wait();
        std::vector<std::string> commands;
        for (const std::vector<std::string>& run : fakes_.runs("orterm"))
            commands.push_back(run.back());
        return commands;
    }

    FakePrograms fakes_;
};

TEST_F(OpenWithTest, TheCommandRunsOnceForEachSelectedFile) {
    for (const char* name : {"a b", "c", "folder"})
        fl_select_index(index_of(name));
    open_with("look @ -x");
    EXPECT_EQ(shown(), nullptr);
    EXPECT_EQ(commands(), (std::vector<std::string>{"look 'a b'  -x", "look 'c'  -x"}));
}

TEST_F(OpenWithTest, ACommandIsOfferedAtTheNextOpeningNewestFirst) {
    for (const char* text : {"one", "two", "one", " "})
        open_with(text);
    for (int opening = 0; opening < 2; ++opening) {
        fm_open_with();
        EXPECT_EQ(offered(), "one|two|");
        EXPECT_EQ(command()->currentText(), QString());
        push("ow_cancel");
    }
}

TEST_F(OpenWithTest, CancelABlankCommandAndNoSelectionRunNothing) {
    open_with("early");
    EXPECT_EQ(shown(), nullptr);
    fl_select_index(index_of("c"));
    open_with("  ");
    fm_open_with();
    command()->setEditText(QStringLiteral("look"));
    push("ow_cancel");
    EXPECT_EQ(shown(), nullptr);
    EXPECT_EQ(commands(), std::vector<std::string>{});
    EXPECT_EQ(gWithList->count, 1);
}

TEST_F(OpenWithTest, ItsKeys) {
    cl_add(gWithList.get(), "look me up");
    fl_select_index(index_of("c"));
    fm_open_with();
    QWidget* const first = shown();
    ASSERT_TRUE(QTest::qWaitFor([] { return command()->hasFocus(); }));
    fm_open_with();
    EXPECT_EQ(shown(), first);
    QTest::keyClicks(command(), QStringLiteral("look"));
    EXPECT_EQ(command()->currentText(), QStringLiteral("look"));  // nothing is completed
    QTest::keyClick(command(), Qt::Key_Return);
    EXPECT_EQ(shown(), nullptr);
    EXPECT_EQ(commands(), std::vector<std::string>{"look 'c' "});
    fm_open_with();
    QTest::keyClick(command(), Qt::Key_Escape);
    EXPECT_EQ(shown(), nullptr);
}

}  // namespace
}  // namespace dorn
