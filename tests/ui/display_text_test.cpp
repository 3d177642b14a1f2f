#include "ui/combo.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QComboBox>

#include <gtest/gtest.h>

namespace dorn {
namespace {

TEST(DisplayText, WhatCouldMisleadIsMadeVisible) {
    const std::pair<const char*, const char*> rows[] = {
        {"a\t-", "a\u21E5-"},
        {"a\x1B[1m", "a\uFFFD[1m"},
        {"a\x7F", "a\uFFFD"},
        {"\xFF", "\uFFFD"},
        {"exe\u202Etxt", "exe\uFFFDtxt"},
        {"a\xC2\x85", "a\uFFFD"},
        {"two\nlines", "two\u21B5lines"},
        {"two\u2028lines", "two\uFFFDlines"},
        {"<b>&amp;</b>\u00FC", "<b>&amp;</b>\u00FC"}};
    for (const auto& [bytes, shown] : rows)
        EXPECT_EQ(ui_text(bytes), QString::fromUtf8(shown));
    EXPECT_EQ(ui_message_text("two\nlines\x01"), QString::fromUtf8("two\nlines\uFFFD"));
}

TEST(Fonts, NamesOfTheRecordBecomeFonts) {
    const QFont desktop = QApplication::font();
    const std::tuple<const char*, const char*, int, bool, bool> rows[] = {
        {"DejaVu Sans10b", "DejaVu Sans", 10, true, false},
        {"DejaVu Serif12i", "DejaVu Serif", 12, false, true},
        {"helv14bi", "helv", 14, true, true}};
    for (const auto& [name, family, points, bold, italic] : rows) {
        QFont expected(QLatin1String(family), points, bold ? QFont::Bold : QFont::Normal, italic);
        EXPECT_EQ(ui_font(name).toString(), expected.toString()) << name;
    }
    for (const char* none : {"", "12", "Serif", "bi", "Sans999999999999", "\xFF"})
        EXPECT_EQ(ui_font(none), desktop) << none;
    // The desktop's own font, relative to the usual 9 points.
    EXPECT_NEAR(ui_font("TextFont08").pointSizeF(), desktop.pointSizeF() * 8 / 9, 0.01);
    EXPECT_EQ(ui_font("TextFont09").family(), desktop.family());
    for (const char* name : {"DejaVu Sans10", "Mono 2 08bi", "Serif120i", "Bob09b"})
        EXPECT_EQ(ui_font_name(ui_font(name)), name);
}

TEST(ComboHistory, IsRefilledOnlyWhenItChangedAndLeavesTheField) {
    QComboBox combo;
    combo.setEditable(true);
    HistoryList list;
    list.slots = {"new", "old"};
    list.count = 2;
    list.flags = kHistoryChanged;
    combo.setEditText(QStringLiteral("typed"));
    EXPECT_EQ(cl_apply(&list, handle(&combo)), 1);
    EXPECT_EQ(cl_apply(&list, handle(&combo)), 0);
    ASSERT_EQ(combo.count(), 2);
    EXPECT_EQ(combo.itemText(0), QStringLiteral("new"));
    EXPECT_EQ(combo.currentText(), QStringLiteral("typed"));
    cl_text_select(handle(&combo), 2);  // the last item can't be selected
    EXPECT_EQ(combo.currentText(), QStringLiteral("typed"));
    cl_text_select(handle(&combo), 1);
    EXPECT_EQ(combo.currentText(), QStringLiteral("new"));
}

}  // namespace
}  // namespace dorn
