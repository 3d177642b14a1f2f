// The "Filename Too Long" dialog. Event-loop thread only.
#pragma once

#include "ui/widget.h"

namespace dorn {

/// Shows the dialog over `parent` and returns when it has closed: what fop_set_long_name_cb
/// installs. It reads and writes oldfile, newfile and do_rename of fileops/engine/prompts.h.
void long_filename_ask(Widget* parent);

}  // namespace dorn
