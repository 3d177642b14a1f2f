// The operations window: one slot a running operation, newest at the top. Event-loop thread, but
// for slot_mark_removed.
//
// A slot's record has an address of its own for as long as the slot lives; buttons and workers
// refer to it by the panel, never by a place in the table. A panel that is gone is refused.
#pragma once

#include "fileops/engine/file_op.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace dorn {

inline constexpr int kMaxSlots = 50;

/// One slot of the table.
struct Slot {
    SlotDisplay display;   // its panel names the slot
    int32_t removed = 0;   // the operation has ended; the timer is to take the slot away
    FileOp* op = nullptr;  // null: not started yet, failed to start, or ended
};

/// Slots in use, newest first.
extern std::vector<std::unique_ptr<Slot>> slot;
extern int n_slots;

/// Makes a slot at the top and shows the window. Returns its display record, owned here and valid
/// as long as the slot, or null with errno ENOMEM when there are 50 or no window can be had.
const SlotDisplay* slot_add();

/// Ties the started operation to the slot; null: it failed to start, which the slot then says.
void slot_set_op(Widget* panel, FileOp* op);

/// From the worker's thread: forgets the FileOp, which no button can reach from here on, and has
/// the timer remove the slot. Returns when that is so.
void slot_mark_removed(Widget* panel);

/// Takes the slot away, and the window with the last one. 0, or -1 when there is no such slot.
int slot_remove(Widget* panel);

/// What the window's timer runs: removes what has ended, has every running instance refresh its
/// list, and ends the program after the last one when the main window is closed.
void slot_timer();

/// Ends the program when no operation runs; else cancels those of the first `count` slots, closes
/// the questions that are open with their escape buttons, and the program ends when the last slot
/// has gone. One that failed to start keeps nothing alive.
void slot_terminate_all(int count);

/// Sets what slot_timer and slot_terminate_all do to end the program, and whether the main window
/// is closed.
void slot_set_exit_cb(void (*end)(), bool (*base_closed)());

/// Brings the operations window to the front; nothing without slots.
void slots_show();

}  // namespace dorn
