#include "dialogs/about.h"

#include "dialogs/dialog_window.h"
#include "ui_about_dlg.h"

#include <QPointer>

namespace dorn {

namespace {

constexpr int kPictureSize = 64;  // pixels

QPointer<QDialog> sDialog;

}  // namespace

int help_about() {
    if (dialog_to_front(sDialog)) return 0;
    sDialog = dialog_make();
    Ui::AboutDlg layout;
    layout.setupUi(sDialog);
    layout.about_picture->setPixmap(
        ui_icon("dorn").pixmap(QSize(kPictureSize, kPictureSize), sDialog->devicePixelRatioF()));
    wprintf(handle(layout.about_version), "- Version %s", DORN_VERSION);
    QObject::connect(layout.about_done, &QPushButton::clicked, sDialog, &QDialog::accept);
    dialog_show(sDialog, layout.about_done);
    return 0;
}

}  // namespace dorn
