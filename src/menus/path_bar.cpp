#include "menus/path_bar.h"

#include "config/config.h"
#include "config/history.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_completion.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "ui/combo.h"
#include "ui/dialogs.h"
#include "ui/entry_field.h"
#include "ui/qt_widget.h"

#include <QLineEdit>
#include <QPalette>

#include <optional>
#include <string>

namespace dorn {

namespace {

constexpr std::time_t kEscapePairSeconds = 2;

// What the path field was last set to: the bytes, and the text that shows them. Bytes that can't be
// shown survive as long as the text is not edited.
std::string sShownPath;
QString sShownText;

int sEscapes = 0;  // pending
std::time_t sFirstEscape = 0;

std::time_t system_clock() {
    return std::time(nullptr);
}
std::time_t (*sClock)() = system_clock;

QComboBox* path_combo() {
    return qt_instance<QComboBox>("tb_curpath");
}

QLineEdit* path_line() {
    QComboBox* combo = path_combo();
    return combo == nullptr ? nullptr : combo->lineEdit();
}

QString display_text(const std::string& path) {
    return QString::fromUtf8(fname_decode(path.c_str(), nullptr));
}

// The path that a text stands for; null when the translation can't represent it. Valid until the
// next translation.
const char* path_of_text(const QString& shown, const std::string& text) {
    return shown == sShownText ? sShownPath.c_str() : fname_encode(text.c_str());
}

void add_shown_path_to_history() {
    if (!gPathList) return;
    const std::string shown = fname_decode(gDir->path.c_str(), nullptr);
    cl_add(gPathList.get(), shown.c_str());
    cl_apply(gPathList.get(), w_instance("tb_curpath"));
}

// Goes to a path given as text, in display form: the field's, or an entry of the history.
void tb_curpath_cb(const QString& shown, const std::string& text) {
    const char* encoded = path_of_text(shown, text);
    if (encoded == nullptr) {
        wreport(w_instance("base"), "Error", "Unable to encode '%s' into '%s' encoding.",
                text.c_str(), gConfig->alt_encoding);
        return;
    }
    const std::string path = encoded;
    if (fl_newpath(nullptr, path.c_str()) == 0) add_shown_path_to_history();
}

// Completes what is being typed from the history; the added tail is selected, behind the cursor.
void complete_from_history(const EntryField& field, QLineEdit* line) {
    const QString typed = line->text();
    const qsizetype before = field.length_before_key();
    if (typed.isEmpty() || before < 0 || (gOptions & kOptionInlineCompletion) == 0) return;
    if (typed.size() <= before || line->cursorPosition() != typed.size() || !gPathList) return;
    const std::string text = typed.toStdString();
    const char* entry = cl_find_pattern(gPathList.get(), text.c_str());
    if (entry == nullptr) return;
    const char* address = cl_is_web_address(text.c_str());
    const std::string prefix =
        address == nullptr ? "" : text.substr(0, static_cast<std::size_t>(address - text.c_str()));
    const QString whole = QString::fromStdString(prefix + entry);
    if (whole.size() <= typed.size() || !whole.startsWith(typed)) return;
    line->setText(whole);
    line->setSelection(static_cast<int>(whole.size()),
                       -static_cast<int>(whole.size() - typed.size()));
}

void complete_directory(QLineEdit* line) {
    if (line->hasSelectedText()) line->del();
    const std::string text = line->text().toStdString();
    const char* encoded = path_of_text(line->text(), text);
    const std::string path = encoded == nullptr ? "" : encoded;
    const std::optional<std::string> found = find_matching_dir(path.c_str());
    if (found)
        tb_curpath_set_text(found->c_str());
    else
        ui_bell();
}

// Counts Escapes; the second within its time completes. True when the key is used up.
bool tb_key_pressed_cb(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) {
        sEscapes = 0;
        return false;
    }
    const std::time_t now = sClock();
    if (sEscapes > 0 && now - sFirstEscape > kEscapePairSeconds) {
        sEscapes = 0;
        return true;
    }
    sFirstEscape = now;
    if (++sEscapes < 2) return true;
    sEscapes = 0;
    complete_directory(path_line());
    return true;
}

// Sets the filter from a text: the field's, or an entry of the history.
void tb_filespec_cb(const std::string& text) {
    const std::string pattern = text.empty() ? "*" : text;
    QComboBox* combo = qt_instance<QComboBox>("tb_filespec");
    if (text.empty()) combo->setEditText(QStringLiteral("*"));
    if (fl_setspec(pattern.c_str()) != 0 || !gSpecList) return;
    cl_add(gSpecList.get(), pattern.c_str());
    cl_apply(gSpecList.get(), handle(combo));
}

std::string history_entry(const std::unique_ptr<HistoryList>& list, int index) {
    const char* entry = list ? cl_get(list.get(), index + 1) : nullptr;
    return entry == nullptr ? "" : entry;
}

void set_up_path_field(QComboBox* combo) {
    auto* field = new EntryField(combo);
    QLineEdit* line = combo->lineEdit();
    field->on_key = tb_key_pressed_cb;
    field->on_interrupt = [] { sEscapes = 0; };
    field->on_palette = tb_curpath_update_appearance;
    QObject::connect(line, &QLineEdit::textEdited,
                     [field, line] { complete_from_history(*field, line); });
    QObject::connect(line, &QLineEdit::textChanged, [] {
        if ((gOptions & kOptionColourWebAddress) != 0) tb_curpath_update_appearance();
    });
    QObject::connect(line, &QLineEdit::returnPressed,
                     [line] { tb_curpath_cb(line->text(), line->text().toStdString()); });
    QObject::connect(combo, &QComboBox::activated, [](int index) {
        const std::string entry = history_entry(gPathList, index);
        if (!entry.empty()) tb_curpath_cb(QString(), entry);
    });
}

void set_up_filter_field(QComboBox* combo) {
    auto* field = new EntryField(combo);
    QLineEdit* line = combo->lineEdit();
    field->on_key = [combo](QKeyEvent* event) {
        if (event->key() != Qt::Key_Escape) return false;
        combo->setEditText(QString::fromStdString(gDir != nullptr ? gDir->filespec : "*"));
        misc_give_focus(w_instance("filelist"));
        return true;
    };
    QObject::connect(line, &QLineEdit::returnPressed,
                     [line] { tb_filespec_cb(line->text().toStdString()); });
    QObject::connect(combo, &QComboBox::activated,
                     [](int index) { tb_filespec_cb(history_entry(gSpecList, index)); });
}

}  // namespace

void path_bar_setup() {
    if (auto* combo = qt_instance<QComboBox>("tb_filespec")) set_up_filter_field(combo);
    if (QComboBox* combo = path_combo()) set_up_path_field(combo);
}

void path_bar_set_clock(std::time_t (*now)()) {
    sClock = now == nullptr ? system_clock : now;
}

void tb_curpath_set_text(const char* path) {
    QComboBox* combo = path_combo();
    if (combo == nullptr) return;
    sShownPath = path;
    combo->setEditText(display_text(sShownPath));
    combo->lineEdit()->end(false);
    sShownText = combo->currentText();
}

void tb_curpath_update_appearance() {
    QLineEdit* line = path_line();
    if (line == nullptr) return;
    if (cl_is_web_address(line->text().toUtf8().constData()) == nullptr) {
        line->setPalette(QPalette());
        return;
    }
    QPalette palette = path_combo()->palette();
    const bool dark = palette.color(QPalette::Base).lightness() < 128;
    palette.setColor(QPalette::Text, dark ? palette.color(QPalette::Link) : QColor(0, 0, 255));
    line->setPalette(palette);
}

}  // namespace dorn
