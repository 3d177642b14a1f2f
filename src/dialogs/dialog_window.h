// What the dialogs over the main window have in common: how they open, close and keep the rest of
// the program waiting. Event-loop thread only.
//
//     sDialog = dialog_make();
//     layout.setupUi(sDialog);
//     dialog_block_base(sDialog);
//     dialog_show(sDialog, layout.name);
#pragma once

#include "ui/background.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <optional>

namespace dorn {

/// An empty dialog over the main window. It deletes itself when it is closed, and closes (as by
/// Escape) when the main window is hidden.
QDialog* dialog_make();

/// Blocks the main window from here until the dialog closes. The file list is not re-read
/// meanwhile; a refresh that is asked for is done when the dialog has closed.
void dialog_block_base(QDialog* dialog);

/// Makes the dialog's widgets known by their names, shows it as large as its contents (and the
/// screen) want it, centred over the main window, and gives `focus` the keyboard.
void dialog_show(QDialog* dialog, QWidget* focus);

/// Brings a dialog that is open to the front; false when it is null or closed.
bool dialog_to_front(QDialog* dialog);

/// Whether the dialog is there and open: not so when it was closed while something was waited for.
bool dialog_is_open(const QDialog* dialog);

/// The result of `work`, which makes a file-system call that may hang and owns all it touches. The
/// dialog takes no input meanwhile. Nothing when there was no answer in time; `work` may still go
/// on then.
template <class Result>
std::optional<Result> dialog_bounded(QDialog* dialog, std::function<Result()> work) {
    const ScopedBlock block(handle(dialog));
    auto result = std::make_shared<Result>();
    if (!ui_bounded([result, work = std::move(work)] { *result = work(); })) return std::nullopt;
    return *result;
}

}  // namespace dorn
