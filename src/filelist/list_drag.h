// Dragging the selection out of the file list. Event-loop thread only.
#pragma once

#include "fileops/engine/transfer.h"

#include <cstdint>

class QWidget;

namespace dorn {

/// When the list started its last drag, in milliseconds of a clock that only moves forward.
extern int64_t dnd_start_timestamp;

/// That clock.
int64_t dnd_clock();

/// Drags the selection, from a press in `source` whose button is still held; returns when the drag
/// has ended. Offers copy, move and link and proposes copy. What becomes of the files is up to who
/// takes them: nothing is done here, whatever the drag reports. Nothing selected: nothing.
void fl_start_drag(QWidget* source);

/// The list that is being dragged out of this window; null while there is none.
const FileTransfer* fl_dragged();

}  // namespace dorn
