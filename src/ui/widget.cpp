#include "ui/qt_widget.h"

#include <QHash>
#include <QPointer>

namespace dorn {

namespace {

QHash<QByteArray, QPointer<QWidget>>& instances() {
    static QHash<QByteArray, QPointer<QWidget>> table;
    return table;
}

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

}  // namespace dorn
