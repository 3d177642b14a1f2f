#include "menus/menu_tables.h"

#include "menus/commands.h"

#include <array>

namespace dorn {

namespace {

constexpr MenuItem command(const char* label, uint32_t modifiers, const char* key,
                           const char* name) {
    return {0, MenuKind::Command, label, modifiers, key, name};
}
constexpr MenuItem command(const char* label, const char* name) {
    return command(label, 0, nullptr, name);
}
constexpr MenuItem toggle(const char* label, const char* name) {
    return {0, MenuKind::Toggle, label, 0, nullptr, name};
}
constexpr MenuItem submenu(const char* label, const char* name) {
    return {0, MenuKind::Submenu, label, 0, nullptr, name};
}
constexpr MenuItem generator(const char* name) {
    return {0, MenuKind::Generator, nullptr, 0, nullptr, name};
}
constexpr MenuItem separator() {
    return {0, MenuKind::Separator, nullptr, 0, nullptr, nullptr};
}
constexpr MenuItem within(MenuItem item) {
    ++item.level;
    return item;
}

constexpr auto kFileItems = std::to_array<MenuItem>({
    submenu("&New", "fm_new"),
    within(command("F&ile", 0, "F3", "fm_new_file")),
    within(command("&Folder", 0, "F4", "fm_new_folder")),
    within(command("&Window", kModCtrl, "N", "fm_new_window")),
    separator(),
    command("&Open", 0, "Ret", "fm_open"),
    command("Open In Win&dow", kModCtrl, "Ret", "fm_open_another"),
    command("&View", kModAlt, "V", "fm_view"),
    command("&Edit", kModCtrl, "E", "fm_edit"),
    command("Open &With...", kModShift, "Ret", "fm_open_with"),
    separator(),
    command("Open &Terminal", kModCtrl, "T", "fm_open_orterm"),
    separator(),
    command("&Refresh", 0, "F5", "fm_refresh"),
    separator(),
    command("&Print", kModCtrl, "P", "fm_print"),
    command("Print Dire&ctory", "fm_print_directory"),
    separator(),
    command("&Inspect...", 0, "F9", "fm_inspect"),
    separator(),
    command("E&xit", kModAlt, "X", "fm_exit"),
});

constexpr auto kEditItems = std::to_array<MenuItem>({
    command("Cu&t", kModCtrl, "X", "em_cut"),
    command("C&opy", kModCtrl, "C", "em_copy"),
    command("&Paste", kModCtrl, "V", "em_paste"),
    command("&Delete", 0, "Del", "em_delete"),
    command("&Rename", 0, "F2", "em_rename"),
    separator(),
    generator("em_populate"),
    separator(),
    submenu("&Select", "em_select"),
    within(command("&All", kModCtrl, "A", "em_select_all")),
    within(command("&Pattern", kModCtrl, "S", "em_select_pattern")),
    submenu("&Unselect", "em_unselect"),
    within(command("&All", kModCtrl, "U", "em_unselect_all")),
    within(command("&Pattern", "em_unselect_pattern")),
    command("&Invert Selection", kModCtrl, "I", "em_invert"),
    separator(),
    command("&Preferences...", 0, "F10", "em_preferences"),
    command("&Associations...", 0, "F11", "em_associations"),
});

constexpr auto kGoItems = std::to_array<MenuItem>({
    command("Back", kModAlt, "<-", "gm_back"),
    command("Forward", kModAlt, "->", "gm_forward"),
    command("Up One Level", 0, "Bksp", "gm_up"),
    command("Home", 0, "F6", "gm_home"),
});

constexpr auto kHotlistItems = std::to_array<MenuItem>({
    command("&Add Current Directory", kModCtrl, "D", "hm_add"),
    command("&Remove Current Directory", kModCtrl, "R", "hm_remove"),
    generator("hm_populate"),
});

constexpr auto kHelpItems = std::to_array<MenuItem>({
    command("&Quick Reference", 0, "F1", "help_quickref"),
    command("&About", "help_about"),
});

constexpr auto kViewItems = std::to_array<MenuItem>({
    submenu("Toolbars", "vm_toolbars"),
    within(toggle("&Navigation", "vm_nav_tb")),
    within(toggle("&Clipboard", "vm_clip_tb")),
    within(toggle("&Misc", "vm_misc_tb")),
    within(toggle("&Hotlist", "vm_hotlist_tb")),
    within(toggle("&Path", "vm_path_tb")),
    within(toggle("&Filter", "vm_filter_tb")),
    within(separator()),
    within(command("Text &and Images", "vm_text_and_images")),
    within(command("&Text Only", "vm_text_only")),
    within(command("&Images Only", "vm_images_only")),
    toggle("&Icon Pane", "vm_icon"),
    toggle("&Hotlist Pane", "vm_hotlist"),
    toggle("&Status Pane", "vm_status"),
});

constexpr auto kHotlistContextItems = std::to_array<MenuItem>({
    command("Add", kModCtrl, "D", "hcm_add"),
    command("Remove", kModCtrl, "R", "hcm_delete"),
});

constexpr auto kMenuBar = std::to_array<Menu>({
    {"&File", "file_menu", nullptr, kFileItems},
    {"&Edit", "edit_menu", em_setup, kEditItems},
    {"&Go", "go_menu", gm_setup, kGoItems},
    {"&Bookmarks", "hotlist_menu", hm_setup, kHotlistItems},
    {"&Help", "help_menu", nullptr, kHelpItems},
});
constexpr Menu kViewMenu{"&View", "view_menu", nullptr, kViewItems};
constexpr Menu kHotlistContext{"Bookmarks", "hotlist_context_menu", nullptr, kHotlistContextItems};

}  // namespace

std::span<const Menu> menu_bar_tables() {
    return kMenuBar;
}

const Menu& view_menu_table() {
    return kViewMenu;
}

const Menu& hotlist_context_table() {
    return kHotlistContext;
}

const MenuItem* find_menu_item(std::string_view name, const Menu** menu) {
    for (const Menu& table : kMenuBar) {
        for (const MenuItem& item : table.items) {
            if (item.name == nullptr || item.name != name) continue;
            if (menu != nullptr) *menu = &table;
            return &item;
        }
    }
    return nullptr;
}

}  // namespace dorn
