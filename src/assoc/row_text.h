// One row of the association table as the text that the dialogs edit and the file holds: pattern,
// open, view and edit command with a TAB between them. Bytes; no toolkit.
#pragma once

#include "assoc/engine/association.h"

#include <string>

namespace dorn {

/// The text of a row. A blank command becomes an empty one.
std::string row_text(const Association& row);

/// The row of a text; missing columns are empty, what follows the fourth is dropped.
Association row_of_text(const std::string& text);

enum class RowField { Pattern, Open, View, Edit };

/// Why something can't be a row of the table, for the user. The message is empty when it can.
struct RowRefusal {
    std::string message;
    RowField field = RowField::Pattern;  // where the reason lies
};

/// Looks at what was entered as a row: it needs a pattern and a command, and must come back from
/// the file as it is.
RowRefusal row_refusal(const Association& entered);

/// The part of row_refusal that is about length: lines are read in pieces of kAssocLineSize bytes,
/// and what does not fit would be read as another row.
RowRefusal row_too_long(const std::string& text);

}  // namespace dorn
