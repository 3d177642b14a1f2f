// The Open With dialog. Event-loop thread only.
#pragma once

namespace dorn {

/// Opens the dialog for the selection: a command field with the history gWithList. Done runs the
/// command once for each selected entry that is no directory and records it in the history. The
/// main window is blocked meanwhile, so that these are the entries it was opened for. 0.
int fm_open_with();

}  // namespace dorn
