// The rename pass of a move: what stays within its file system is not copied.
#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"
#include "fileops/engine/worker.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace dorn {

namespace {

/// Renames without replacing something that the user was not asked about, where the file system
/// can tell. True when it is done.
bool rename_entry(int from, const char* name, int to, const char* to_name, bool exists) {
    if (exists) return renameat(from, name, to, to_name) == 0;
    if (renameat2(from, name, to, to_name, RENAME_NOREPLACE) == 0) return true;
    struct stat status;
    const bool is_dangling_link = errno == EEXIST && fstatat(to, to_name, &status, 0) != 0;
    return (errno == EINVAL || is_dangling_link) && renameat(from, name, to, to_name) == 0;
}

/// Whether the entry may take its place in the destination, where `exists` tells what is there.
/// kEntryDone when it may, kEntrySkipped when the user leaves it out, kStopAll.
int ask_place(Worker& w, int32_t index, bool* exists) {
    struct stat status;
    const char* to_name = w.copies.name_of(0, index);
    *exists = fstatat(w.copies.of_group(0), to_name, &status, 0) == 0;
    if (!*exists) return kEntryDone;
    return ask_overwrite(w, "Move", copy_path_of(w, source_path_of(w, 0, index)));
}

/// kEntryDone when the entry is through with (renamed or skipped), kEntrySkipped when it is left to
/// be copied, kStopAll.
int move_entry(Worker& w, int32_t index) {
    const int from = w.sources.of_group(0);
    const int to = w.copies.of_group(0);
    char* name = w.op->groups[0]->names[index];
    const char* to_name = w.copies.name_of(0, index);
    struct stat source {};
    struct stat there;
    const bool is_known = fstatat(from, name, &source, AT_SYMLINK_NOFOLLOW) == 0;
    if (fstatat(to, to_name, &there, AT_SYMLINK_NOFOLLOW) == 0 && was_brought(w, there))
        return kEntrySkipped;
    bool exists = false;
    bool is_renamed = false;
    // Again where something came to be there since the look: the copying would ask no more once
    // another entry has been renamed.
    for (int tries = 0; tries < 2 && !is_renamed; ++tries) {
        const int answer = ask_place(w, index, &exists);
        if (answer != kEntryDone) return answer == kStopAll ? kStopAll : kEntryDone;
        is_renamed = rename_entry(from, name, to, to_name, exists);
        if (!is_renamed && (exists || errno != EEXIST)) return kEntrySkipped;
    }
    if (!is_renamed) return kEntrySkipped;
    if (is_known) note_brought(w, source);
    tell_done(w, name);
    return kEntryDone;
}

}  // namespace

int fop_move_files(Worker& w) {
    enter_group(w, 0);
    const Group* chosen = w.op->groups[0];
    for (int32_t i = 0; i < chosen->count && fop_pause_trap(w.op) == 0; ++i) {
        if (chosen->names[i][0] == '\0') continue;
        const int result = move_entry(w, i);
        if (result == kStopAll) return -1;
        if (result == kEntrySkipped) continue;
        empty_entry(w, 0, i);
        w.op->flags |= kFopAllButFirst;
    }
    return 0;
}

}  // namespace dorn
