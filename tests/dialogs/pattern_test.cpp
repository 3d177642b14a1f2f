#include "dialogs/pattern.h"

#include "config/config.h"
#include "config/history.h"
#include "dialog_fixture.h"
#include "dirmodel/name_translation.h"
#include "filelist/selection.h"

#include <QCheckBox>
#include <QComboBox>

namespace dorn {
namespace {

class PatternTest : public DialogTest {
  protected:
    void SetUp() override {
        DialogTest::SetUp();
        *gPatternList = HistoryList{};
        for (const char* name : {"a.c", "b.c", "c.h", "\xE9.c"})
            sandbox_.write(name);
        sandbox_.mkdir("d.c");
        show_sandbox();
    }
    static QComboBox* field() {
        return qt_instance<QComboBox>("ppattern");
    }
    static void finish(const char* pattern, bool include) {
        field()->setEditText(QString::fromUtf8(pattern));
        qt_instance<QCheckBox>("pinclude")->setChecked(include);
        push("pattern_ok");
        EXPECT_TRUE(gets_focus("filelist"));
    }
};

TEST_F(PatternTest, SelectsAndUnselectsWhatMatches) {
    struct Row {
        bool select;
        const char* pattern;
        bool include;
        const char* selected;
    };
    const Row rows[] = {
        {true, "*.c", false, "a.c b.c \xE9.c"},
        {true, "*.c|c.?\n", true, "a.c b.c c.h d.c \xE9.c"},
        {false, "[ab].*", false, "c.h d.c \xE9.c"},
        {false, "", true, "c.h d.c \xE9.c"},
        {false, "*.c", false, "c.h d.c"},
        {true, "..", true, ""},
    };
    for (const Row& row : rows) {
        row.select ? em_select_pattern() : em_unselect_pattern();
        EXPECT_TRUE(gets_focus("ppattern"));
        EXPECT_FALSE(qt_instance<QCheckBox>("pinclude")->isChecked());
        finish(row.pattern, row.include);
        EXPECT_EQ(selected(), row.selected) << row.pattern;
    }
    fl_unselect_all();
    em_unselect_pattern();
    EXPECT_FALSE(is_open("pattern_dlg"));
}

TEST_F(PatternTest, TheHistoryIsOfferedAndItsNewestTakenWhenItHoldsSeveral) {
    em_select_pattern();
    finish("one", false);
    em_select_pattern();
    EXPECT_EQ(field()->currentText(), QString());
    finish("two", false);
    em_select_pattern();
    EXPECT_EQ(field()->currentText(), QStringLiteral("two"));
    EXPECT_EQ(field()->itemText(1), QStringLiteral("one"));
    finish(" ", false);
    EXPECT_EQ(gPatternList->count, 2);
}

TEST_F(PatternTest, APatternIsTakenIntoTheEncodingOfTheNames) {
    fname_set_translation(kEncodingAlternate, "ISO-8859-1");
    em_select_pattern();
    finish("\u00E9*", false);
    EXPECT_EQ(selected(), "\xE9.c");
    em_select_pattern();
    finish("\u20AC*", false);
    EXPECT_EQ(selected(), "");
    fname_set_translation(0, nullptr);
}

}  // namespace
}  // namespace dorn
