#include "dialogs/open_with.h"

#include "config/history.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"

#include <QComboBox>

namespace dorn {
namespace {

class OpenWithTest : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"a b", "c", "d"})
            sandbox_.write(name);
        sandbox_.mkdir("folder");
        WindowTest::SetUp();
        *gWithList = HistoryList{};
        fakes_.add("orterm");
    }

    static void open_with(const char* text, const char* button = "ow_done") {
        fm_open_with();
        enter("ow_command", text);
        push(button);
        EXPECT_FALSE(is_open("open_with"));
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

using Texts = std::vector<std::string>;

TEST_F(OpenWithTest, TheCommandRunsOnceForEachSelectedFileAndIsOfferedAgain) {
    open_with("early");
    select({"a b", "c", "folder"});
    open_with("look", "ow_cancel");
    open_with("  ");
    EXPECT_EQ(commands(), Texts{}) << "no selection, Cancel, a blank command";
    open_with("look @ -x");
    EXPECT_EQ(commands(), (Texts{"look 'a b'  -x", "look 'c'  -x"}));
    for (int opening = 0; opening < 2; ++opening) {
        fm_open_with();
        const auto* combo = qt_instance<QComboBox>("ow_command");
        ASSERT_EQ(combo->count(), 2);
        EXPECT_EQ(combo->itemText(0), QStringLiteral("look @ -x"));
        EXPECT_EQ(combo->currentText(), QString());
        push("ow_cancel");
    }
}

TEST_F(OpenWithTest, ItsKeys) {
    cl_add(gWithList.get(), "look me up");
    select({"c"});
    fm_open_with();
    EXPECT_TRUE(gets_focus("ow_command"));
    QTest::keyClicks(qt(w_instance("ow_command")), QStringLiteral("look"));
    EXPECT_EQ(text_of("ow_command"), "look") << "nothing is completed";
    press_in("ow_command", Qt::Key_Return);
    EXPECT_FALSE(is_open("open_with"));
    EXPECT_EQ(commands(), Texts{"look 'c' "});
    fm_open_with();
    press_in("ow_command", Qt::Key_Escape);
    EXPECT_FALSE(is_open("open_with"));
}

}  // namespace
}  // namespace dorn
