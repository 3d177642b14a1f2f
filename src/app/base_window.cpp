#include "app/base_window.h"

#include "app/base.h"
#include "fileops/slots.h"
#include "fileops/slots_window.h"
#include "ui/qt_widget.h"
#include "ui_base.h"

#include <QApplication>
#include <QCloseEvent>

namespace dorn {

namespace {

class BaseWindow : public QMainWindow {
  public:
    BaseWindow() {
        layout_.setupUi(this);
        setWindowIcon(ui_icon("dorn", "system-file-manager"));
        ui_register_instances(this);
        QObject::connect(layout_.show_operations, &QToolButton::clicked, [] { slots_show(); });
    }

  protected:
    void closeEvent(QCloseEvent* event) override {
        base_closing();
        event->accept();
        slot_terminate_all(n_slots);
    }

  private:
    Ui::Base layout_;
};

// The way back to the operations window that the user has closed.
void operations_window_changed() {
    if (auto* button = qt_instance<QToolButton>("show_operations"); button != nullptr)
        button->setVisible(slots_window_is_hidden());
}

// Not to be refused by a window, as quitting is.
void end_event_loop() {
    QApplication::exit();
}

bool is_closed() {
    return base_window_closed != 0;
}

}  // namespace

QMainWindow* base_make() {
    slot_set_exit_cb(end_event_loop, is_closed);
    slots_window_set_hidden_cb(operations_window_changed, is_closed);
    return new BaseWindow;
}

}  // namespace dorn
