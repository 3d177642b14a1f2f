// The dialog that selects or unselects entries by a wildcard pattern. Event-loop thread only.
#pragma once

#include <cstdint>

namespace dorn {

/// What the dialog does with what matches: 0 selects it, any other value unselects it. The commands
/// alone set it.
extern int32_t gPattern_op;

/// Open the dialog: to select, with nothing selected; to unselect, when something is selected. 0.
int em_select_pattern();
int em_unselect_pattern();

}  // namespace dorn
