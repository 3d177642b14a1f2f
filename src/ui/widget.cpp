#include "ui/qt_widget.h"

#include <QDialog>
#include <QEvent>
#include <QHash>
#include <QPointer>

namespace dorn {

namespace {

QHash<QByteArray, QPointer<QWidget>>& instances() {
    static QHash<QByteArray, QPointer<QWidget>> table;
    return table;
}

// Belongs to its dialog and watches the main window.
class CloseWithBase : public QObject {
  public:
    explicit CloseWithBase(QDialog* dialog) : QObject(dialog), dialog_(dialog) {}

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Hide && !event->spontaneous()) dialog_->reject();
        return false;
    }

  private:
    QDialog* dialog_;
};

}  // namespace

Widget* w_instance(const char* name) {
    return handle(instances().value(QByteArray::fromRawData(name, qsizetype(qstrlen(name)))));
}

void ui_register_instances(QWidget* root) {
    auto add = [](QWidget* widget) {
        if (!widget->objectName().isEmpty())
            instances().insert(widget->objectName().toLatin1(), widget);
    };
    add(root);
    for (QWidget* widget : root->findChildren<QWidget*>())
        add(widget);
}

void ui_close_with_base(QDialog* dialog) {
    if (QWidget* base = qt(w_instance("base"))) base->installEventFilter(new CloseWithBase(dialog));
}

}  // namespace dorn
