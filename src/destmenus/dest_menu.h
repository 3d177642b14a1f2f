// The two cascades "Copy To" and "Move To" of the Edit menu and of the file list's context menu.
// Event-loop thread only.
#pragma once

#include "destmenus/dest_item.h"

class QMenu;

namespace dorn {

/// Puts both cascades at the end of `menu`; nothing when nothing is selected. They hold "Other..."
/// and, from when one is first opened, the hotlist's directories. When `menu` closes their scans
/// are stopped and all that was found is forgotten.
void mgen_work_insert(QMenu* menu);

/// Fills the top of a cascade with a separator and the hotlist's directories, unless that was done
/// already or there are none. One whose path can't be encoded is left out.
void mgen_add_tree(DestMenu* menu);

}  // namespace dorn
