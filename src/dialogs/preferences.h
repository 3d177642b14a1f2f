// The Preferences dialog, which edits the configuration record in place. Nothing is written to disk
// here: the record is saved when the main window closes. Event-loop thread only.
#pragma once

namespace dorn {

/// Opens the dialog, or brings it to the front. 0.
int em_edit_preferences();

}  // namespace dorn
