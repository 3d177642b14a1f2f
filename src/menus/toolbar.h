// The toolbar's buttons: their pictures, tool tips and commands. See path_bar.h for tb_update.
// Event-loop thread only.
#pragma once

namespace dorn {

/// Gives every button its picture, its tool tip with the command's key, and its command; the menu
/// button on the toolbar area opens the View menu.
void toolbar_setup();

/// Enables the buttons Cut, Copy, Paste and Delete as the Edit menu would. Cheap.
void tb_update_edit();

/// The directory behind Home: $HOME, null when it is unset or empty.
const char* home_directory();

}  // namespace dorn
