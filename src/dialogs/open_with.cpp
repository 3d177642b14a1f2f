#include "dialogs/open_with.h"

#include "assoc/engine/association.h"
#include "assoc/engine/command.h"
#include "config/history.h"
#include "dialogs/dialog_window.h"
#include "filelist/filelist.h"
#include "ui/combo.h"
#include "ui/entry_field.h"
#include "ui_open_with.h"

#include <QPointer>

namespace dorn {

namespace {

constexpr int kFieldCharacters = 72;  // that fit the field at first

QPointer<QDialog> sDialog;

// A combo box made anew holds nothing yet, whatever the history's flag says.
void fill(QComboBox* combo) {
    new EntryField(combo);
    if (gWithList == nullptr) return;
    gWithList->flags |= kHistoryChanged;
    cl_apply(gWithList.get(), handle(combo));
    combo->setCurrentIndex(-1);
    combo->clearEditText();
}

std::vector<std::string> selected_files() {
    std::vector<std::string> names;
    for (int32_t i = 0; gDir != nullptr && i < gDir->count; ++i) {
        const DirEntry& entry = *gDir->entries[i];
        if ((entry.flags & kEntrySelected) != 0 && !is_directory(entry))
            names.emplace_back(entry.name);
    }
    return names;
}

int fm_open_with_cb(const QComboBox* combo) {
    const std::string command = combo->currentText().toStdString();
    if (isempty(command.c_str()) == 0 && gWithList != nullptr)
        cl_add(gWithList.get(), command.c_str());
    for (const std::string& name : selected_files())
        file_cmd(command.c_str(), name.c_str());
    sDialog->accept();
    return 0;
}

}  // namespace

int fm_open_with() {
    if (dialog_to_front(sDialog)) return 0;
    sDialog = dialog_make();
    Ui::OpenWith layout;
    layout.setupUi(sDialog);
    QComboBox* combo = layout.ow_command;
    fill(combo);
    QObject::connect(layout.ow_done, &QPushButton::clicked, [combo] { fm_open_with_cb(combo); });
    QObject::connect(layout.ow_cancel, &QPushButton::clicked, sDialog, &QDialog::reject);
    combo->setMinimumWidth(kFieldCharacters * sDialog->fontMetrics().averageCharWidth());
    dialog_block_base(sDialog);
    dialog_show(sDialog, combo);
    return 0;
}

}  // namespace dorn
