// The context menu of the file list: which items it has depends on what is selected. Event-loop
// thread only.
#pragma once

#include <QMenu>

namespace dorn {

/// What the items depend on.
struct ListMenuFacts {
    int selected = 0;       // entries
    int directories = 0;    // of these
    bool can_open = false;  // every selected file has such a command
    bool can_view = false;
    bool can_edit = false;
    bool can_paste = false;  // the clipboard holds a file list
};

/// Sets what completes the facts about the selected files' commands and the clipboard; null (the
/// start): no file has a command and the clipboard no list.
void lcm_set_facts_cb(void (*complete)(ListMenuFacts* facts));

/// Such a function: notes whether every selected file has an open, view and edit command. Called
/// with the counts of the selection filled in.
void lcm_look_at_associations(ListMenuFacts* facts);

/// Empties `menu` and fills it for the selection.
void lcm_setup(QMenu* menu);

}  // namespace dorn
