// The list of files that are cut: a copy of what the clipboard holds under "mvfiles".
#pragma once

#include "fileops/engine/transfer.h"

namespace dorn {

/// Brings the list up to date with what is known of the clipboard; asks no other process.
/// Event-loop thread.
void file_get_cut_files();

/// Whether that name of that directory is cut. Any thread.
bool file_is_cut(const char* directory, const char* name);

/// Takes the name off the cut list, here and on the clipboard, as long as that still holds this
/// very list. 1 when it was on it, else 0. Any thread; costs no wait for the event loop when the
/// name is not on the list.
int file_uncut(const char* directory, const char* name);

}  // namespace dorn
