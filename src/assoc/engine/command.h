// From a command template and file names to a running command line. Event-loop thread only.
//
// Names never become code: each goes to the shell in single quotes, as add_name writes it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace dorn {

/// Appends the quoted name and a blank to `*buffer` and returns the bytes appended; an empty name
/// appends nothing. With a null buffer returns the bytes that it needs (3 for an empty name). An
/// apostrophe becomes the four characters \047, which the shell does not turn back: a file "it's"
/// reaches the command as "it\047s".
std::size_t add_name(std::string* buffer, const std::string& name);

/// The command line: `command` with each "@" replaced by `names` (quoted names, each with a blank
/// behind it), or with the names appended when it has none. "\@" is an "@", quotes around "@" go.
/// Within other quotes the names' own marks are escaped, so that they stay the text they are.
/// Nothing when a name holds more than harmless characters and the place of the "@" is one that the
/// shell reads by further rules (a command in backquotes, quotes within quotes).
std::optional<std::string> command_line(const std::string& command, const std::string& names);

/// Runs a template for one named file, or for all selected entries of gDir (`name` null). -1 when
/// it is refused (a directory among the selected ones, nothing selected, no command_line), 0 for a
/// blank template, else the result of misc_run.
int file_cmd(const char* command, const char* name);

/// Runs a shell command line in a terminal window of its own, kept open after its end when `keep`
/// is set; one that begins with the word "orterm" is run as it is. Never waits. -1 for a blank
/// command or one that could not be started, else 0.
int misc_run(int input_group, int keep, const char* command);

/// Starts a program directly. Looked up as orrin_program does; never waits. 0 or -1.
int misc_spawn(int input_group, const std::vector<std::string>& arguments);

}  // namespace dorn
