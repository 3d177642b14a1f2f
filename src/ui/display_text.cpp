// Texts and fonts as they can be shown.
#include "ui/qt_widget.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>

namespace dorn {

namespace {

bool is_direction_override(char16_t c) {
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

// The line and the paragraph separator break lines like a newline, which they are not.
bool is_separator(char16_t c) {
    return c == 0x2028 || c == 0x2029;
}

}  // namespace

QString ui_message_text(const char* text) {
    QString shown = QString::fromUtf8(text);
    for (QChar& c : shown) {
        const char16_t unit = c.unicode();
        const bool control = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
        if (unit == u'\t')
            c = QChar(u'\u21E5');
        else if ((control && unit != u'\n') || is_separator(unit) || is_direction_override(unit))
            c = QChar(u'\uFFFD');
    }
    return shown;
}

QString ui_text(const char* text) {
    return ui_message_text(text).replace(u'\n', QChar(u'\u21B5'));
}

namespace {

constexpr double kUsualPoints = 9;  // what most desktops begin with

}  // namespace

QFont ui_font(const char* name) {
    const QFont desktop = QApplication::font();
    QString family = QString::fromUtf8(name).trimmed();
    bool bold = false;
    bool italic = false;
    while (family.endsWith(u'b') || family.endsWith(u'i')) {
        const qsizetype before = family.size() - 2;
        const bool after_digits =
            before >= 0 && (family[before].isDigit() || family[before] == u'b');
        if (!after_digits) break;
        (family.back() == u'b' ? bold : italic) = true;
        family.chop(1);
    }
    qsizetype digits = family.size();
    while (digits > 0 && family[digits - 1].isDigit())
        --digits;
    const int points = family.mid(digits).toInt();
    family.truncate(digits);
    if (family.isEmpty() || points <= 0 || points > 200) return desktop;
    QFont font = desktop;
    if (family == u"TextFont") {
        font.setPointSizeF(desktop.pointSizeF() * points / kUsualPoints);
    } else {
        font.setFamily(family.trimmed());
        font.setPointSize(points);
    }
    font.setBold(bold);
    font.setItalic(italic);
    return font;
}

std::string ui_font_name(const QFont& font) {
    const int points = font.pointSize() > 0 ? font.pointSize() : QFontInfo(font).pointSize();
    QString name = font.family();
    if (!name.isEmpty() && name.back().isDigit()) name += u' ';  // not a digit of the size
    name += QStringLiteral("%1").arg(points, 2, 10, QChar(u'0'));
    if (font.bold()) name += u'b';
    if (font.italic()) name += u'i';
    return name.toStdString();
}

}  // namespace dorn
