// The one dialog that no file system here asks for: what a screen reader is told of it.
#include "fileops/engine/prompts.h"
#include "fileops/long_filename.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QAccessible>
#include <QApplication>
#include <QTimer>

namespace dorn {
namespace {

class LongName : public WindowTest {};

TEST_F(LongName, EachControlOfItsDialogHasAName) {
    int controls = 0;
    QTimer::singleShot(0, window_, [&controls] {
        QWidget* dialog = QApplication::activeModalWidget();
        for (const QWidget* control : dialog->findChildren<QWidget*>()) {
            if (!control->isVisible() || control->focusPolicy() == Qt::NoFocus) continue;
            ++controls;
            const auto* told = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(control));
            EXPECT_FALSE(told->text(QAccessible::Name).isEmpty()) << controls;
        }
        dialog->close();
    });
    oldfile = "a name";
    long_filename_ask(handle(window_));
    EXPECT_EQ(controls, 4) << "two fields, Skip, Rename";
}

}  // namespace
}  // namespace dorn
