// The main window: set-up in two phases, metrics, closing. Event-loop thread only.
#pragma once

#include "config/config.h"
#include "ui/widget.h"

#include <string>

namespace dorn {

/// The directory shown first, or "/" where that can't be; set by init.
extern std::string gStartPath;

/// 0 while the main window exists and is not hidden for good; 1 from then on.
extern int base_window_closed;

/// Before the window is realised (phase 1) and after (phase 2). Returns 0.
int base_setup(Widget* base, int phase);
/// Applies the window metrics. Returns 0.
int base_opening();
/// Saves what is kept per user. Returns 0.
int base_closing();
/// What the file list calls after each rebuild of its rows.
void base_update();

/// Copy sizes between the configuration record and the widgets.
void base_set_window_metrics(const Config* config);
void base_get_window_metrics(Config* config);
void base_set_divider_metrics(const Config* config);
void base_get_divider_metrics(Config* config);

/// The Exit command: ends the program, or, while operations run, hides the main window, and the
/// program ends with the last of them. Returns 0.
int fm_exit();

/// The window-change signal: re-reads the shown directory unless the main window is closed.
void signal_refresh();
/// A terminating signal: saves, cancels every operation, and ends the program when they have ended.
void signal_terminate();

/// Binds the key section "filelist" to the list.
void init_link();

}  // namespace dorn
