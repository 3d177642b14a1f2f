#include "ui/actions.h"

#include "support/sandbox.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace dorn {
namespace {

std::vector<std::string> sCalled;

int first_callback(Widget*, void* data, const KeyEvent*) {
    sCalled.push_back(std::string("first ") + static_cast<const char*>(data));
    return 0;
}
int second_callback(Widget*, void*, const KeyEvent*) {
    sCalled.emplace_back("second");
    return 0;
}

constexpr uint32_t kPress = kKeyDown | kKeySymValid | kKeyCapValid;

class ActionsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        sCalled.clear();
        ac_link_widget(widget_, "actions test");
    }
    void TearDown() override {
        ac_unlink_widget(widget_);
    }

    int press(uint32_t modifiers, uint32_t cap, uint32_t flags = kPress) {
        const KeyEvent event{flags, modifiers, cap, cap};
        char data[] = "data";
        return kb_process(widget_, data, &event);
    }
    std::string saved() const {
        EXPECT_EQ(kb_save(sandbox_.path(), "keys"), 0);
        return sandbox_.read("keys");
    }
    void load(const std::string& text) const {
        sandbox_.write("keys", text);
        EXPECT_EQ(kb_load(sandbox_.path(), "keys"), 0);
    }

    Sandbox sandbox_;
    int place_ = 0;
    Widget* widget_ = reinterpret_cast<Widget*>(&place_);
};

TEST_F(ActionsTest, ABoundKeyRunsEveryCallbackOfItsActionOnce) {
    ac_register("run", first_callback);
    ac_register("run", second_callback);
    ac_register("run", first_callback);
    kb_attach("run", "actions test", kModCtrl, 'r');
    EXPECT_EQ(press(kModCtrl, 'r'), 1);
    EXPECT_EQ(sCalled, (std::vector<std::string>{"second", "first data"}));
}

TEST_F(ActionsTest, OnlyFirstPressesOfBoundKeysInTheLinkedSectionCount) {
    ac_register("count", second_callback);
    kb_attach("count", "actions test", kModCtrl, 'c');
    kb_attach("count", "another section", 0, 'd');
    EXPECT_EQ(press(kModCtrl, 'c', kPress | kKeyRepeat), 0);
    EXPECT_EQ(press(kModCtrl, 'c', kKeySymValid), 0);
    EXPECT_EQ(press(kModCtrl, 'c', kKeyDown), 0);
    EXPECT_EQ(press(kModAlt, 'c'), 0);
    EXPECT_EQ(press(0, 'd'), 0);
    EXPECT_TRUE(sCalled.empty());
    ac_link_widget(widget_, "another section");
    EXPECT_EQ(press(kModCtrl, 'c'), 0);
    EXPECT_EQ(press(0, 'd'), 1);
    ac_unlink_widget(widget_);
    EXPECT_EQ(press(0, 'd'), 0);
}

TEST_F(ActionsTest, TheFirstBindingIsTheActiveOneUntilAnotherIsMadeIt) {
    kb_attach("two keys", "active", 1, 10);
    kb_attach("two keys", "active", 2, 20);
    EXPECT_NE(saved().find("[active]\n'two keys' 1 10\n'two keys' 2 20\n\n"), std::string::npos);
    EXPECT_EQ(kb_set_default("two keys", "active", 2, 20), 0);
    EXPECT_NE(saved().find("[active]\n'two keys' 2 20\n'two keys' 1 10\n\n"), std::string::npos);
    EXPECT_EQ(kb_set_default("two keys", "active", 4, 10), -1);
    kb_attach("new owner", "active", 1, 10);
    EXPECT_NE(saved().find("[active]\n'new owner' 1 10\n'two keys' 2 20\n\n"), std::string::npos);
    char text[8];
    EXPECT_EQ(kb_get_accel_text("two keys", "active", text), text);
    EXPECT_EQ(kb_get_accel_text("two keys", "no such", text), nullptr);
}

TEST_F(ActionsTest, LinesThatAreNoBindingsAreIgnored) {
    load(
        "'before a section' 1 2\n[odd]\nnonsense\n'no numbers'\n'one number' 1\n"
        "'too big' 1 4294967296\n'a line of thirty-one char' 1 2\n"
        "'a line of thirty-two chars' 1 2\n'good' 3\t4\n'good' 3 4 and more\n'end' 5 6");
    const std::string text = saved();
    EXPECT_NE(text.find("[odd]\n'end' 5 6\n'good' 3 4\n'a line of thirty-one char' 1 2\n\n"),
              std::string::npos)
        << text;
}

TEST_F(ActionsTest, AFileThatCannotBeOpenedIsAFailure) {
    EXPECT_EQ(kb_load(nullptr, nullptr), -1);
    EXPECT_EQ(kb_load(sandbox_.path(), "missing"), -1);
    EXPECT_EQ(kb_save(sandbox_.file("missing").c_str(), "keys"), -1);
}

}  // namespace
}  // namespace dorn
