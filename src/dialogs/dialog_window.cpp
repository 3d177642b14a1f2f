#include "dialogs/dialog_window.h"

#include "filelist/filelist.h"

#include <QLayout>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>

namespace dorn {

namespace {

// The size that shows everything without scrolling. Layouts know theirs for certain only when their
// widgets have been given a style, which otherwise happens when they are shown.
QSize whole_size(QDialog* dialog) {
    for (QWidget* child : dialog->findChildren<QWidget*>())
        child->ensurePolished();
    for (QLayout* layout : dialog->findChildren<QLayout*>())
        layout->invalidate();
    QSize size = dialog->sizeHint();
    for (const auto* area : dialog->findChildren<QScrollArea*>())
        size += area->widget()->sizeHint() - area->sizeHint();
    return size;
}

// As large as it wants to be, or as the screen lets it be: then with room for the scroll bar.
void fit_to_screen(QDialog* dialog) {
    const QSize room = dialog->screen()->availableSize() * 9 / 10;
    QSize size = whole_size(dialog);
    if (size.height() > room.height())
        size.rwidth() += dialog->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    dialog->resize(size.boundedTo(room));
}

}  // namespace

QDialog* dialog_make() {
    auto* dialog = new QDialog(qt(w_instance("base")));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    ui_close_with_base(dialog);
    return dialog;
}

void dialog_block_base(QDialog* dialog) {
    wblock(w_instance("base"), 1);
    fl_hold_refresh(true);
    QObject::connect(dialog, &QDialog::finished, [] {
        wblock(w_instance("base"), 0);
        fl_hold_refresh(false);
    });
}

void dialog_show(QDialog* dialog, QWidget* focus) {
    ui_register_instances(dialog);
    fit_to_screen(dialog);
    wcenter(w_instance("base"), handle(dialog));
    dialog->show();
    wfocus(handle(focus));
}

bool dialog_is_open(const QDialog* dialog) {
    return dialog != nullptr && dialog->isVisible();
}

bool dialog_to_front(QDialog* dialog) {
    if (!dialog_is_open(dialog)) return false;
    QWidget* focus = dialog->focusWidget();
    wfocus(handle(focus == nullptr ? dialog : focus));
    return true;
}

}  // namespace dorn
