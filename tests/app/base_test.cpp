#include "app/base.h"

#include "dirmodel/dir_entry.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>

namespace dorn {
namespace {

class Base : public WindowTest {};

TEST_F(Base, ASignalledRereadLeavesTheUserWhereTheyWork) {
    auto* field = qt_instance<QComboBox>("tb_curpath");
    field->lineEdit()->setFocus();
    field->setEditText(QStringLiteral("/half/ty"));
    sandbox_.write("made elsewhere");
    signal_refresh();
    EXPECT_EQ(gDir->count, 1);
    EXPECT_EQ(field->currentText(), QStringLiteral("/half/ty"));
    EXPECT_EQ(window_->focusWidget(), field);

    fl_hold_refresh(true);
    sandbox_.write("made meanwhile");
    signal_refresh();
    fl_hold_refresh(false);
    EXPECT_TRUE(QTest::qWaitFor([] { return gDir->count == 2; }));
    EXPECT_EQ(field->currentText(), QStringLiteral("/half/ty"));

    qt(w_instance("filelist"))->setFocus();
    QWidget dialog;
    dialog.show();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    signal_refresh();
    EXPECT_EQ(QApplication::activeWindow(), &dialog);
    dialog.hide();
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
    signal_refresh();
    EXPECT_EQ(field->currentText(), QString::fromUtf8(sandbox_.path()));
}

}  // namespace
}  // namespace dorn
