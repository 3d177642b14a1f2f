// From a table and the registered commands to a menu. Event-loop thread only.
#pragma once

#include "menus/menu_tables.h"

#include <QMenu>

#include <span>

namespace dorn {

/// Whether a row can stand in a menu by itself: its command or generator is registered.
bool menu_item_present(const MenuItem& item);

/// Whether the set-up of its menu leaves the item of the menu bar enabled at this moment.
bool menu_item_enabled(std::string_view name);

/// Empties `menu` and fills it from `items`: what is not registered is left out, then submenus left
/// empty and separators left doubled or at an end.
void menu_build(QMenu* menu, std::span<const MenuItem> items, const MenuStates& states);

/// The same with the table's own items and set-up.
void menu_build(QMenu* menu, const Menu& table);

/// The label without its mnemonic mark and ellipsis.
QString menu_plain_label(const char* label);

}  // namespace dorn
