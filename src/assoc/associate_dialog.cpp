// The list dialog of the associations. It edits a copy of the table, which Done puts in the table's
// place and writes.
#include "assoc/assoc_dialogs.h"
#include "assoc/assoc_type_dialog.h"
#include "assoc/row_text.h"
#include "config/config.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"
#include "ui_associate_dlg.h"

#include <QDialog>
#include <QLayout>
#include <QPointer>
#include <QScreen>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTreeWidget>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace dorn {

namespace {

enum class EditMode { Add = 1, Edit = 2 };

struct WorkingList {
    std::vector<std::string> atmp;  // rows as text, see assoc/row_text.h
    int32_t atmp_sel = 0;           // 1-based, the selected row; 0: none
    EditMode apat_mode = EditMode::Add;

    std::string& selected() {
        return atmp[static_cast<std::size_t>(atmp_sel - 1)];
    }
};

WorkingList sWorking;
QPointer<QDialog> sDialog;
Ui::AssociateDlg sLayout;  // its widgets belong to sDialog

void allow_changes(bool on) {
    sLayout.as_edit->setEnabled(on);
    sLayout.as_remove->setEnabled(on);
}

void select_row(int32_t row) {
    sLayout.as_list->setCurrentItem(sLayout.as_list->topLevelItem(row - 1));
}

// A row is always selected where there is one: a click that would unselect it does not.
void as_select() {
    QTreeWidget* list = sLayout.as_list;
    QTreeWidgetItem* current = list->currentItem();
    if (current == nullptr) return;
    if (!current->isSelected()) {
        const QSignalBlocker quiet(list);
        current->setSelected(true);
    }
    if (sWorking.atmp_sel == 0) allow_changes(true);
    sWorking.atmp_sel = list->indexOfTopLevelItem(current) + 1;
}

void give_rows_to_list() {
    QTreeWidget* list = sLayout.as_list;
    const QSignalBlocker quiet(list);
    list->clear();
    for (const std::string& text : sWorking.atmp) {
        QStringList columns;
        for (const std::string& column : _split_str(text, '\t', 4))
            columns.append(ui_text(column.c_str()));
        list->addTopLevelItem(new QTreeWidgetItem(columns));
    }
    sWorking.atmp_sel = sWorking.atmp.empty() ? 0 : 1;
    if (sWorking.atmp_sel == 1) select_row(1);
    allow_changes(sWorking.atmp_sel == 1);
}

// Widths for the texts, within limits; then the window is made wide enough for the columns.
void fit_columns() {
    constexpr int kLeastCharacters = 10;
    constexpr int kMostCharacters = 40;
    QTreeWidget* list = sLayout.as_list;
    const int character = list->fontMetrics().averageCharWidth();
    int total = 0;
    for (int column = 0; column < list->columnCount(); ++column) {
        list->resizeColumnToContents(column);
        list->setColumnWidth(
            column, std::clamp(list->columnWidth(column) + character, kLeastCharacters * character,
                               kMostCharacters * character));
        total += list->columnWidth(column);
    }
    const QMargins margins = sDialog->layout()->contentsMargins();
    const int around = margins.left() + margins.right() + 3 * character;  // and a scroll bar
    const QSize room = sDialog->screen()->availableSize() * 9 / 10;
    sDialog->resize(std::min(std::max(total + around, sDialog->width()), room.width()),
                    std::min(sDialog->height(), room.height()));
}

void as_setup() {
    sWorking = {};
    try {
        for (const Association& row : apat)
            sWorking.atmp.push_back(row_text(row));
    } catch (const std::bad_alloc&) {
        wreport(w_instance("base"), "Error", "Unable to allocate memory");
        std::exit(1);
    }
    give_rows_to_list();
}

void as_take_row(const std::string& text) {
    if (sWorking.apat_mode == EditMode::Edit)
        sWorking.selected() = text;
    else
        sWorking.atmp.push_back(text);
    give_rows_to_list();
    wfocus(handle(sLayout.as_list));
}

void as_add() {
    sWorking.apat_mode = EditMode::Add;
    at_setup_new(sDialog, as_take_row);
}

void as_edit() {
    if (sWorking.atmp_sel == 0) return;
    sWorking.apat_mode = EditMode::Edit;
    at_setup_edit(sDialog, sWorking.selected(), as_take_row);
}

void as_remove() {
    if (sWorking.atmp_sel == 0) return;
    sWorking.atmp.erase(sWorking.atmp.begin() + (sWorking.atmp_sel - 1));
    give_rows_to_list();
}

// The row that the next start would not read as it is becomes the selected one; false when there is
// one. Only a file written by hand can have brought it.
bool all_rows_fit() {
    for (std::size_t i = 0; i < sWorking.atmp.size(); ++i) {
        const RowRefusal refusal = row_too_long(sWorking.atmp[i]);
        if (refusal.message.empty()) continue;
        select_row(static_cast<int32_t>(i) + 1);
        wreport(w_instance("base"), "DORN", "%s", refusal.message.c_str());
        return false;
    }
    return true;
}

void as_done() {
    if (!all_rows_fit()) return;
    std::vector<Association> rows;
    for (const std::string& text : sWorking.atmp)
        rows.push_back(row_of_text(text));
    sWorking = {};
    const char* directory = gConfigPath == nullptr ? nullptr : gConfigPath->c_str();
    assoc_replace(std::move(rows), directory, "associate.003");
    sDialog->accept();
}

void as_cancel() {
    at_cancel();
    sWorking = {};
}

void connect_list() {
    QTreeWidget* list = sLayout.as_list;
    QObject::connect(list, &QTreeWidget::itemSelectionChanged, as_select);
    QObject::connect(list, &QTreeWidget::itemDoubleClicked, as_edit);
    auto on_key = [list](Qt::Key key, void (*act)()) {
        auto unless_blocked = [act] {
            if (!ui_is_blocked(handle(sDialog))) act();
        };
        auto* shortcut = new QShortcut(key, list, unless_blocked, Qt::WidgetShortcut);
        shortcut->setAutoRepeat(false);
    };
    on_key(Qt::Key_Return, as_edit);
    on_key(Qt::Key_Enter, as_edit);
    on_key(Qt::Key_Insert, as_add);
    on_key(Qt::Key_Delete, as_remove);
}

}  // namespace

int em_edit_associations() {
    if (sDialog && sDialog->isVisible()) {
        if (!at_to_front()) wfocus(handle(sLayout.as_list));
        return 0;
    }
    sDialog = new QDialog(qt(w_instance("base")));
    sDialog->setAttribute(Qt::WA_DeleteOnClose);
    ui_close_with_base(sDialog);
    sLayout.setupUi(sDialog);
    ui_register_instances(sDialog);
    connect_list();
    QObject::connect(sLayout.as_edit, &QPushButton::clicked, as_edit);
    QObject::connect(sLayout.as_remove, &QPushButton::clicked, as_remove);
    QObject::connect(sLayout.as_add, &QPushButton::clicked, as_add);
    QObject::connect(sLayout.as_done, &QPushButton::clicked, as_done);
    QObject::connect(sLayout.as_cancel, &QPushButton::clicked, sDialog, &QDialog::reject);
    QObject::connect(sDialog, &QDialog::rejected, as_cancel);
    as_setup();
    fit_columns();
    wcenter(w_instance("base"), handle(sDialog));
    sDialog->show();
    wfocus(handle(sLayout.as_list));
    return 0;
}

}  // namespace dorn
