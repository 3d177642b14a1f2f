#include "dialogs/pattern.h"

#include "assoc/engine/association.h"
#include "config/history.h"
#include "dialogs/dialog_window.h"
#include "dialogs/typed_name.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "filelist/selection.h"
#include "ui/combo.h"
#include "ui/entry_field.h"
#include "ui_pattern_dlg.h"

#include <QLineEdit>
#include <QPointer>

namespace dorn {

int32_t gPattern_op = 0;

namespace {

constexpr int kFieldCharacters = 40;  // that fit the field at first

QPointer<QDialog> sDialog;

void pattern_select(const Ui::PatternDlg& layout) {
    const std::string pattern = typed_text(layout.ppattern->currentText());
    const uint32_t flags = layout.pinclude->isChecked() ? 0 : kFindSkipDirectories;
    if (isempty(pattern.c_str()) == 0 && gPatternList != nullptr)
        cl_add(gPatternList.get(), pattern.c_str());
    sDialog->accept();
    fl_refresh_if_asked();
    // Names are matched as they are on disk, where a name that can't be written is none.
    const char* encoded = fname_encode(pattern.c_str());
    if (encoded == nullptr) return;
    if (gPattern_op == 0)
        fl_select(encoded, flags);
    else
        fl_unselect(encoded, flags);
    status_bar_update();
}

// A combo box made anew holds nothing yet, whatever the history's flag says.
void fill(QComboBox* combo) {
    new EntryField(combo);
    if (gPatternList == nullptr) return;
    gPatternList->flags |= kHistoryChanged;
    cl_apply(gPatternList.get(), handle(combo));
    combo->setCurrentIndex(-1);
    combo->clearEditText();
    if (gPatternList->count > 0) cl_text_select(handle(combo), 1);
}

void pattern_setup() {
    sDialog = dialog_make();
    Ui::PatternDlg layout;
    layout.setupUi(sDialog);
    wprintf(handle(sDialog), "%s", gPattern_op == 0 ? "Select Pattern" : "Unselect Pattern");
    fill(layout.ppattern);
    layout.ppattern->setMinimumWidth(kFieldCharacters * sDialog->fontMetrics().averageCharWidth());
    QObject::connect(layout.pattern_ok, &QPushButton::clicked,
                     [layout] { pattern_select(layout); });
    QObject::connect(layout.pattern_cancel, &QPushButton::clicked, sDialog, &QDialog::reject);
    dialog_block_base(sDialog);
    QObject::connect(sDialog, &QDialog::finished, [] { misc_give_focus(w_instance("filelist")); });
    dialog_show(sDialog, layout.ppattern);
    layout.ppattern->lineEdit()->selectAll();
}

int open_for(int32_t operation) {
    if (dialog_to_front(sDialog)) return 0;
    gPattern_op = operation;
    pattern_setup();
    return 0;
}

}  // namespace

int em_select_pattern() {
    fl_unselect_all();
    return open_for(0);
}

int em_unselect_pattern() {
    if (gDir == nullptr || gDir->n_selected == 0) return 0;
    return open_for(1);
}

}  // namespace dorn
