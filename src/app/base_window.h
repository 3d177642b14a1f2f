// The main window's frame. Private to app/, the tests and the benchmarks.
#pragma once

#include <QMainWindow>

namespace dorn {

/// Makes the main window, not yet shown, with its instances registered. The caller owns it.
QMainWindow* base_make();

}  // namespace dorn
