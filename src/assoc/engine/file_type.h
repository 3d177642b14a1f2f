// A one-line description of a file's type, and the pipes that it is read through. Any thread.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace dorn {

/// A pipe to or from a shell command; `mode` begins with "r" or "w". Null with errno set when it
/// can't be made. The pipe ends with pclose of this namespace.
FILE* popen(const char* command, const char* mode);
/// Closes the pipe and waits for the command: its wait status, or -1 with errno set when nothing is
/// known of it (children are not kept for waiting while SIGCHLD is ignored) or the stream is none
/// of ours.
int pclose(FILE* stream);

/// What the program `file` says of `path`, or a word for its mode. Names that a shell could take
/// for more than a name are not handed to one and get the word. 1 when something was written to
/// `*out` (a text of `file` keeps its newline), else 0.
int as_get_filetype(const char* path, uint32_t mode, std::string* out);

/// The word for a mode that stands in for the text of `file`; null when there is none.
const char* as_mode_word(uint32_t mode);

}  // namespace dorn
