#include "dialogs/preferences.h"

#include "config/config.h"
#include "dialogs/dialog_window.h"
#include "dialogs/preference_bits.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "hotlist/hotlist_tree.h"
#include "platform/charset.h"

#include <QFontDialog>
#include <QPointer>
#include <QScreen>
#include <QStyle>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <span>

namespace dorn {

namespace {

constexpr const char* kNotSpecified = "Not Specified";
constexpr int kNumberCharacters = 8;  // that fit the field of the time-out
constexpr int kFontCharacters = 18;   // that fit the labels of the fonts

QPointer<QDialog> sDialog;
Ui::ConfigDlg sLayout;  // its widgets belong to sDialog

// A font as chosen so far; the label shows its name.
struct FontChoice {
    std::string name;
    QLabel* label = nullptr;

    void set(const std::string& chosen) {
        name = chosen;
        wprintf(handle(label), "%s", name.c_str());
    }
};
FontChoice sListFont;
FontChoice sTreeFont;

void copy_text(std::span<char> field, const std::string& text) {
    const std::size_t length = text.copy(field.data(), field.size() - 1);
    field[length] = '\0';
}

// The number that a text begins with, 0 for none; one that is too large is the largest.
int32_t number_of(const QString& text) {
    const long value = std::strtol(text.toStdString().c_str(), nullptr, 10);
    return static_cast<int32_t>(std::clamp<long>(value, std::numeric_limits<int32_t>::min(),
                                                 std::numeric_limits<int32_t>::max()));
}

void fill_charsets(QComboBox* combo, const char* chosen) {
    QStringList names{QLatin1String(kNotSpecified)};
    for (const std::string& name : charset_names())
        names.append(QString::fromStdString(name));
    combo->addItems(names);
    // A name that the list lacks is shown, but not selected.
    combo->setPlaceholderText(ui_text(chosen));
    const QString text = QString::fromUtf8(chosen);
    combo->setCurrentIndex(text.isEmpty() ? 0 : combo->findText(text, Qt::MatchFixedString));
}

std::string chosen_charset(const QComboBox* combo) {
    return combo->currentIndex() <= 0 ? std::string() : combo->currentText().toStdString();
}

void config_setup() {
    fill_charsets(sLayout.cenc, gConfig->alt_encoding);
    preference_bits_show(sLayout, gConfig->flags);
    sLayout.cdirs->setChecked(gConfig->dirs_first != 0);
    wprintf(handle(sLayout.cto), "%d", gConfig->keyfind_timeout);
    sListFont.label = sLayout.clist_font;
    sListFont.set(gConfig->list_font);
    sTreeFont.label = sLayout.ctree_font;
    sTreeFont.set(gConfig->hotlist_font);
}

// Gives the pane the font, when it is another one than the record names.
void apply_font(const FontChoice& choice, std::span<char> field, const char* pane) {
    if (choice.name == field.data()) return;
    copy_text(field, choice.name);
    if (QWidget* widget = qt(w_instance(pane))) widget->setFont(ui_font(field.data()));
}

// What names are translated by.
std::string translation() {
    return std::to_string(gConfig->flags & kEncodingMask) + gConfig->alt_encoding;
}

void config_apply() {
    constexpr int32_t kFoldersFirst = 2;
    const std::string translation_before = translation();
    gConfig->dirs_first = sLayout.cdirs->isChecked() ? kFoldersFirst : 0;
    const uint32_t flags = preference_bits_read(sLayout, gConfig->flags);
    std::atomic_ref(gConfig->flags).store(flags, std::memory_order_relaxed);  // workers read it
    const bool hide = (gConfig->flags & kHideDotFiles) != 0;
    gOptions = hide ? gOptions & ~kOptionDotEntries : gOptions | kOptionDotEntries;
    gConfig->keyfind_timeout = number_of(sLayout.cto->text());
    apply_font(sTreeFont, gConfig->hotlist_font, "tree");
    apply_font(sListFont, gConfig->list_font, "filelist");
    copy_text(gConfig->alt_encoding, chosen_charset(sLayout.cenc));
    sDialog->accept();
    fname_set_translation(gConfig->flags & kEncodingMask, gConfig->alt_encoding);
    fl_refresh();
    if (translation() != translation_before) tree_translation_changed();
}

// Over the button, as far as the screen has room there.
QPoint position_for(const QDialog* fonts, const QWidget* button) {
    const QRect screen = button->screen()->availableGeometry();
    const int title_bar = fonts->style()->pixelMetric(QStyle::PM_TitleBarHeight);
    const QSize size = fonts->sizeHint() + QSize(0, 2 * title_bar);
    const QPoint last = screen.bottomRight() - QPoint(size.width(), size.height());
    const QPoint at = button->mapToGlobal(QPoint(0, 0));
    return {qMax(screen.left(), qMin(at.x(), last.x())),
            qMax(screen.top(), qMin(at.y(), last.y()))};
}

// Lets the user choose a font, starting from the one chosen so far.
void choose_font(FontChoice* choice, const QWidget* button, const char* title) {
    const QFont before = ui_font(choice->name.c_str());
    const QPointer<QFontDialog> fonts = new QFontDialog(before, sDialog);
    fonts->setObjectName(QStringLiteral("font_dlg"));
    fonts->setWindowTitle(QString::fromUtf8(title));
    fonts->setOption(QFontDialog::DontUseNativeDialog);
    fonts->move(position_for(fonts, button));
    const bool chosen = fonts->exec() == QDialog::Accepted;
    if (!fonts) return;  // closed with the dialog under it
    const QFont font = fonts->selectedFont();
    delete fonts;
    if (chosen && ui_font_name(font) != ui_font_name(before)) choice->set(ui_font_name(font));
}

void config_list_font() {
    choose_font(&sListFont, sLayout.clist_select, "Select File List Font");
}

void config_tree_font() {
    choose_font(&sTreeFont, sLayout.ctree_select, "Select Tree Font");
}

}  // namespace

int em_edit_preferences() {
    if (dialog_to_front(sDialog)) return 0;
    sDialog = dialog_make();
    sLayout.setupUi(sDialog);
    config_setup();
    const int character = sDialog->fontMetrics().averageCharWidth();
    sLayout.cto->setMaximumWidth(kNumberCharacters * character * 3 / 2);
    sLayout.clist_font->setMinimumWidth(kFontCharacters * character);
    sLayout.ctree_font->setMinimumWidth(kFontCharacters * character);
    QObject::connect(sLayout.clist_select, &QPushButton::clicked, config_list_font);
    QObject::connect(sLayout.ctree_select, &QPushButton::clicked, config_tree_font);
    QObject::connect(sLayout.capply, &QPushButton::clicked, config_apply);
    QObject::connect(sLayout.ccancel, &QPushButton::clicked, sDialog, &QDialog::reject);
    dialog_show(sDialog, sLayout.cdot);
    return 0;
}

}  // namespace dorn
