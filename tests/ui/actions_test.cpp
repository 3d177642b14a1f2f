#include "ui/actions.h"

#include "support/sandbox.h"

#include <gtest/gtest.h>

namespace dorn {
namespace {

constexpr uint32_t kPress = kKeyDown | kKeySymValid;
std::string sCalled;

int first_callback(Widget*, void* data, const KeyEvent*) {
    sCalled += std::string("first ") + static_cast<const char*>(data);
    return 0;
}
int second_callback(Widget*, void*, const KeyEvent*) {
    sCalled += "second ";
    return 0;
}

TEST(Actions, AFirstPressOfABoundKeyOfTheLinkedSectionRunsEveryCallbackOnce) {
    int place = 0;
    auto* widget = reinterpret_cast<Widget*>(&place);
    const auto press = [widget](uint32_t modifiers, uint32_t key, uint32_t flags = kPress) {
        const KeyEvent event{flags, modifiers, key, key};
        char data[] = "data";
        return kb_process(widget, data, &event);
    };
    for (const ActionCallback callback : {first_callback, second_callback, first_callback})
        ac_register("run", callback);
    kb_attach("run", "one", kModCtrl, 'r');
    kb_attach("run", "another", 0, 'd');
    ac_link_widget(widget, "one");
    for (const uint32_t flags : {kPress | kKeyRepeat, uint32_t{kKeySymValid}, uint32_t{kKeyDown}})
        EXPECT_EQ(press(kModCtrl, 'r', flags), 0);
    EXPECT_EQ(press(kModAlt, 'r') + press(0, 'd'), 0);
    EXPECT_EQ(sCalled, "");
    EXPECT_EQ(press(kModCtrl, 'r'), 1);
    EXPECT_EQ(sCalled, "second first data");
    ac_link_widget(widget, "another");
    EXPECT_EQ(press(kModCtrl, 'r'), 0);
    EXPECT_EQ(press(0, 'd'), 1);
    ac_unlink_widget(widget);
    EXPECT_EQ(press(0, 'd'), 0);
}

TEST(KeyFile, HoldsTheActiveBindingFirstAndLinesThatAreNoneAreIgnored) {
    const Sandbox sandbox;
    const auto saves = [&sandbox](const char* section) {
        EXPECT_EQ(kb_save(sandbox.path(), "saved"), 0);
        return sandbox.read("saved").find(section) != std::string::npos;
    };
    kb_attach("two keys", "active", 1, 10);
    kb_attach("two keys", "active", 2, 20);
    EXPECT_EQ(kb_set_default("two keys", "active", 2, 20), 0);
    EXPECT_EQ(kb_set_default("two keys", "active", 4, 10), -1);
    EXPECT_TRUE(saves("[active]\n'two keys' 2 20\n'two keys' 1 10\n\n"));
    kb_attach("new owner", "active", 1, 10);
    EXPECT_TRUE(saves("[active]\n'new owner' 1 10\n'two keys' 2 20\n\n"));
    sandbox.write("keys",
                  "'before a section' 1 2\n[odd]\nnonsense\n'no numbers'\n'one number' 1\n"
                  "'too big' 1 4294967296\n'a line of thirty-one char' 1 2\n"
                  "'a line of thirty-two char' 1 23\n'good' 3\t4\n'good' 3 4 and more\n'end' 5 6");
    EXPECT_EQ(kb_load(sandbox.path(), "keys"), 0);
    EXPECT_TRUE(saves("[odd]\n'end' 5 6\n'good' 3 4\n'a line of thirty-one char' 1 2\n\n"))
        << sandbox.read("saved");
    EXPECT_EQ(kb_load(sandbox.path(), "missing"), -1);
    EXPECT_EQ(kb_save(sandbox.file("missing").c_str(), "keys"), -1);
}

}  // namespace
}  // namespace dorn
