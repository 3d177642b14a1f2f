#include "dialogs/open_with.h"

#include "config/history.h"
#include "filelist/selection.h"
#include "platform/whole_file.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QComboBox>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace dorn {
namespace {

// A terminal program first on PATH writes down what it is started with.
class OpenWithTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        *gWithList = HistoryList{};
        tools_.write("orterm", "#!/bin/sh\nprintf '%s\\n' \"$*\" >>'" + tools_.file("log") + "'\n");
        chmod(tools_.file("orterm").c_str(), 0755);
        path_ = std::getenv("PATH");
        setenv("PATH", (std::string(tools_.path()) + ':' + path_).c_str(), 1);
        for (const char* name : {"a b", "c", "d"})
            sandbox_.write(name);
        sandbox_.mkdir("folder");
        show_sandbox();
    }
    void TearDown() override {
        if (QWidget* dialog = shown()) dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        setenv("PATH", path_.c_str(), 1);
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

    // The starts seen, once there are at least `count`, in order of their text.
    std::vector<std::string> starts(std::size_t count) const {
        std::vector<std::string> lines;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            std::string log;
            read_whole_file(tools_.file("log"), 100000, &log);
            lines.clear();
            for (std::size_t at = 0; at < log.size(); at = log.find('\n', at) + 1)
                lines.push_back(log.substr(at, log.find('\n', at) - at));
            return lines.size() >= count;
        }));
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    Sandbox tools_;
    std::string path_;
};

TEST_F(OpenWithTest, TheCommandRunsOnceForEachSelectedFile) {
    for (const char* name : {"a b", "c", "folder"})
        fl_select_index(index_of(name));
    open_with("look @ -x");
    EXPECT_EQ(shown(), nullptr);
    EXPECT_EQ(starts(2), (std::vector<std::string>{"-U /bin/sh -c look 'a b'  -x",
                                                   "-U /bin/sh -c look 'c'  -x"}));
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
    open_with("last");  // were anything before it started, it would be in the log, too
    EXPECT_EQ(starts(1), (std::vector<std::string>{"-U /bin/sh -c last 'c' "}));
    EXPECT_EQ(gWithList->count, 2);
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
    EXPECT_EQ(starts(1), (std::vector<std::string>{"-U /bin/sh -c look 'c' "}));
    fm_open_with();
    QTest::keyClick(command(), Qt::Key_Escape);
    EXPECT_EQ(shown(), nullptr);
}

}  // namespace
}  // namespace dorn
