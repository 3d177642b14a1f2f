// Handing the clipboard to the process that keeps it when this one ends (orrin/clipboard_holder).
#pragma once

#include "ui/clipboard.h"

#include <cstdint>

namespace dorn {

/// Starts the holder with all that the offer has and waits, for two seconds at most, until it has
/// taken the clipboard from the window `owner`. 0, or -1 when it could not be started or did not
/// take it in time.
int clipboard_start_holder(const ClipboardOffer& offer, uint32_t owner);

}  // namespace dorn
