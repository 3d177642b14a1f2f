// The path field "tb_curpath", the filter field "tb_filespec", and the toolbar states that follow
// the shown directory. Event-loop thread only.
#pragma once

#include <optional>
#include <string>

namespace dorn {

/// Connects both fields and fills them from their histories.
void path_bar_setup();

/// Shows `path` (bytes) in the path field, translated for display.
void tb_curpath_set_text(const char* path);

/// Enables or disables tb_up, tb_home and tb_add (and back, forward) for the shown directory.
void tb_update();

/// Blue for a web address in the path field, else the palette's text colour.
void tb_curpath_update_appearance();

/// Completes an absolute path of bytes to a directory: the path with a "/" at its end when one
/// directory matches, the common beginning when several do; nothing when none does.
std::optional<std::string> find_matching_dir(const char* text);

}  // namespace dorn
