// The worker's questions and notices. Each waits on the worker's thread while the event loop shows
// it; the time in which one is open does not count in the time left.
#pragma once

#include "fileops/engine/file_op.h"

#include <string>

namespace dorn {

/// Asks a modal question and returns the 1-based number of the button chosen; closing it chooses
/// the escape button. `buttons` as for ui_alert. Waits for the toolkit lock.
[[gnu::format(printf, 4, 5)]] int fop_alert(FileOp* op, const char* title, const char* buttons,
                                            const char* format, ...);

/// Shows a notice with the one button "&Close". Lost when the toolkit lock is held.
[[gnu::format(printf, 3, 4)]] void fop_errinfo(FileOp* op, const char* title, const char* format,
                                               ...);

/// The notice that there is no memory.
void fop_ENOMEM(FileOp* op);

/// Asks for another name when `destination` is too long for its file system. Non-zero: the user
/// gave one and `*destination` is that name, relative to the current directory; 0: the entry is to
/// be skipped.
int FilenameTooLong(FileOp* op, const std::string& source, std::string* destination);

// The long-name dialog's state; touched on the event-loop thread alone.
extern std::string oldfile;  // the source's base name, at most 255 bytes
extern std::string newfile;  // the proposed base name, at most 47 bytes
extern int do_rename;        // non-zero once the user chose Rename

/// The name as newfile holds it, cut short between two characters.
std::string fop_cut_name(std::string name);

/// Sets the dialog: it reads and writes the state above and returns when it has closed. `parent` is
/// the operation's slot. Null (the start): every too long name is skipped.
void fop_set_long_name_cb(void (*dialog)(Widget* parent));

}  // namespace dorn
