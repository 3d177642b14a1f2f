#include "ui/qt_widget.h"

#include <QApplication>

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
    for (const char* none : {"", "12", "Serif", "bi", "Sans999999999999", "\xFF"})
        EXPECT_EQ(ui_font(none), desktop) << none;
    // The desktop's own font, relative to the usual 9 points.
    EXPECT_NEAR(ui_font("TextFont08").pointSizeF(), desktop.pointSizeF() * 8 / 9, 0.01);
    EXPECT_EQ(ui_font("TextFont09").family(), desktop.family());
    for (const char* name : {"DejaVu Sans10", "Mono 2 08bi", "Serif120i", "Bob09b"})
        EXPECT_EQ(ui_font_name(ui_font(name)), name);
}

}  // namespace
}  // namespace dorn
