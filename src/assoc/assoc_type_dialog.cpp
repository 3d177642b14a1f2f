#include "assoc/assoc_type_dialog.h"

#include "assoc/row_text.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"
#include "ui_assoc_type_dlg.h"

#include <QDialog>
#include <QLineEdit>
#include <QPointer>

namespace dorn {

namespace {

constexpr int kFieldCharacters = 64;  // that fit the fields at first

QPointer<QDialog> sEditor;

struct EditorFields {
    QLineEdit* pattern;
    QLineEdit* open;
    QLineEdit* view;
    QLineEdit* edit;

    QLineEdit* at(RowField field) const {
        switch (field) {
            case RowField::Open:
                return open;
            case RowField::View:
                return view;
            case RowField::Edit:
                return edit;
            default:
                return pattern;
        }
    }
};

QString shown(const std::string& bytes) {
    return QString::fromStdString(bytes);
}

// What the field holds. A text that was not changed keeps its bytes, which need not be UTF-8; the
// line break that comes along when a whole line is pasted goes.
std::string field_bytes(const QLineEdit* field, const std::string& before) {
    const QString text = field->text();
    if (text == shown(before)) return before;
    std::string bytes = text.toStdString();
    bytes.erase(bytes.find_last_not_of("\r\n") + 1);
    return bytes;
}

void at_done(const EditorFields& fields, const Association& before, RowTaker take) {
    const Association row{
        field_bytes(fields.pattern, before.pattern), field_bytes(fields.open, before.open),
        field_bytes(fields.edit, before.edit), field_bytes(fields.view, before.view)};
    if (const RowRefusal refusal = row_refusal(row); !refusal.message.empty()) {
        wreport(w_instance("base"), "DORN", "%s", refusal.message.c_str());
        if (sEditor) wfocus(handle(fields.at(refusal.field)));
        return;
    }
    sEditor->accept();
    take(row_text(row));
}

void setup(QDialog* list_dialog, const Association& row, RowTaker take) {
    sEditor = new QDialog(list_dialog);
    sEditor->setAttribute(Qt::WA_DeleteOnClose);
    Ui::AssocTypeDlg layout;
    layout.setupUi(sEditor);
    ui_register_instances(sEditor);
    const EditorFields fields{layout.at_pattern, layout.at_command, layout.at_view_cmd,
                              layout.at_edit_cmd};
    fields.pattern->setText(shown(row.pattern));
    fields.open->setText(shown(row.open));
    fields.view->setText(shown(row.view));
    fields.edit->setText(shown(row.edit));
    QObject::connect(layout.at_done, &QPushButton::clicked, sEditor,
                     [fields, row, take] { at_done(fields, row, take); });
    QObject::connect(layout.at_cancel, &QPushButton::clicked, sEditor, &QDialog::reject);
    QObject::connect(sEditor, &QDialog::finished, list_dialog,
                     [list_dialog] { wblock(handle(list_dialog), 0); });
    wblock(handle(list_dialog), 1);
    fields.pattern->setMinimumWidth(20 * sEditor->fontMetrics().averageCharWidth());
    sEditor->resize(kFieldCharacters * sEditor->fontMetrics().averageCharWidth() +
                        layout.at_edit_label->sizeHint().width(),
                    sEditor->sizeHint().height());
    wcenter(handle(list_dialog), handle(sEditor));
    sEditor->show();
    wfocus(handle(fields.pattern));
}

}  // namespace

void at_setup_new(QDialog* list_dialog, RowTaker take) {
    setup(list_dialog, {}, take);
}

void at_setup_edit(QDialog* list_dialog, const std::string& text, RowTaker take) {
    setup(list_dialog, row_of_text(text), take);
}

void at_cancel() {
    if (sEditor && sEditor->isVisible()) sEditor->reject();
}

bool at_to_front() {
    if (!sEditor || !sEditor->isVisible()) return false;
    QWidget* field = sEditor->focusWidget();
    wfocus(handle(field == nullptr ? sEditor.data() : field));
    return true;
}

}  // namespace dorn
