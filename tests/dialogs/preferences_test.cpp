#include "dialogs/preferences.h"

#include "hotlist/hotlist_tree.h"
#include "support_gui/window_test.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QFontDialog>
#include <QTimer>
#include <QTreeWidget>

#include <cstring>

namespace dorn {
namespace {

class PreferencesTest : public WindowTest {
  protected:
    void TearDown() override {
        gOptions |= kOptionDotEntries;
        qt(w_instance("filelist"))->setFont(ui_font("TextFont08"));
        WindowTest::TearDown();
    }
    static void click_on(std::initializer_list<const char*> toggles) {
        for (const char* toggle : toggles)
            qt_instance<QAbstractButton>(toggle)->click();
    }
    // Chooses in the font dialog that the button opens.
    static void choose_font(const char* button, const QFont& font, bool accept) {
        QTimer timer;
        timer.callOnTimeout([&] {
            auto* fonts = qobject_cast<QFontDialog*>(QApplication::activeModalWidget());
            if (fonts == nullptr) return;
            fonts->setCurrentFont(font);
            accept ? fonts->accept() : fonts->reject();
        });
        timer.start(1);
        push(button);
    }
};

TEST_F(PreferencesTest, EachChoiceSetsItsBitAloneAndIsShownAgain) {
    const std::tuple<const char*, uint32_t, uint32_t> rows[] = {
        {"overwrite", 0x2, 0x2},
        {"overwrite_prompt", 0x2, 0},
        {"sym_symlinks", 0xE0, 0x40},
        {"sym_files", 0xE0, 0x80},
        {"sym_prompt", 0xE0, 0x20},
        {"rm1_prompt_nowr", 0x1C, 0x8},
        {"rm1_no_prompt", 0x1C, 0x10},
        {"rm1_prompt", 0x1C, 0x4},
        {"rm_no_prompt", 0x300, 0x200},
        {"rm_prompt", 0x300, 0x100},
        {"rm_i_prompt", 0x1C00, 0x400},
        {"rm_i_no_prompt", 0x1C00, 0x1000},
        {"rm_i_prompt_nowr", 0x1C00, 0x800},
        {"cenc_utf8_alternate", 0x6000, 0x2000},
        {"cenc_alternate", 0x6000, 0x4000},
        {"cenc_cutf8", 0x6000, 0},
        {"change_owner_dialog_assume_ignore", 0x8000, 0x8000},
        {"change_owner_error_show_always", 0x8000, 0},
    };
    for (const auto& [toggle, group, bit] : rows) {
        const uint32_t before = gConfig->flags;
        em_edit_preferences();
        click_on({toggle});
        push("capply");
        EXPECT_EQ(gConfig->flags, (before & ~group) | bit) << toggle;
        em_edit_preferences();
        EXPECT_TRUE(qt_instance<QAbstractButton>(toggle)->isChecked()) << toggle;
        push("ccancel");
    }
    gConfig->flags = 0;
    em_edit_preferences();
    push("capply");
    EXPECT_EQ(gConfig->flags, 0x524U) << "a record without bits is one that asks";
}

TEST_F(PreferencesTest, WhatIsChosenWorksAtOnce) {
    for (const char* name : {"b", "b/\xE8"})
        sandbox_.mkdir(name);
    for (const char* name : {"a", ".dot", "\xE9"})
        sandbox_.write(name);
    gConfig->flags |= kHideDotFiles;
    gConfig->dirs_first = 0;
    show_sandbox();
    EXPECT_EQ(row_name(1), "a");
    tree_add(&gTree, sandbox_.file("b").c_str());
    auto* tree = qt_instance<QTreeWidget>("tree");
    QTreeWidgetItem* bookmark = tree->topLevelItem(tree->topLevelItemCount() - 1);
    const auto shows_branch = [bookmark](const QString& name) {
        return QTest::qWaitFor(
            [&] { return bookmark->childCount() == 1 && bookmark->child(0)->text(0) == name; });
    };
    bookmark->setExpanded(true);
    EXPECT_TRUE(shows_branch(QStringLiteral("??")));
    QFont font = QApplication::font();
    font.setPointSize(17);

    em_edit_preferences();
    click_on({"cdot", "cdirs", "cenc_utf8_alternate"});
    enter("cto", "7 s\n");
    qt_instance<QComboBox>("cenc")->setCurrentText(QStringLiteral("ISO-8859-1"));
    choose_font("clist_select", font, false);
    choose_font("clist_select", ui_font("TextFont08"), true);
    EXPECT_EQ(text_of("clist_font"), "TextFont08") << "the same font keeps its name";
    choose_font("clist_select", font, true);
    push("capply");
    EXPECT_EQ(row_name(1) + row_name(2) + row_name(3) + row_name(4), "b.dota\u00E9");
    EXPECT_EQ(gOptions & kOptionDotEntries, kOptionDotEntries);
    EXPECT_EQ(gConfig->keyfind_timeout, 7);
    EXPECT_STREQ(gConfig->alt_encoding, "ISO-8859-1");
    EXPECT_EQ(gConfig->list_font, ui_font_name(font));
    EXPECT_STREQ(gConfig->hotlist_font, "TextFont08");
    EXPECT_EQ(qt(w_instance("filelist"))->font().pointSize(), 17);
    EXPECT_TRUE(shows_branch(QStringLiteral("\u00E8")));
    tree_remove(&gTree, sandbox_.file("b").c_str());

    em_edit_preferences();
    EXPECT_EQ(text_of("cenc"), "ISO-8859-1");
    click_on({"cdot"});
    enter("cto", std::string(5000, '9'));
    qt_instance<QComboBox>("cenc")->setCurrentIndex(0);
    push("capply");
    EXPECT_EQ(row_name(1) + row_name(2), "ba");
    EXPECT_NE(row_name(3), "\u00E9");
    EXPECT_EQ(gOptions & kOptionDotEntries, 0U);
    EXPECT_EQ(gConfig->keyfind_timeout, 2147483647);
    EXPECT_STREQ(gConfig->alt_encoding, "");
}

TEST_F(PreferencesTest, CancelChangesNothing) {
    std::strcpy(gConfig->alt_encoding, "x-unknown");
    const Config before = *gConfig;
    for (const bool by_key : {false, true}) {
        em_edit_preferences();
        click_on({"cdot", "cdirs", "overwrite", "sym_files", "cenc_alternate"});
        enter("cto", "1");
        qt_instance<QComboBox>("cenc")->setCurrentIndex(3);
        choose_font("ctree_select", ui_font("TextFont20"), true);
        by_key ? press_in("config_dlg", Qt::Key_Escape) : push("ccancel");
        EXPECT_FALSE(is_open("config_dlg"));
        EXPECT_EQ(std::memcmp(&before, gConfig, sizeof before), 0);
    }
    em_edit_preferences();
    push("capply");
    EXPECT_STREQ(gConfig->alt_encoding, "") << "no set is selected";
}

}  // namespace
}  // namespace dorn
