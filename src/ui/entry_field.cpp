#include "ui/entry_field.h"

#include <QLineEdit>
#include <QScopedValueRollback>
#include <QTimer>

namespace dorn {

namespace {

// Keys with Ctrl that edit text; they are no accelerators while a field has the focus.
bool edits_text(const QKeyEvent& event) {
    if (event.modifiers() != Qt::ControlModifier) return false;
    switch (event.key()) {
        case Qt::Key_A:
        case Qt::Key_C:
        case Qt::Key_U:
        case Qt::Key_V:
        case Qt::Key_X:
        case Qt::Key_Z:
            return true;
        default:
            return false;
    }
}

bool opens_list(const QKeyEvent& event) {
    if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) return false;
    switch (event.key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            return true;
        default:
            return false;
    }
}

}  // namespace

EntryField::EntryField(QComboBox* combo) : QObject(combo), combo_(combo) {
    combo->setCompleter(nullptr);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->setMaxVisibleItems(20);
    QObject::disconnect(combo->lineEdit(), &QLineEdit::editingFinished, combo, nullptr);
    combo->installEventFilter(this);
    // The toolkit gives a combo box's text as its name.
    combo->lineEdit()->setAccessibleName(combo->accessibleName());
    combo->lineEdit()->installEventFilter(this);
}

bool EntryField::key_pressed(QObject* watched, QKeyEvent* event) {
    QLineEdit* line = combo_->lineEdit();
    const QScopedValueRollback<qsizetype> pressing(
        length_before_key_, line->text().size() - line->selectedText().size());
    if (on_key && on_key(event)) return true;
    if (opens_list(*event)) {
        combo_->showPopup();
        return true;
    }
    if (event->key() == Qt::Key_U && event->modifiers() == Qt::ControlModifier) {
        line->selectAll();
        line->del();
        return true;
    }
    watched->event(event);  // handled here, so that the end of the key press is known
    return true;
}

bool EntryField::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
            return key_pressed(watched, static_cast<QKeyEvent*>(event));
        case QEvent::ShortcutOverride:
            if (!edits_text(*static_cast<QKeyEvent*>(event))) return false;
            event->accept();
            return true;
        case QEvent::Wheel:
            event->ignore();
            return true;
        case QEvent::MouseButtonPress:
        case QEvent::FocusOut:
            if (on_interrupt) on_interrupt();
            return false;
        case QEvent::PaletteChange:
            // Not before the change has reached the line edit, which would undo what is set here.
            if (on_palette && watched == combo_) QTimer::singleShot(0, this, on_palette);
            return false;
        default:
            return false;
    }
}

}  // namespace dorn
