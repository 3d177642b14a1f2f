// Copy To and Move To: the selection to a directory that was chosen. Event-loop thread only.
#pragma once

#include "destmenus/dest_item.h"

namespace dorn {

/// Asks whether the selection is to be copied (moved) into `path`, or, where that is null, asks for
/// the directory; then starts the operation.
void x_copy_to_dest(const char* path);
void x_move_to_dest(const char* path);

/// What "Other..." does: `action` with a null path, once the menus are closed.
void re_route(DestAction action);

}  // namespace dorn
