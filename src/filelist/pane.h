// What the files of this folder share: the rows, the model and the view of the one list pane.
// Private to filelist/.
#pragma once

#include "filelist/filelist.h"

#include <cstdint>
#include <vector>

namespace dorn {

class ListModel;
class ListView;

struct Pane {
    std::vector<ListRow> rows;   // as shown; rebuilt by fl_update alone
    ListModel* model = nullptr;  // owned by the view
    ListView* view = nullptr;    // null while the window does not exist
};
extern Pane gPane;

/// The cache, made at the first call.
DirCache& fl_cache();

/// Calls the notify callback.
void fl_notify();

/// The row that shows entry `index` (-1: the first row, the parent row where there is one); -1 when
/// there is none.
int fl_row_of(int32_t index);

/// Makes `index` the current entry in the cache: the current flag moves, and is set only for an
/// index of 1 or more.
void fl_set_current(int32_t index);

/// fl_goto_index, scrolling to the row only when `scroll` is set.
int32_t fl_place_current(int32_t index, bool scroll);

/// What every move of the selection by mouse or keys ends in: the rows from `first` to `last` are
/// selected, nothing else unless `keep` is set.
void fl_select_rows(int first, int last, bool keep);

/// Holds back the status line and the repaint while it lives, so that a change of many entries
/// costs one of each.
class SelectionBatch {
  public:
    SelectionBatch();
    ~SelectionBatch();
    SelectionBatch(const SelectionBatch&) = delete;
    SelectionBatch& operator=(const SelectionBatch&) = delete;
};

}  // namespace dorn
