#include "menus/menu_accessible.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QTimer>

namespace dorn {

namespace {

using Interface = QAccessibleInterface;

// An entry of a menu or of the menu bar.
class Entry : public Interface, public QAccessibleActionInterface {
  public:
    explicit Entry(QAction* action) : action_(action) {}

    bool isValid() const override {
        return action_ != nullptr && owner() != nullptr;
    }
    QObject* object() const override {
        return action_;
    }
    QWindow* window() const override {
        const QWidget* widget = owner();
        return widget == nullptr ? nullptr : widget->window()->windowHandle();
    }
    Interface* parent() const override {
        return QAccessible::queryAccessibleInterface(owner());
    }
    Interface* child(int index) const override {
        return index == 0 ? QAccessible::queryAccessibleInterface(submenu()) : nullptr;
    }
    int childCount() const override {
        return submenu() == nullptr ? 0 : 1;
    }
    int indexOfChild(const Interface* child) const override {
        return child != nullptr && submenu() != nullptr && child->object() == submenu() ? 0 : -1;
    }
    Interface* childAt(int x, int y) const override {
        Interface* menu = child(0);
        return menu != nullptr && menu->rect().contains(x, y) ? menu : nullptr;
    }

    QAccessible::Role role() const override;
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::State state() const override;

    void* interface_cast(QAccessible::InterfaceType type) override {
        const bool acts = type == QAccessible::ActionInterface;
        return acts ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }
    QStringList actionNames() const override;
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString& name) const override;

  private:
    QMenu* submenu() const {
        return action_ == nullptr ? nullptr : action_->menu();
    }
    // The menu or menu bar that the entry is in.
    QWidget* owner() const;
    QAction* active() const;
    QString key() const {
        return action_ == nullptr ? QString() : action_->text().section(u'\t', 1);
    }

    QPointer<QAction> action_;
};

QWidget* Entry::owner() const {
    if (action_ == nullptr) return nullptr;
    for (QObject* object : action_->associatedObjects()) {
        if (qobject_cast<QMenu*>(object) != nullptr || qobject_cast<QMenuBar*>(object) != nullptr)
            return static_cast<QWidget*>(object);
    }
    return nullptr;
}

QAction* Entry::active() const {
    if (const auto* menu = qobject_cast<QMenu*>(owner())) return menu->activeAction();
    if (const auto* bar = qobject_cast<QMenuBar*>(owner())) return bar->activeAction();
    return nullptr;
}

QAccessible::Role Entry::role() const {
    return isValid() && action_->isSeparator() ? QAccessible::Separator : QAccessible::MenuItem;
}

QString Entry::text(QAccessible::Text kind) const {
    if (!isValid()) return {};
    if (kind == QAccessible::Accelerator) return key();
    if (kind != QAccessible::Name) return {};
    // What marks a mnemonic goes, a doubled one stands for itself.
    QString label = action_->text().section(u'\t', 0, 0);
    for (qsizetype i = label.indexOf(u'&'); i >= 0; i = label.indexOf(u'&', i + 1))
        label.remove(i, 1);
    return label;
}

QRect Entry::rect() const {
    if (!isValid()) return {};
    const auto* menu = qobject_cast<QMenu*>(owner());
    const QRect area = menu != nullptr ? menu->actionGeometry(action_)
                                       : static_cast<QMenuBar*>(owner())->actionGeometry(action_);
    return {owner()->mapToGlobal(area.topLeft()), area.size()};
}

QAccessible::State Entry::state() const {
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    state.disabled = !action_->isEnabled();
    state.invisible = !action_->isVisible() || !owner()->isVisible();
    state.focusable = !action_->isSeparator();
    state.selectable = state.focusable;
    state.focused = active() == action_;
    state.selected = state.focused;
    state.checkable = action_->isCheckable();
    state.checked = action_->isChecked();
    state.hasPopup = submenu() != nullptr;
    return state;
}

QStringList Entry::actionNames() const {
    if (!isValid() || action_->isSeparator()) return {};
    return {submenu() != nullptr ? showMenuAction() : pressAction()};
}

// As by a click: the open menus close before the command runs. By way of the event loop: a command
// takes as long as the user takes to answer its questions.
void Entry::doAction(const QString& name) {
    if (!isValid() || !action_->isEnabled() || !actionNames().contains(name)) return;
    QTimer::singleShot(0, action_, [action = action_, owner = QPointer(owner())] {
        if (action->menu() == nullptr) {
            while (QWidget* popup = QApplication::activePopupWidget())
                popup->close();
            action->trigger();
        } else if (auto* bar = qobject_cast<QMenuBar*>(owner.data())) {
            bar->setActiveAction(action);
        } else if (auto* menu = qobject_cast<QMenu*>(owner.data())) {
            menu->setActiveAction(action);
        }
    });
}

QStringList Entry::keyBindingsForAction(const QString&) const {
    return key().isEmpty() ? QStringList() : QStringList{key()};
}

Interface* make(const QString&, QObject* object) {
    auto* action = qobject_cast<QAction*>(object);
    return action == nullptr ? nullptr : new Entry(action);
}

}  // namespace

void menu_accessible_install() {
    static bool installed = false;
    if (installed) return;
    installed = true;
    QAccessible::installFactory(make);
}

}  // namespace dorn
