#include "fileops/long_filename.h"

#include "dirmodel/name_translation.h"
#include "fileops/engine/prompts.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"
#include "ui_long_filename.h"

#include <QDialog>
#include <QPointer>

namespace dorn {

namespace {

constexpr int kFieldCharacters = 52;  // that fit the fields

QString shown(const std::string& name) {
    return ui_text(fname_decode(name.c_str(), nullptr));
}

void long_filename_setup(const Ui::LongFilename& layout) {
    layout.long_filename_oldname->setText(shown(oldfile));
    layout.long_filename_oldname->setCursorPosition(0);
    layout.long_filename_newname->setText(shown(newfile));
    const QFontMetrics metrics = layout.long_filename_newname->fontMetrics();
    layout.long_filename_newname->setMinimumWidth(kFieldCharacters * metrics.averageCharWidth());
    layout.long_filename_newname->selectAll();
    layout.long_filename_newname->setFocus();
}

// A field that was left as it is stands for the very bytes of the proposed name.
void long_filename_rename(const QString& text) {
    do_rename = 1;
    if (text.isEmpty() || text == shown(newfile)) return;
    const std::string typed = text.toStdString();  // may be the result's very text
    if (const char* name = fname_encode(typed.c_str()); name != nullptr)
        newfile = fop_cut_name(name);
}

}  // namespace

void long_filename_ask(Widget* parent) {
    const QPointer<QDialog> dialog = new QDialog(qt(parent));
    Ui::LongFilename layout;
    layout.setupUi(dialog);
    ui_register_instances(dialog);
    long_filename_setup(layout);
    QObject::connect(layout.long_filename_skip, &QPushButton::clicked, dialog, &QDialog::reject);
    QObject::connect(layout.long_filename_rename, &QPushButton::clicked, dialog,
                     [&dialog, field = layout.long_filename_newname] {
                         long_filename_rename(field->text());
                         dialog->accept();
                     });
    dialog->exec();
    delete dialog;
}

}  // namespace dorn
