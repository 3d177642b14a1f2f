// Accelerators of the menu tables: their texts, and the keys that run commands.
//
// Keys without a character that a text field needs, too (Return, Backspace, Delete) act in the file
// list only; the others in the whole main window. A key does what its menu item would: see
// menus_run.
#pragma once

#include "menus/menu_tables.h"

#include <QKeySequence>
#include <QList>
#include <QString>

namespace dorn {

/// "Ctrl-A", "Alt-<-", "F5"; empty for an item without an accelerator.
QString accelerator_text(const MenuItem& item);

/// The keys it stands for; Return is on two of them.
QList<QKeySequence> accelerator_keys(const MenuItem& item);

/// Gives the item of the menu bar its keys, once. Nothing before the main window exists.
void accelerator_install(const MenuItem& item);

}  // namespace dorn
