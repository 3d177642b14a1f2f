// The one way in which the interface starts a copy, move or delete. Event-loop thread.
#pragma once

#include "fileops/engine/file_op.h"
#include "fileops/engine/transfer.h"

#include <memory>

namespace dorn {

/// Starts the operation on the files of `transfer`, which is consumed whatever happens;
/// `destination` is a directory, "" for a delete. 0, or -1 when it did not start.
int _file_op(int32_t kind, std::unique_ptr<FileTransfer> transfer, const char* destination);

/// Starts one operation a list. When only some of several could be started the user is told.
void file_ops(int32_t kind, std::vector<FileTransfer> lists, const char* destination);

/// The same as _file_op from the parts of a transfer: makes the slot, starts the worker, ties the
/// two together. A failure to start is told on standard error and in the slot.
int fop_start_cmd(int32_t kind, const char* directory, const std::vector<std::string>& names,
                  const char* destination);

}  // namespace dorn
