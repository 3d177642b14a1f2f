// Moving between directories: into an entry, up, back and forward, home, to a path; and opening an
// entry. Every move ends in fl_setpath. Event-loop thread only.
#pragma once

#include "ui/widget.h"

#include <cstdint>
#include <optional>
#include <string>

namespace dorn {

/// The normal way to change directory: shows `path` and records the step. 0, or -1 when the move
/// was refused, nothing having changed. `widget` is ignored.
int fl_newpath(Widget* widget, const char* path);
/// fl_newpath for a menu item that names a directory.
int _new_path(const char* path);

/// Back and forward through the last ten directories each way.
void fl_back();
void fl_forward();
int fl_get_back_count();
int fl_get_forward_count();

/// Shows the parent directory, the one just left being current and selected there.
void fl_up();
/// Enters the current entry.
void fl_down();

/// Opens the entry: -1 is the parent row; a directory is entered; a file by open_file.
/// 0, or -1 for index -2.
int fl_open(int32_t index);

/// Opens the selection: without one, the current entry; nothing with two or more directories; else
/// each selected file in list order and then the selected directory.
void fl_open_selection();

/// The current path, a "/" unless it ends in one, and the entry's name.
std::string fl_get_fullpath(int32_t index);

/// Makes the entry that x_find finds the current one. Returns its index.
int32_t fl_goto(const char* name, int32_t start, uint32_t flags);

/// Makes an entry the current one, clears the selection and scrolls to it. Returns the index.
int32_t fl_goto_index(int32_t index);

/// A normalised copy of `path` if it is an accessible directory other than the current one, else
/// nothing, the user having been told why (not for the current one).
std::optional<std::string> x_check_path(const char* path);

}  // namespace dorn
