// What the stages of an operation's worker share.
//
// fop_thread (worker.cpp) runs them in this order: fop_check_dst (destination.cpp), for a move
// fop_move_files (move.cpp), fop_build_filelist (scan.cpp), then fop_copy_file for each entry
// (copy_entry.cpp, copy_data.cpp, finish.cpp) and fop_delete_files (delete.cpp). All on the
// operation's own thread. Each returns 0, or -1 when the operation is to stop; the user has been
// told by then, by the function that met the reason.
#pragma once

#include "fileops/engine/file_op.h"
#include "fileops/engine/modes_ahead.h"
#include "fileops/engine/tree_dirs.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unordered_set>
#include <vector>

namespace dorn {

/// The words of an operation's kind.
struct Verb {
    const char* title;        // of its questions, and in them in lower case
    const char* in_question;  // "What do you want to %s ?"
    const char* progress;     // title of its slot
    const char* into_itself;  // the message that stops it
};

struct Worker {
    explicit Worker(FileOp* operation);

    FileOp* op;
    const Verb* verb;
    TreeDirs sources;
    TreeDirs copies;
    std::string source_path;                // of the group that was entered
    std::string copy_path;                  // where the copies of its entries go
    std::vector<FileId> destination_chain;  // the destination directory and all above it
    std::vector<FileId> source_chain;       // the same of the source directory, once needed
    std::vector<char> names;                // what the scan has read of a directory
    int32_t group_capacity = 1;
    std::optional<ModesAhead> modes_ahead;  // of a large removal that may ask
    std::unordered_set<uint64_t> brought;   // the files that hold what came, see note_brought
};

// What becomes of an entry.
inline constexpr int kEntryDone = 0;
inline constexpr int kEntrySkipped = 1;
inline constexpr int kStopAll = -1;

// --- the stages ---

int fop_check_dst(Worker& w);
int fop_move_files(Worker& w);
int fop_build_filelist(Worker& w);

/// Copies entry `index` of the group that was entered, or with an index of kFinishDirectory gives
/// the copy of its directory its final mode, times and owner. kEntryDone, kEntrySkipped or
/// kStopAll.
int fop_copy_file(Worker& w, int32_t group, int32_t index);
inline constexpr int32_t kFinishDirectory = -1;

/// Closes the directory that takes the group's copies again, as it was or as its source is, when it
/// is not going to be finished.
void close_copy_directory(Worker& w, int32_t group);

int fop_delete_files(Worker& w, bool with_progress);
int fop_delete_file(Worker& w, int32_t group, int32_t index);

// --- entries and groups ---

/// Joins two pieces of a path with one "/", in `out`, which it returns. No "/" at the end.
const std::string& _build_path(std::string& out, std::string_view directory, std::string_view name);

/// The full path of a group's directory.
std::string group_path(const FileOp* op, int32_t group);

/// The group of what the entry holds, null when it was not listed. The groups lie in the order of
/// the entries that they belong to.
Group* group_below(const FileOp* op, int32_t parent, int32_t index);

/// Makes the paths of the group's directory and of its copies. They stay until the next call.
void enter_group(Worker& w, int32_t group);

/// The full path of an entry of the group that was entered (index kFinishDirectory: of the
/// directory), and that of its copy.
std::string source_path_of(const Worker& w, int32_t group, int32_t index);
std::string copy_path_of(const Worker& w, const std::string& source_path);

/// Passes the entry over from here on.
void empty_entry(Worker& w, int32_t group, int32_t index);

/// Passes all entries of the group from `first` on over; what holds them stays.
void empty_group(Worker& w, int32_t group, int32_t first);

/// Notes that something in the group's directory stays, so that neither it nor what holds it is
/// tried to be removed.
void keep_parents(Worker& w, int32_t group);

/// What identifies the content of a file, as far as its status tells: never 0.
uint64_t print_of(const struct stat& status);

/// Notes the file as holding what this operation brought, which it does not overwrite: another of
/// its entries may come to the same file by a hard link, a symbolic link or a name that differs in
/// case only, and a move then removes both sources.
void note_brought(Worker& w, const struct stat& status);
bool was_brought(const Worker& w, const struct stat& status);

/// The directory and all above it, as far as they can be reached.
std::vector<FileId> chain_of(int directory);
bool is_in_chain(const std::vector<FileId>& chain, const struct stat& status);

/// Whether both are of the same file.
bool is_same_file(const struct stat& a, const struct stat& b);

// --- telling and asking ---

/// The percentage for the bar; 0 of a zero total.
int32_t percent_of(uint64_t done, uint64_t total);

/// `text` with each "%s" in turn replaced by one of `values`.
std::string filled(std::string_view text, std::initializer_list<std::string_view> values);

/// A path as it is shown, in full.
std::string shown(const std::string& path);

/// Asks "&Continue|&Abort" in the text that the path and the error's text fill. kEntrySkipped or
/// kStopAll.
int ask_skip(Worker& w, const char* title, std::string_view text, const std::string& path,
             int error);

/// Asks what is to become of an existing destination, unless all are overwritten. kEntryDone when
/// it is to be overwritten, kEntrySkipped or kStopAll.
int ask_overwrite(Worker& w, const char* title, const std::string& path);

/// Tells that the operation would copy something into itself. kStopAll.
int refuse_into_itself(Worker& w);

/// Calls on_item_done for the entry.
void tell_done(const Worker& w, const char* name);

}  // namespace dorn
