// Lists of files dropped on the file list. Event-loop thread only.
//
// Where a drop goes is a directory's path, never a row: the rows may be rebuilt while a drag hovers
// over them. A drop goes to the directory that was shown as its target, or nowhere.
#pragma once

#include <QEvent>

#include <string>

namespace dorn {

/// A drag is over the list.
extern bool dnd_active;

/// The list's drop callback: the drag enter, move and leave events and the drop events of its
/// viewport.
void fl_dnd_cb(QEvent* event);

/// The directory that a drop on that row of the list goes to: of the row ".." the parent, of a
/// directory's row that directory, of none (-1) the shown one. "" for what is no target: another
/// file's row, a name whose text does not lead back to it, anything during a read.
std::string fl_drop_directory(int row);

/// The directory that a drop would go to now, which the list marks; "" for none.
const std::string& fl_drop_shown();

}  // namespace dorn
