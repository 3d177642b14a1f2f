#include "ui/combo.h"

#include "ui/qt_widget.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>

namespace dorn {

int cl_apply(HistoryList* list, Widget* combo_box) {
    auto* combo = qobject_cast<QComboBox*>(qt(combo_box));
    if (list == nullptr || combo == nullptr || (list->flags & kHistoryChanged) == 0) return 0;
    const QSignalBlocker quiet(combo);
    const QString text = combo->currentText();
    combo->clear();
    for (int n = 1; n <= list->count; ++n)
        combo->addItem(QString::fromUtf8(cl_get(list, n)));
    combo->setEditText(text);
    if (list->count > 0) list->flags &= ~kHistoryChanged;
    return 1;
}

void cl_text_select(Widget* combo_box, int n) {
    auto* combo = qobject_cast<QComboBox*>(qt(combo_box));
    if (combo != nullptr && n >= 1 && n < combo->count()) combo->setCurrentIndex(n - 1);
}

}  // namespace dorn
