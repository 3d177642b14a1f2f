// The seven columns, their header buttons, and sorting by them. Event-loop thread only.
#pragma once

#include "dirmodel/dir_sort.h"
#include "ui/widget.h"

#include <cstdint>

namespace dorn {

inline constexpr int kColumns = 7;

/// The instance name of the header button of column 1 to 7.
const char* fl_header_name(int column);

/// Width in pixels of a column's header button; -1 for a column outside 1..7.
int fl_get_column_width(int column);
/// Sets it, with the column under it; other column numbers are ignored.
void fl_set_column_width(int column, int width);

/// Gives the named header button the picture of the sort direction and takes it from the others.
void show_sort_method(Widget* header);

/// The click callback of the header buttons: sorts by that column, or turns the direction round.
void fl_sort_cb(Widget* header);

/// The comparator and direction in use.
DirCompare fl_sort_function();
int fl_sort_order();

}  // namespace dorn
