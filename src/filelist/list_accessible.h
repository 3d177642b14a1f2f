// The file list for screen readers: a table whose cells say their text, what kind of entry it is
// and whether it is selected, told from the entries' own flags. Event-loop thread only.
#pragma once

namespace dorn {

class ListView;

/// Makes the toolkit use it for every ListView that is asked about from here on.
void list_accessible_install();

/// Tells a screen reader, where there is one, that the selection has changed: soon, when the keys
/// or the mouse have moved the current row, and once for many changes. (Of the current row itself
/// the toolkit tells.)
void list_accessible_selection_changed(ListView* view);

}  // namespace dorn
