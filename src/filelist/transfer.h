// The selection of the file list as a list of files on its way (fileops/engine/transfer.h).
// Event-loop thread only.
#pragma once

#include "fileops/engine/transfer.h"

#include <memory>

namespace dorn {

/// The selected entries' names, in the order of the list, and the directory that they are in; null
/// when nothing is selected. Sets one_dir_packed. The record is a copy and outlives a re-read.
std::unique_ptr<FileTransfer> fl_pack_transf();

/// Frees the record of a list that leads to nothing. Null: nothing.
void fl_free_transf(std::unique_ptr<FileTransfer> record);

}  // namespace dorn
