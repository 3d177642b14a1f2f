// The X server's clipboard selection, on a connection of its own. No Qt, no toolkit lock: for spare
// threads, since each call waits for the server and reading for the selection's owner.
#pragma once

#include "ui/clipboard.h"

#include <cstdint>

namespace dorn {

struct SelectionRead {
    bool answered = false;  // false: the owner was silent for too long, or there is no server
    ClipboardItems items;   // empty when it has none of the types
};

/// Reads the clipboard: the types of the first group whose first type has data. Takes no longer
/// than some nine seconds, three when the owner does not answer at all.
SelectionRead x_selection_read(const std::vector<ClipboardTypes>& wanted);

struct SelectionOwners {
    uint32_t clipboard = 0;  // window that owns the clipboard; 0: nobody
    bool manager = false;    // a clipboard manager runs, which keeps what a program leaves
};
SelectionOwners x_selection_owners();

}  // namespace dorn
