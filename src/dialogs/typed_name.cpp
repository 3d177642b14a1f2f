#include "dialogs/typed_name.h"

#include "config/config.h"
#include "ui/dialogs.h"

#include <QString>

#include <algorithm>

namespace dorn {

namespace {

bool is_break(QChar c) {
    return c == u'\n' || c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

}  // namespace

std::string typed_text(const QString& text) {
    QString line = text;
    line.remove(QChar(u'\0'));
    while (!line.isEmpty() && is_break(line.back()))
        line.chop(1);
    while (!line.isEmpty() && is_break(line.front()))
        line.remove(0, 1);
    std::replace_if(line.begin(), line.end(), is_break, QChar(u' '));
    return line.toStdString();
}

void report_untranslatable(const std::string& typed) {
    wreport(w_instance("base"), "Error", "Unable to translate '%s' into '%s' encoding.",
            typed.c_str(), gConfig->alt_encoding);
}

}  // namespace dorn
