#include "app/base_window.h"

#include "app/base.h"
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
    }

  protected:
    void closeEvent(QCloseEvent* event) override {
        base_closing();
        event->accept();
        QApplication::quit();
    }

  private:
    Ui::Base layout_;
};

}  // namespace

QMainWindow* base_make() {
    return new BaseWindow;
}

}  // namespace dorn
