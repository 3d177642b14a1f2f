#include "dialogs/preferences.h"

#include "config/config.h"
#include "dialog_fixture.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "hotlist/hotlist_tree.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QFontDialog>
#include <QTreeWidget>

#include <cstring>

namespace dorn {
namespace {

class PreferencesTest : public DialogTest {
  protected:
    void TearDown() override {
        fname_set_translation(0, nullptr);
        gOptions |= kOptionDotEntries;
        qt(w_instance("filelist"))->setFont(ui_font("TextFont08"));
        DialogTest::TearDown();
    }
    static QAbstractButton* toggle(const char* name) {
        return qt_instance<QAbstractButton>(name);
    }
    static QComboBox* charsets() {
        return qt_instance<QComboBox>("cenc");
    }
    // Chooses in the font dialog that the button opens.
    static void choose_font(const char* button, const QFont& font, bool accept) {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
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
    struct Row {
        const char* toggle;
        uint32_t group;
        uint32_t bit;
    };
    const Row rows[] = {
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
    for (const Row& row : rows) {
        const uint32_t before = gConfig->flags;
        em_edit_preferences();
        toggle(row.toggle)->click();
        push("capply");
        EXPECT_FALSE(is_open("config_dlg"));
        EXPECT_EQ(gConfig->flags, (before & ~row.group) | row.bit) << row.toggle;
        em_edit_preferences();
        EXPECT_TRUE(toggle(row.toggle)->isChecked()) << row.toggle;
        push("ccancel");
    }
    gConfig->flags = 0;
    em_edit_preferences();
    push("capply");
    EXPECT_EQ(gConfig->flags, 0x524U) << "a record without bits is one that asks";
}

TEST_F(PreferencesTest, WhatIsChosenWorksAtOnce) {
    sandbox_.write("a");
    sandbox_.mkdir("b");
    sandbox_.mkdir("b/\xE8");
    sandbox_.write(".dot");
    sandbox_.write("\xE9");
    gConfig->flags |= kHideDotFiles;
    gConfig->dirs_first = 0;
    show_sandbox();
    EXPECT_EQ(row_name(1), "a");
    tree_add(&gTree, sandbox_.file("b").c_str());
    auto* tree = qt_instance<QTreeWidget>("tree");
    QTreeWidgetItem* bookmark = tree->topLevelItem(tree->topLevelItemCount() - 1);
    const auto branch = [bookmark] {
        return bookmark->childCount() == 1 ? bookmark->child(0)->text(0) : QString();
    };
    bookmark->setExpanded(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return branch() == QStringLiteral("??"); }));

    em_edit_preferences();
    toggle("cdot")->click();
    toggle("cdirs")->click();
    toggle("cenc_utf8_alternate")->click();
    charsets()->setCurrentText(QStringLiteral("ISO-8859-1"));
    push("capply");
    EXPECT_EQ(row_name(1) + row_name(2) + row_name(3) + row_name(4), "b.dota\u00E9");
    EXPECT_EQ(gOptions & kOptionDotEntries, kOptionDotEntries);
    EXPECT_STREQ(gConfig->alt_encoding, "ISO-8859-1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return branch() == QStringLiteral("\u00E8"); }));
    tree_remove(&gTree, sandbox_.file("b").c_str());

    em_edit_preferences();
    EXPECT_EQ(charsets()->currentText(), QStringLiteral("ISO-8859-1"));
    toggle("cdot")->click();
    charsets()->setCurrentIndex(0);
    push("capply");
    EXPECT_EQ(row_name(1) + row_name(2), "ba");
    EXPECT_NE(row_name(3), "\u00E9");
    EXPECT_EQ(gOptions & kOptionDotEntries, 0U);
    EXPECT_STREQ(gConfig->alt_encoding, "");
}

TEST_F(PreferencesTest, TheTimeOutIsTheNumberThatItsTextBeginsWith) {
    struct Row {
        QString text;
        int32_t value;
    };
    for (const Row& row : {Row{QStringLiteral("250"), 250},
                           {QStringLiteral("7 s\n"), 7},
                           {{}, 0},
                           {QStringLiteral("soon"), 0},
                           {QStringLiteral("-5"), -5},
                           {QString(5000, u'9'), 2147483647}}) {
        em_edit_preferences();
        enter("cto", row.text);
        push("capply");
        EXPECT_EQ(gConfig->keyfind_timeout, row.value);
    }
    em_edit_preferences();
    EXPECT_EQ(field_text("cto"), "2147483647");
}

TEST_F(PreferencesTest, AChosenFontTakesEffectWithDone) {
    QFont font = QApplication::font();
    font.setPointSize(17);
    const std::string name = ui_font_name(font);
    const QFont before = qt(w_instance("filelist"))->font();
    em_edit_preferences();
    choose_font("clist_select", font, false);
    EXPECT_EQ(text_of("clist_font"), "TextFont08");
    choose_font("clist_select", ui_font("TextFont08"), true);
    EXPECT_EQ(text_of("clist_font"), "TextFont08") << "the same font keeps its name";
    choose_font("clist_select", font, true);
    EXPECT_EQ(text_of("clist_font"), name);
    EXPECT_EQ(qt(w_instance("filelist"))->font(), before);
    push("capply");
    EXPECT_EQ(gConfig->list_font, name);
    EXPECT_STREQ(gConfig->hotlist_font, "TextFont08");
    EXPECT_EQ(qt(w_instance("filelist"))->font().pointSize(), 17);
}

TEST_F(PreferencesTest, CancelChangesNothing) {
    std::strcpy(gConfig->alt_encoding, "x-unknown");
    const Config before = *gConfig;
    for (const char* end : {"ccancel", ""}) {
        em_edit_preferences();
        EXPECT_EQ(charsets()->currentIndex(), -1);
        for (const char* name : {"cdot", "cdirs", "overwrite", "sym_files", "cenc_alternate"})
            toggle(name)->click();
        enter("cto", QStringLiteral("1"));
        charsets()->setCurrentIndex(3);
        choose_font("ctree_select", ui_font("TextFont20"), true);
        if (*end != '\0')
            push(end);
        else
            QTest::keyClick(qt(w_instance("config_dlg")), Qt::Key_Escape);
        EXPECT_FALSE(is_open("config_dlg"));
        EXPECT_EQ(std::memcmp(&before, gConfig, sizeof before), 0);
    }
    em_edit_preferences();
    push("capply");
    EXPECT_STREQ(gConfig->alt_encoding, "") << "no set is selected";
}

}  // namespace
}  // namespace dorn
