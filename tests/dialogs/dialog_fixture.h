// What the tests of the dialogs over the main window share. Main window as in WindowTest.
#pragma once

#include "support_gui/window_test.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>
#include <string>

namespace dorn {

class DialogTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        QApplication::setActiveWindow(window_);
    }
    void TearDown() override {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (qobject_cast<QDialog*>(window) != nullptr) window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_FALSE(ui_is_blocked(handle(window_)));
        WindowTest::TearDown();
    }

    static bool is_open(const char* dialog) {
        const QWidget* window = qt(w_instance(dialog));
        return window != nullptr && window->isVisible();
    }
    static void push(const char* button) {
        QTest::mouseClick(qt_instance<QPushButton>(button), Qt::LeftButton);
    }
    static void enter(const char* field, const QString& text) {
        qt_instance<QLineEdit>(field)->setText(text);
    }
    static std::string field_text(const char* field) {
        return qt_instance<QLineEdit>(field)->text().toStdString();
    }
    static bool gets_focus(const char* name) {
        return QTest::qWaitFor([name] {
            const QWidget* widget = qt(w_instance(name));
            return widget != nullptr && widget == QApplication::focusWidget();
        });
    }

    // What the alerts that `act` leads to say, each as "title: text"; empty when there is none.
    // Each is ended by the button of that label, else as by Escape.
    static std::string alerts_of(const std::function<void()>& act, const char* button = "") {
        std::string said;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&said, button] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr) return;
            said += (box->windowTitle() + QStringLiteral(": ") + box->text()).toStdString();
            for (QAbstractButton* offered : box->buttons())
                if (offered->text() == QLatin1String(button)) return offered->click();
            box->close();
        });
        timer.start(1);
        act();
        return said;
    }
    static std::string alerts_after(const char* pushed, const char* button = "") {
        return alerts_of([pushed] { push(pushed); }, button);
    }
};

}  // namespace dorn
