// The dialog that makes a symbolic link to an entry of the shown directory. Event-loop thread only.
#pragma once

namespace dorn {

/// Opens the dialog for the first selected entry, or the first entry when none is selected. 0.
int fm_symlink();

}  // namespace dorn
