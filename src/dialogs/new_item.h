// The New dialog, which makes an empty file or a folder in the shown directory. Event-loop thread
// only.
#pragma once

#include <cstdint>

namespace dorn {

/// What the dialog makes: 1 a file, any other value a folder. The commands alone set it.
extern int32_t gNew_op;

/// Open the dialog, from the File menu and from the context menu. 0.
int fm_new_file();
int fm_new_folder();
int new_file_setup();
int new_dir_setup();

}  // namespace dorn
