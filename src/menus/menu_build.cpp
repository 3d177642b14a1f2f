#include "menus/menu_build.h"

#include "menus/accelerators.h"
#include "menus/menus.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <map>
#include <string>

namespace dorn {

namespace {

struct Registered {
    MenuCommand command = nullptr;
    bool (*is_on)() = nullptr;
    void (*fill)(QMenu* menu) = nullptr;
};

std::map<std::string, Registered, std::less<>>& registry() {
    static std::map<std::string, Registered, std::less<>> commands;
    return commands;
}

const Registered* find_registered(std::string_view name) {
    const auto found = registry().find(name);
    return found == registry().end() ? nullptr : &found->second;
}

void put_registered(const char* name, Registered registered) {
    registry()[name] = registered;
    if (const MenuItem* item = find_menu_item(name)) accelerator_install(*item);
}

MenuStates states_of(const Menu& table) {
    MenuStates states;
    if (table.setup != nullptr) table.setup(states);
    return states;
}

QString item_text(const MenuItem& item) {
    const QString key = accelerator_text(item);
    const QString label = QString::fromUtf8(item.label);
    return key.isEmpty() ? label : label + u'\t' + key;
}

void add_command(QMenu* menu, const MenuItem& item, const MenuStates& states) {
    QAction* action = menu->addAction(item_text(item));
    action->setObjectName(QLatin1String(item.name));
    action->setEnabled(states.enabled(item.name));
    if (item.kind == MenuKind::Toggle) {
        const Registered* toggle = find_registered(item.name);
        action->setCheckable(true);
        action->setChecked(toggle->is_on != nullptr && toggle->is_on());
    }
    QObject::connect(action, &QAction::triggered, [name = item.name] { menus_run(name); });
}

bool is_separator(const QList<QAction*>& actions, qsizetype index) {
    return index < 0 || index >= actions.size() || actions[index]->isSeparator();
}

// Takes out separators that begin or end the menu or follow another.
void drop_idle_separators(QMenu* menu) {
    for (qsizetype i = menu->actions().size(); i-- > 0;) {
        const QList<QAction*> actions = menu->actions();
        if (actions[i]->isSeparator() && (is_separator(actions, i - 1) || i + 1 == actions.size()))
            delete actions[i];
    }
}

void fill_level(QMenu* menu, std::span<const MenuItem> items, const MenuStates& states, int level);

void add_submenu(QMenu* menu, const MenuItem& item, std::span<const MenuItem> below,
                 const MenuStates& states) {
    auto* submenu = new QMenu(QString::fromUtf8(item.label), menu);
    submenu->menuAction()->setObjectName(QLatin1String(item.name));
    fill_level(submenu, below, states, item.level + 1);
    if (submenu->isEmpty()) {
        delete submenu;
        return;
    }
    submenu->menuAction()->setEnabled(states.enabled(item.name));
    menu->addMenu(submenu);
}

void fill_level(QMenu* menu, std::span<const MenuItem> items, const MenuStates& states, int level) {
    for (std::size_t i = 0; i < items.size() && items[i].level >= level; ++i) {
        const MenuItem& item = items[i];
        if (item.level > level) continue;
        if (item.kind == MenuKind::Submenu)
            add_submenu(menu, item, items.subspan(i + 1), states);
        else if (item.kind == MenuKind::Separator)
            menu->addSeparator();
        else if (!menu_item_present(item))
            continue;
        else if (item.kind == MenuKind::Generator)
            find_registered(item.name)->fill(menu);
        else
            add_command(menu, item, states);
    }
    drop_idle_separators(menu);
}

}  // namespace

void menus_register(const char* name, MenuCommand command) {
    put_registered(name, {command, nullptr, nullptr});
}

void menus_register_toggle(const char* name, MenuCommand command, bool (*is_on)()) {
    put_registered(name, {command, is_on, nullptr});
}

void menus_register_generator(const char* name, void (*fill)(QMenu* menu)) {
    put_registered(name, {nullptr, nullptr, fill});
}

int menus_run(const char* name) {
    const Registered* registered = find_registered(name);
    if (registered == nullptr || registered->command == nullptr) return -1;
    if (ui_is_blocked(w_instance("base")) || !menu_item_enabled(name)) return -1;
    return registered->command();
}

bool menu_item_present(const MenuItem& item) {
    const Registered* registered = item.name == nullptr ? nullptr : find_registered(item.name);
    if (registered == nullptr) return false;
    return item.kind == MenuKind::Generator ? registered->fill != nullptr
                                            : registered->command != nullptr;
}

bool menu_item_enabled(std::string_view name) {
    const Menu* menu = nullptr;
    return find_menu_item(name, &menu) == nullptr || states_of(*menu).enabled(name);
}

void menu_build(QMenu* menu, std::span<const MenuItem> items, const MenuStates& states) {
    menu->clear();
    qDeleteAll(menu->findChildren<QMenu*>(Qt::FindDirectChildrenOnly));
    fill_level(menu, items, states, 0);
}

void menu_build(QMenu* menu, const Menu& table) {
    menu_build(menu, table.items, states_of(table));
}

QString menu_plain_label(const char* label) {
    return QString::fromUtf8(label).remove(u'&').remove(QStringLiteral("..."));
}

}  // namespace dorn
