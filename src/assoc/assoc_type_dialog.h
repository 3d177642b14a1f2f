// The row editor ("New Association Type"), which edits one row of the list dialog and hands it
// back. While it is open the list dialog takes no input. Private to assoc/. Event-loop thread only.
#pragma once

#include <string>

class QDialog;

namespace dorn {

/// Receives the text of the row when the user is done.
using RowTaker = void (*)(const std::string& text);

/// Opens the editor over `list_dialog`, which owns it, with empty fields or with those of a row.
void at_setup_new(QDialog* list_dialog, RowTaker take);
void at_setup_edit(QDialog* list_dialog, const std::string& text, RowTaker take);

/// Closes the editor, if it is open; nothing is handed back.
void at_cancel();

/// Brings the editor to the front. False when it is not open.
bool at_to_front();

}  // namespace dorn
