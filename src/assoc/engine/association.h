// The association table: which commands open, view and edit the files whose names match a pattern.
//
// The table is read once at start-up from "associate.003" in the configuration directory, or built
// from the defaults when that file can't be opened; the associations dialog replaces it as a whole.
// Order matters: lookups take the first match. Event-loop thread only.
//
// The file is plain text, one row a line: pattern, open, VIEW and EDIT command, separated by single
// TABs (a row in memory has edit before view). Lines that begin with "#" are comments.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dorn {

struct Association {
    std::string pattern;  // wildcards joined by "|"; a leading "^" matches in any case
    std::string open;     // commands; "@" stands for the quoted names, blank ones count as none
    std::string edit;
    std::string view;
};

/// The table, in file order. Written by init_read_associations and assoc_replace alone.
extern std::vector<Association> apat;

/// Bytes of a line that is read as one, its newline included.
inline constexpr std::size_t kAssocLineSize = 1023;

enum class AssocAction { Open = 0, View = 1, Edit = 2 };

/// Loads the table. A null directory or a file that can't be opened gives the defaults. A line
/// without a TAB is told in an alert and on standard error, and ends the process with status 1.
void init_read_associations(const char* directory, const char* file_name);

/// Reads the rows of a file's content into `*rows`, in pieces of at most kAssocLineSize bytes. 0,
/// or the ordinal (from 1, comments not counted) of the first line without a TAB.
int assoc_parse(std::string_view content, std::vector<Association>* rows);

/// The content of the file for these rows: the comment line and one line a row.
std::string assoc_format(const std::vector<Association>& rows);

/// The default table.
std::vector<Association> assoc_defaults();

/// Replaces the table and writes the file, whole or not at all; one that can't be written, or a
/// null directory, leaves the change in memory, in silence.
void assoc_replace(std::vector<Association> rows, const char* directory, const char* file_name);

/// Splits `text` at `separator` into exactly `count` fields: missing ones are empty, what follows
/// the last one's separator is dropped.
std::vector<std::string> _split_str(std::string_view text, char separator, int count);

/// 1 when the text is empty or white space only, else 0.
int isempty(const char* text);

/// The index of the first row whose pattern matches the name; -1 when none does.
int _get_pat_idx(const char* file_name);

/// The command of the first row that matches, for an action (a value outside AssocAction matches
/// nothing); null when no row matches or that row's command is blank. Owned by the table.
const char* _get_pat_cmd(const char* file_name, AssocAction action);

}  // namespace dorn
