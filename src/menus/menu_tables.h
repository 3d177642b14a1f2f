// The menus as tables: every item in its order, with label, key and the name of its command.
#pragma once

#include "ui/key_event.h"

#include <cstdint>
#include <set>
#include <span>
#include <string_view>

namespace dorn {

enum class MenuKind : uint8_t { Command, Toggle, Submenu, Separator, Generator };

struct MenuItem {
    int level;  // 0: in the menu itself, 1: in the submenu above it
    MenuKind kind;
    const char* label;   // "&" before the mnemonic
    uint32_t modifiers;  // kModShift, kModCtrl, kModAlt, or 0
    const char* key;     // as in accelerator texts ("F5", "Ret", "<-"); null: no accelerator
    const char*
        name;  // of the command, and of the item for the menu's set-up; null for a separator
};

/// Which items of a menu are enabled; all are until a set-up disables some.
class MenuStates {
  public:
    void disable(std::string_view name) {
        disabled_.insert(name);
    }
    bool enabled(std::string_view name) const {
        return disabled_.count(name) == 0;
    }

  private:
    std::set<std::string_view> disabled_;
};
using MenuSetup = void (*)(MenuStates& states);

struct Menu {
    const char* title;  // as on the menu bar
    const char* name;   // instance name
    MenuSetup setup;    // decides the items' states whenever the menu opens; null: all enabled
    std::span<const MenuItem> items;
};

/// The menus of the menu bar, from left to right.
std::span<const Menu> menu_bar_tables();

/// The menu of the toolbar area, and the context menu of the hotlist.
const Menu& view_menu_table();
const Menu& hotlist_context_table();

/// The row of the menu bar with the command `name`, and its menu; null when there is none.
const MenuItem* find_menu_item(std::string_view name, const Menu** menu = nullptr);

}  // namespace dorn
