// Menu entries for screen readers: the label alone is the name, the key is the entry's key binding.
// (The toolkit's own entries have the whole text as their name, key included.) Event-loop thread
// only.
#pragma once

namespace dorn {

/// Makes the toolkit use it for the entries of every menu that is asked about from here on.
void menu_accessible_install();

}  // namespace dorn
