#include "dialogs/pattern.h"

#include "config/history.h"
#include "dirmodel/name_translation.h"
#include "support_gui/window_test.h"

#include <QCheckBox>
#include <QComboBox>

namespace dorn {
namespace {

class PatternTest : public WindowTest {
  protected:
    static void finish(const char* pattern, bool include = false) {
        EXPECT_TRUE(gets_focus("ppattern"));
        EXPECT_FALSE(qt_instance<QCheckBox>("pinclude")->isChecked());
        enter("ppattern", pattern);
        qt_instance<QCheckBox>("pinclude")->setChecked(include);
        push("pattern_ok");
        EXPECT_TRUE(gets_focus("filelist"));
    }
};

TEST_F(PatternTest, SelectsAndUnselectsWhatMatches) {
    for (const char* name : {"a.c", "b.c", "c.h", "\xE9.c"})
        sandbox_.write(name);
    sandbox_.mkdir("d.c");
    fname_set_translation(kEncodingAlternate, "ISO-8859-1");
    show_sandbox();
    const std::tuple<int (*)(), const char*, bool, const char*> rows[] = {
        {em_select_pattern, "*.c", false, "a.c b.c \xE9.c"},
        {em_select_pattern, "*.c|c.?\n", true, "a.c b.c c.h d.c \xE9.c"},
        {em_unselect_pattern, "[ab].*", false, "c.h d.c \xE9.c"},
        {em_unselect_pattern, "", true, "c.h d.c \xE9.c"},
        {em_unselect_pattern, "*.c", false, "c.h d.c"},
        {em_select_pattern, "\u00E9*", false, "\xE9.c"},
        {em_select_pattern, "\u20AC*", true, ""},
    };
    for (const auto& [open, pattern, include, names] : rows) {
        open();
        finish(pattern, include);
        EXPECT_EQ(selected(), names) << pattern;
    }
    em_unselect_pattern();
    EXPECT_FALSE(is_open("pattern_dlg"));
}

TEST_F(PatternTest, TheHistoryIsOfferedAndItsNewestTakenWhenItHoldsSeveral) {
    *gPatternList = HistoryList{};
    const std::pair<const char*, const char*> rows[] = {{"", "one"}, {"", "two"}, {"two", " "}};
    for (const auto& [offered, typed] : rows) {
        em_select_pattern();
        EXPECT_EQ(text_of("ppattern"), offered);
        finish(typed);
    }
    EXPECT_EQ(gPatternList->count, 2);
}

}  // namespace
}  // namespace dorn
