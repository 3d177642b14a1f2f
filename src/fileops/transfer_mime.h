// File lists as the toolkit's drag and clipboard data. Event-loop thread.
#pragma once

#include "fileops/engine/transfer.h"

class QMimeData;

namespace dorn {

/// Data that offers the list under every type, packed when asked for. The caller owns it.
QMimeData* transfer_mime_data(const FileTransfer& transfer, bool cut);

/// Whether the data names a type that we read (its data may still turn out to be none).
bool transfer_mime_offered(const QMimeData* data);

/// The lists in `data`, of the most telling type that has any. Of a program that hangs one type is
/// waited for (five seconds on X11), not the others.
TransferLists transfer_from_mime(const QMimeData* data);

}  // namespace dorn
