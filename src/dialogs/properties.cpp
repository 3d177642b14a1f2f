#include "dialogs/properties.h"

#include "dialogs/dialog_window.h"
#include "dialogs/property_apply.h"
#include "dialogs/property_view.h"
#include "dialogs/typed_name.h"
#include "dirmodel/entry_text.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "filelist/selection.h"

#include <QPointer>

namespace dorn {

namespace {

constexpr int kValueCharacters = 44;  // that fit the values at first

QPointer<QDialog> sDialog;
Ui::PropertyDlg sLayout;  // its widgets belong to sDialog

// The selection and the fields as they were when the dialog opened.
struct Opened {
    bool one_entry;
    std::string first_name;
    std::vector<PropertyTarget> targets;
    QString name;
    QString owner;
    QString group;
};
Opened sOpened;

bool is_selected(int32_t index) {
    return (gDir->entries[index]->flags & kEntrySelected) != 0;
}

int32_t first_selected() {
    int32_t index = 0;
    while (index < gDir->count && !is_selected(index))
        ++index;
    return index;
}

// Of several entries those whose attributes are not known are left alone.
std::vector<PropertyTarget> selected_targets(bool one_entry) {
    std::vector<PropertyTarget> targets;
    for (int32_t i = 0; i < gDir->count; ++i) {
        const DirEntry& entry = *gDir->entries[i];
        if (!is_selected(i) || (!one_entry && !has_attributes(entry))) continue;
        targets.push_back({entry.name, entry.uid, entry.gid, entry.mode});
    }
    return targets;
}

// An unchanged text means no change, whatever it stands for.
std::string changed_text(const QLineEdit* field, const QString& before) {
    return field->text() == before ? std::string() : typed_text(field->text());
}

// The change that the fields ask for; nothing, the user having been told why, when the name can't
// be written.
std::optional<PropertyChange> asked_change(const std::string& typed_name) {
    const char* name = typed_name.empty() ? "" : fname_encode(typed_name.c_str());
    if (name == nullptr) {
        report_untranslatable(typed_name);
        return std::nullopt;
    }
    return PropertyChange{name, changed_text(sLayout.pr_owner, sOpened.owner),
                          changed_text(sLayout.pr_group, sOpened.group), shown_mode(sLayout)};
}

// Shows that the work goes on. Cancel stays usable: it ends the work.
void show_progress(const PropertyWork& work) {
    if (!sDialog) return;
    sLayout.pr_panes->setEnabled(false);
    sLayout.pr_done->setEnabled(false);
    sDialog->setCursor(Qt::BusyCursor);
    const std::string total = cvt2c(work.targets.size());
    sLayout.pr_comment->show();
    wprintf(handle(sLayout.pr_comment), "%s of %s changed", cvt2c(work.done), total.c_str());
}

// Applies the fields. Returns the name that the first entry has then.
std::string apply() {
    const std::string typed_name =
        sOpened.one_entry ? changed_text(sLayout.pr_name, sOpened.name) : std::string();
    const std::optional<PropertyChange> change = asked_change(typed_name);
    if (!change) return sOpened.first_name;
    auto work = std::make_shared<PropertyWork>();
    work->targets = std::move(sOpened.targets);
    work->change = *change;
    prop_apply(sDialog, work, typed_name, [&work] { show_progress(*work); });
    return work->renamed ? work->change.name : sOpened.first_name;
}

void prop_done() {
    const std::string name = apply();
    if (dialog_is_open(sDialog)) sDialog->accept();
    fl_refresh();
    const int32_t index = fl_find_name(name.c_str());
    if (index >= 0) fl_goto_index(index);
}

// The name without its extension, which is seldom meant to change; selected towards its beginning,
// so that this is what is seen of a long one.
void select_stem(QLineEdit* field, bool is_folder) {
    const qsizetype dot = is_folder ? -1 : field->text().lastIndexOf(u'.');
    const int length = static_cast<int>(dot > 0 ? dot : field->text().size());
    field->setSelection(length, -length);
}

void fill(const DirEntry& first) {
    sOpened = {
        gDir->n_selected == 1, first.name, selected_targets(gDir->n_selected == 1), {}, {}, {}};
    if (sOpened.one_entry)
        x_prop_setup_one(sLayout, first);
    else
        x_prop_setup_multi(sLayout);
    sOpened.name = sLayout.pr_name->text();
    sOpened.owner = sLayout.pr_owner->text();
    sOpened.group = sLayout.pr_group->text();
}

int prop_setup() {
    constexpr int kNotOpened = 2;
    const int32_t first = gDir == nullptr ? 0 : first_selected();
    if (gDir == nullptr || first >= gDir->count) return kNotOpened;
    sDialog = dialog_make();
    sLayout.setupUi(sDialog);
    fill(*gDir->entries[first]);
    const int character = sDialog->fontMetrics().averageCharWidth();
    sLayout.pr_general->setMinimumWidth(kValueCharacters * character +
                                        sLayout.pr_modified_title->sizeHint().width());
    QObject::connect(sLayout.pr_done, &QPushButton::clicked, prop_done);
    QObject::connect(sLayout.pr_cancel, &QPushButton::clicked, sDialog, &QDialog::reject);
    dialog_block_base(sDialog);
    dialog_show(sDialog,
                sOpened.one_entry ? static_cast<QWidget*>(sLayout.pr_name) : sLayout.pr_done);
    if (sOpened.one_entry) select_stem(sLayout.pr_name, is_directory(*gDir->entries[first]));
    return 0;
}

}  // namespace

int fm_inspect() {
    if (!dialog_to_front(sDialog)) prop_setup();
    return 0;
}

int em_rename() {
    return fm_inspect();
}

}  // namespace dorn
