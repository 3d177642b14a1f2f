// File lists on the clipboard. What the clipboard holds is told from what is known of it: no
// function here waits for another program. Event-loop thread, except where it says otherwise.
//
// A cut list shrinks as its files are moved or deleted (cut_list.h). It does so in place, for the
// clipboard packs on demand; other programs are told at most once a second, and at the end.
#pragma once

#include "fileops/engine/transfer.h"

namespace dorn {

/// Watches the clipboard from here on; `changed` is called when another list, or none, is there.
void file_clipboard_setup(void (*changed)());

/// Puts the list on the clipboard in place of what is there.
void file_clipboard_put(FileTransfer list, bool cut);

/// The lists that the clipboard holds, without the names that are done with.
TransferLists file_clipboard_lists();

/// Whether it holds a list under that tag, kTagCopied or kTagCut; under either with null.
bool file_clipboard_has(const char* tag);

/// Whether the clipboard has changed and the content is not known yet; `changed` follows.
bool file_clipboard_is_being_read();

}  // namespace dorn
