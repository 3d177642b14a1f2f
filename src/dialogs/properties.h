// The Properties dialog: what the selected entries are, and a change of their name and modes.
// Event-loop thread only.
#pragma once

namespace dorn {

/// Opens the dialog for the selection, the name being ready to be typed over where one entry is
/// selected; nothing without a selection. 0.
int fm_inspect();
int em_rename();

}  // namespace dorn
