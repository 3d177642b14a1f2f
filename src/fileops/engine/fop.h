// Starting an operation: from a request to a record with a thread of its own.
#pragma once

#include "fileops/engine/file_op.h"

#include <string>
#include <vector>

namespace dorn {

/// The option bits of an operation of that kind on `count` names, from the bits of the
/// configuration record. `one_dir`: the one name is a directory that was packed whole.
uint32_t fop_request_flags(int32_t kind, int32_t count, bool one_dir, uint32_t config_flags);

/// Builds the record of an operation and starts its detached thread (fop_thread). Everything is
/// copied. Returns the record, which belongs to the thread, or null with errno set and nothing left
/// behind: EINVAL without names or without a path. Event-loop thread.
FileOp* fop(int32_t kind, const char* directory, const std::vector<std::string>& names,
            const char* destination, uint32_t flags, const SlotDisplay* display,
            int (*on_item_done)(const char* directory, const char* name));

/// Frees the record and all that it owns; the worker's last act.
void free_op(FileOp* op);

/// How long the worker shows "Done" before its slot may go, in milliseconds. Set it before an
/// operation is started.
extern int gDonePause;

/// The body of the operation's thread. `op` is a FileOp, gone when this returns. Returns null.
void* fop_thread(void* op);

/// Sets what the worker calls when it has ended, the last thing before it frees the record: takes
/// the pointer to it out of the slot with that panel, from the worker's thread.
void fop_set_ended_cb(void (*ended)(Widget* panel));

}  // namespace dorn
