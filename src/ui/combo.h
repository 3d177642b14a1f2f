// Combo boxes filled from an input history. Event-loop thread only.
#pragma once

#include "config/history.h"
#include "ui/widget.h"

namespace dorn {

/// Refills the combo box's list, newest first, when the history has changed since it was last
/// filled. 1 when it was refilled, 0 when nothing had changed. The text in the field stays.
int cl_apply(HistoryList* list, Widget* combo_box);

/// Selects item `n`, counting from 1, when 1 <= n < the number of items; else nothing.
void cl_text_select(Widget* combo_box, int n);

}  // namespace dorn
