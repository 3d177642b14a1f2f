#include "menus/list_menu.h"

#include "assoc/engine/association_index.h"
#include "dirmodel/dir_entry.h"
#include "menus/menu_build.h"

#include <array>
#include <vector>

namespace dorn {

namespace {

void (*sCompleteFacts)(ListMenuFacts* facts) = nullptr;

ListMenuFacts look_at_selection() {
    ListMenuFacts facts;
    if (gDir != nullptr) {
        facts.selected = gDir->n_selected;
        facts.directories = gDir->n_selected_dirs;
    }
    if (sCompleteFacts != nullptr) sCompleteFacts(&facts);
    return facts;
}

using Condition = bool (*)(const ListMenuFacts& facts);

bool always(const ListMenuFacts&) {
    return true;
}
bool selected(const ListMenuFacts& facts) {
    return facts.selected > 0;
}
bool one_selected(const ListMenuFacts& facts) {
    return facts.selected == 1;
}
bool directory_selected(const ListMenuFacts& facts) {
    return facts.directories > 0;
}
bool files_selected(const ListMenuFacts& facts) {
    return facts.selected > 0 && facts.directories == 0;
}
bool can_open(const ListMenuFacts& facts) {
    return directory_selected(facts) || (files_selected(facts) && facts.can_open);
}
bool can_view(const ListMenuFacts& facts) {
    return files_selected(facts) && facts.can_view;
}
bool can_edit(const ListMenuFacts& facts) {
    return files_selected(facts) && facts.can_edit;
}
bool can_paste(const ListMenuFacts& facts) {
    return facts.can_paste;
}

struct Step {
    Condition when;
    MenuItem item;
};

constexpr MenuItem command(const char* label, const char* name, int level = 0) {
    return {level, MenuKind::Command, label, 0, nullptr, name};
}
constexpr MenuItem separator() {
    return {0, MenuKind::Separator, nullptr, 0, nullptr, nullptr};
}

// From top to bottom. "mgen_work_insert" puts the Copy To and Move To submenus there.
constexpr auto kSteps = std::to_array<Step>({
    {always, {0, MenuKind::Submenu, "&New", 0, nullptr, "lcm_new"}},
    {always, command("F&older", "lcm_new_folder", 1)},
    {always, command("F&ile", "lcm_new_file", 1)},
    {can_open, command("&Open", "fm_open")},
    {directory_selected, command("Open In Win&dow", "fm_open_another")},
    {can_view, command("&View", "fm_view")},
    {can_edit, command("&Edit", "fm_edit")},
    {files_selected, command("Open &With", "fm_open_with")},
    {files_selected, separator()},
    {files_selected, command("&Print", "fm_print")},
    {selected, separator()},
    {selected, command("Cu&t", "em_cut")},
    {selected, command("C&opy", "em_copy")},
    {can_paste, command("&Paste", "em_paste")},
    {selected, command("&Delete", "em_delete")},
    {one_selected, command("&Rename", "fm_inspect")},
    {one_selected, command("&Symlink", "fm_symlink")},
    {selected, separator()},
    {selected, {0, MenuKind::Generator, nullptr, 0, nullptr, "mgen_work_insert"}},
    {selected, separator()},
    {selected, command("&Inspect", "fm_inspect")},
});

}  // namespace

void lcm_set_facts_cb(void (*complete)(ListMenuFacts* facts)) {
    sCompleteFacts = complete;
}

void lcm_look_at_associations(ListMenuFacts* facts) {
    facts->can_open = facts->can_view = facts->can_edit = facts->selected > facts->directories;
    if (!facts->can_open) return;
    const AssociationIndex associations;
    for (int32_t i = 0; gDir != nullptr && i < gDir->count; ++i) {
        const DirEntry& entry = *gDir->entries[i];
        if ((entry.flags & kEntrySelected) == 0 || is_directory(entry)) continue;
        if (!facts->can_open && !facts->can_view && !facts->can_edit) return;
        const int index = associations.find(entry.name);
        if (index < 0) {
            facts->can_open = facts->can_view = facts->can_edit = false;
            return;
        }
        const Association& row = apat[static_cast<std::size_t>(index)];
        facts->can_open = facts->can_open && isempty(row.open.c_str()) == 0;
        facts->can_view = facts->can_view && isempty(row.view.c_str()) == 0;
        facts->can_edit = facts->can_edit && isempty(row.edit.c_str()) == 0;
    }
}

void lcm_setup(QMenu* menu) {
    const ListMenuFacts facts = look_at_selection();
    std::vector<MenuItem> items;
    for (const Step& step : kSteps) {
        if (step.when(facts)) items.push_back(step.item);
    }
    menu_build(menu, items, MenuStates());
}

}  // namespace dorn
