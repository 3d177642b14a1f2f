// Work beside the event loop: idle procedures, events inside long loops, calls that may hang.
// Event-loop thread only.
#pragma once

#include "ui/widget.h"

#include <functional>

namespace dorn {

/// Lets the event loop process what is pending, so that the windows repaint and timers run inside a
/// long loop. Call it as often as you like: it looks at the clock and works at most every 16 ms.
void ui_background();

/// Runs `work` on a spare thread and waits for it for at most `timeout_ms`. When it takes longer
/// than a moment the main window is blocked and the event loop served meanwhile; closing that
/// window ends the wait. True when the work ended in time; else it is left behind, so it must own
/// all it touches.
bool ui_bounded(std::function<void()> work, int timeout_ms = 10000);

/// Runs `work` on a spare thread and then `done` on the event loop; `work` must own all it touches.
/// `done` is dropped when `owner`, unless null, is gone by then. At most a few run at once, the
/// others wait; one that takes longer than 10 seconds no longer counts.
void ui_async(Widget* owner, std::function<void()> work, std::function<void()> done);

enum class WorkResult { Continue, Done };
using WorkProcedure = WorkResult (*)(void* data);

/// Registers an idle procedure, run whenever the event loop has no events until it says Done, and
/// remembers its identifier in the widget. One already remembered is overwritten without being
/// removed, so detach first. Returns the identifier, never 0.
int wproc_attach(Widget* widget, WorkProcedure procedure, void* data);

/// Removes the procedure that the widget remembers, if any.
void wproc_detach(Widget* widget);

/// Called by a procedure about to say Done: forgets its identifier without removing anything.
void wproc_finished(Widget* widget);

}  // namespace dorn
