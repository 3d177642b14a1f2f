#include <QGuiApplication>
#include <QPalette>

#include "ui/qt_widget.h"

namespace dorn {

QIcon ui_icon(const char* own_name, const char* theme_name) {
    const QIcon own(QStringLiteral(":/pictures/%1.svg").arg(QLatin1String(own_name)));
    if (theme_name == nullptr) return own;
    return QIcon::fromTheme(QLatin1String(theme_name), own);
}

}  // namespace dorn
