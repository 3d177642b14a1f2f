#include "dialogs/dialog_window.h"

#include "filelist/filelist.h"

#include <QEvent>
#include <QScreen>
#include <QScrollArea>

#include <fcntl.h>
#include <unistd.h>

namespace dorn {

namespace {

// Closes its dialog, whose child it is, with the main window: hidden, that would leave it behind.
class CloseWithBase : public QObject {
  public:
    CloseWithBase(QDialog* dialog, QWidget* base) : QObject(dialog), dialog_(dialog) {
        base->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Hide && !event->spontaneous()) dialog_->reject();
        return false;
    }

  private:
    QDialog* dialog_;
};

// A scroll area asks for little, whatever it holds.
QSize whole_size(QDialog* dialog) {
    QSize size = dialog->sizeHint();
    for (const auto* area : dialog->findChildren<QScrollArea*>()) {
        if (area->widget() != nullptr) size += area->widget()->sizeHint() - area->sizeHint();
    }
    return size.expandedTo(dialog->sizeHint());
}

}  // namespace

QDialog* dialog_make() {
    QWidget* base = qt(w_instance("base"));
    auto* dialog = new QDialog(base);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (base != nullptr) new CloseWithBase(dialog, base);
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
    const QSize room = dialog->screen()->availableSize() * 9 / 10;
    dialog->resize(whole_size(dialog).boundedTo(room));
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

ShownDirectory::ShownDirectory() : fd_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {}

ShownDirectory::~ShownDirectory() {
    if (fd_ >= 0) close(fd_);
}

}  // namespace dorn
