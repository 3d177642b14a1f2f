// The operations window around the slots' panels. Event-loop thread only.
#pragma once

#include "fileops/slot_panel.h"

namespace dorn {

/// Makes a panel at the top, and the window with the first one. The window is shown without taking
/// the keyboard, also when the user had closed it.
SlotPanel* slots_window_add();

/// Takes the panel away, and the window with the last one.
void slots_window_remove(SlotPanel* panel);

/// Shows the window and brings it to the front. Nothing without slots.
void slots_window_raise();

/// Whether there is a window that the user has closed: it is hidden while its operations run.
bool slots_window_is_hidden();

/// Sets what is called when the user has closed the window or it has been shown again, and whether
/// that would leave the user with no window at all: it is then minimised instead.
void slots_window_set_hidden_cb(void (*changed)(), bool (*is_last)());

}  // namespace dorn
