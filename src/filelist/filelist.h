// The file list pane: rows built from the cache, re-reading, the shown path and filter, the status
// line. The pane's other headers are navigation.h, selection.h, typeahead.h, columns.h. Event-loop
// thread only.
//
//     fl_setspec("*");
//     fl_setup();
//     fl_set_notify_cb(base_update);
//     fl_setpath("/usr");
#pragma once

#include "dirmodel/dir_entry.h"
#include "ui/widget.h"

#include <cstdint>
#include <string>

namespace dorn {

// Row images, in the order in which the list holds them.
enum RowImage : uint8_t {
    kImageClosedFolder,
    kImageFile,
    kImageExec,
    kImageLinkedFolder,
    kImageLinkedFile,
    kImageLinkedExec,
    kImageParent,
    kImageBrokenLink,
    kImageFileCut,
    kImageDirCut,
    kRowImages
};

/// One row: which entry it shows and with which picture. Texts are made when it is painted.
struct ListRow {
    int32_t index;  // of the entry in gDir; -1: the parent row ".."
    RowImage image;
};

/// Gives the list its pictures and its font. The widgets "filelist" and "fh_*" must exist.
void fl_setup();

/// Rebuilds every row from gDir and calls the notify callback; the list does not scroll.
void fl_update();

/// Re-reads the current directory, rebuilds the rows and places the current entry: the first
/// selected one again when the directory is the same, else the first row. One that is asked for
/// while another runs is done once after it. Returns 0.
int fl_refresh();

/// The same for another process that asks for it, which the user knows nothing of.
int fl_refresh_quietly();

/// Whether nobody but other processes asked for the refresh under way. For the notify callback.
bool fl_is_refreshed_quietly();

/// With `on` keeps refreshes waiting, so that the entries stay what they are; a second hold adds to
/// the first. When the last one is let go, what was asked for meanwhile is done once, soon.
void fl_hold_refresh(bool on);

/// Does that at once instead, for a selection that is to be made now and last. Nothing while it is
/// still held.
void fl_refresh_if_asked();

/// Shows the directory `path` (bytes). 0, or -1 when it is refused (the user has been told) or is
/// the one shown. The history is not touched.
int fl_setpath(const char* path);

/// Sets the filter; null or empty means "*". 0, or -1 when it is the one in use. Nothing is read
/// before a path is set.
int fl_setspec(const char* pattern);

/// Sets what is called after every rebuild of the rows.
void fl_set_notify_cb(void (*notify)());

/// Asks whether that name of that directory is on the cut list; null (the start): nothing is. Set
/// before the list is shown. `reload` brings the cut list up to date before a rebuild.
void fl_set_cut_cb(bool (*is_cut)(const char* directory, const char* name), void (*reload)());

/// Brings the pictures of the rows up to date with what is cut, and nothing else.
void fl_update_cut();

/// Arms the type-ahead timer; disarms it and clears the type-ahead state; what its expiry runs.
void fl_timer_set();
void fl_timer_disable();
int fl_timer_cb();

/// Rewrites the status labels "status1" and "status2". Returns 0.
int status_bar_update();

/// Entry `index` as its row shows it: the text of column 1 to 7 (see columns.h) in display form.
std::string fl_column_text(int32_t index, int column);

/// True while the directory is being read.
bool fl_is_reading();

}  // namespace dorn
