// The path field "tb_curpath", the filter field "tb_filespec", and the toolbar states that follow
// the shown directory. Event-loop thread only.
//
// In the path field Enter goes to the path, typing completes from the history, Escape twice within
// two seconds completes the directory's name. In the filter field Enter filters, Escape brings the
// filter in use back. Up, Down, Page Up and Page Down open a field's history. Neither the wheel nor
// leaving a field goes anywhere.
#pragma once

#include <ctime>

namespace dorn {

/// Connects both fields.
void path_bar_setup();

/// Shows `path` (bytes) in the path field, translated for display. The bytes are kept beside the
/// text: they are what the unedited field stands for.
void tb_curpath_set_text(const char* path);

/// Enables or disables tb_up, tb_home and tb_add (and back, forward) for the shown directory.
void tb_update();

/// Blue for a web address in the path field (the palette's link colour where blue can't be read),
/// else the palette's text colour.
void tb_curpath_update_appearance();

/// For tests: what tells the seconds between two Escapes; null: the system's clock.
void path_bar_set_clock(std::time_t (*now)());

}  // namespace dorn
