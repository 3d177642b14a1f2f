// The list of files that are cut: what the clipboard holds under "mvfiles", marked in the file list
// and taken off as it is moved or deleted. See file_clipboard.h.
#pragma once

#include "fileops/engine/transfer.h"

namespace dorn {

/// Brings the list up to date with what is known of the clipboard, and the clipboard with what was
/// taken off the list; asks no other process. Event-loop thread.
void file_get_cut_files();

/// Whether there is a cut list with names left on it. Any thread.
bool file_any_cut();

/// Whether that name of that directory is cut. Any thread.
bool file_is_cut(const char* directory, const char* name);

/// Takes the name off the cut list, here and on the clipboard, as long as that still holds this
/// very list. 1 when it was on it, else 0. Any thread; costs no wait for the event loop when the
/// name is not on the list.
int file_uncut(const char* directory, const char* name);

}  // namespace dorn
