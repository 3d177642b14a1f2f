#include "destmenus/dest_dialogs.h"

#include "config/history.h"
#include "dialogs/typed_name.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_completion.h"
#include "dirmodel/path_text.h"
#include "ui/combo.h"
#include "ui/dialogs.h"
#include "ui/entry_field.h"
#include "ui/qt_widget.h"
#include "ui_dest_prompt.h"

#include <QDialog>
#include <QLineEdit>

namespace dorn {

namespace {

constexpr int kYes = 2;
constexpr int kFieldCharacters = 72;  // that fit the field at first

// The field, and the bytes that completion has put there: they survive as long as the text is not
// edited, also where it can't show them.
struct DestinationField {
    QComboBox* combo;
    QString completed_text{};
    std::string completed_path{};

    std::string text() const {
        return typed_text(combo->currentText());
    }
    std::optional<std::string> path() const {
        if (!completed_path.empty() && combo->currentText() == completed_text)
            return completed_path;
        const std::string typed = text();
        const char* encoded = fname_encode(typed.c_str());
        return encoded == nullptr ? std::nullopt : std::optional<std::string>(encoded);
    }
};

// Whether there was something to complete; else Tab goes to the next field as everywhere.
bool complete(DestinationField* field) {
    const std::optional<std::string> typed = field->path();
    if (!typed || typed->empty()) return false;
    const bool relative = !typed->starts_with('/');
    const std::string path =
        relative ? es_construct_fullpath(gDir->path.c_str(), typed->c_str()) : *typed;
    const std::optional<std::string> found = find_matching_dir(path.c_str());
    if (!found || found == path) return false;
    field->combo->setEditText(QString::fromUtf8(fname_decode(found->c_str(), nullptr)));
    field->completed_path = *found;
    field->completed_text = field->combo->currentText();
    return true;
}

void set_up_field(DestinationField* field) {
    auto* entry = new EntryField(field->combo);
    if (gCopyList) {
        gCopyList->flags |= kHistoryChanged;  // a combo box made anew holds nothing yet
        cl_apply(gCopyList.get(), handle(field->combo));
    }
    field->combo->setCurrentIndex(-1);
    field->combo->clearEditText();
    entry->on_key = [field](QKeyEvent* event) {
        return event->key() == Qt::Key_Tab && event->modifiers() == Qt::NoModifier &&
               complete(field);
    };
}

}  // namespace

int confirm(const char* verb, const char* what, const char* destination) {
    const std::string message = std::string("Do you want to ") + verb + ' ' + what + " to\n'" +
                                fname_decode(destination, nullptr) + "'\n";
    return ui_alert(w_instance("base"), verb, message.c_str(), "#&No|@&Yes") == kYes ? 1 : 0;
}

std::optional<Destination> input_dest(const char* title) {
    QDialog dialog(qt(w_instance("base")));
    Ui::DestPrompt layout;
    layout.setupUi(&dialog);
    ui_register_instances(&dialog);
    dialog.setWindowTitle(QString::fromUtf8(title));
    DestinationField field{layout.dest_path};
    set_up_field(&field);
    layout.dest_ok->setEnabled(false);
    QObject::connect(layout.dest_path, &QComboBox::editTextChanged,
                     [&](const QString& text) { layout.dest_ok->setEnabled(!text.isEmpty()); });
    QObject::connect(layout.dest_ok, &QPushButton::clicked, &dialog, &QDialog::accept);
    QObject::connect(layout.dest_cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    dialog.resize(kFieldCharacters * dialog.fontMetrics().averageCharWidth(),
                  dialog.sizeHint().height());
    wcenter(w_instance("base"), handle(&dialog));
    layout.dest_path->setFocus();
    if (dialog.exec() != QDialog::Accepted || field.text().empty()) return std::nullopt;
    if (gCopyList) cl_add(gCopyList.get(), field.text().c_str());
    return Destination{field.text(), field.path()};
}

}  // namespace dorn
