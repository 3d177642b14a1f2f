// Removal: of what the user chose, and of the sources of a move.
#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"
#include "fileops/engine/worker.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr const char* kTitle = "Delete";
constexpr int32_t kLarge = 1000;  // entries from which a thread that looks ahead pays

void store_shown(Worker& w, const char* name, int32_t percent, int32_t time_left) {
    fop_update_info(w.op, "Deleting", " Dir: ", w.source_path.c_str(), "File: ", name, percent,
                    time_left);
}

void show_progress(Worker& w, const char* name) {
    FileOp* op = w.op;
    if (!fop_redraw_due(op)) return;
    const auto done = static_cast<uint64_t>(op->files_done);
    const auto total = static_cast<uint64_t>(op->total_files);
    store_shown(w, name, percent_of(done, total), fop_calc_time_left(op, done, total));
}

enum class Answer { kDelete, kSkip, kStop };

/// Asks whether the entry is to be deleted, where the flags want that.
Answer ask_delete(Worker& w, int32_t group, int32_t index, mode_t mode) {
    FileOp* op = w.op;
    const bool is_writeable = (mode & S_IWUSR) != 0;
    if (is_writeable && (op->flags & kFopAskEach) == 0) return Answer::kDelete;
    store_shown(w, op->groups[group]->names[index], kPercentKeep, kTimeKeep);
    const std::string message = filled(is_writeable ? "File '%s'\n" : "Unwriteable file '%s'\n",
                                       {shown(source_path_of(w, group, index))});
    const int button =
        fop_alert(op, kTitle, "@&Skip|&Delete|de&Lete all|#&Abort", "%s", message.c_str());
    if (button == 1) return Answer::kSkip;
    if (button == 3) op->flags |= kFopDeleteAll;
    return button == 2 || button == 3 ? Answer::kDelete : Answer::kStop;
}

/// The entry's mode; 0 when it can't be had.
mode_t mode_of(Worker& w, int32_t group, int32_t index) {
    const mode_t known = w.modes_ahead ? w.modes_ahead->of(group, index) : 0;
    if (known != 0) return known;
    struct stat status;
    const char* name = w.op->groups[group]->names[index];
    const int dir = w.sources.of_group(group);
    return fstatat(dir, name, &status, AT_SYMLINK_NOFOLLOW) == 0 ? status.st_mode : 0;
}

/// Whether the source of a move is the file that was copied, whole.
bool is_what_was_copied(const Worker& w, int dir, int32_t group, int32_t index) {
    struct stat status;
    const Group* own = w.op->groups[group];
    if (fstatat(dir, own->names[index], &status, AT_SYMLINK_NOFOLLOW) != 0) return true;
    return print_of(status) == own->prints[index];
}

/// Asks about what can't be deleted. kEntrySkipped or kStopAll.
int ask_undeleted(Worker& w, const char* name, const std::string& path, int error) {
    store_shown(w, name, kPercentKeep, kTimeKeep);
    const std::string message =
        filled("Unable to delete '%s'\n%s\n", {shown(path), std::strerror(error)});
    const int button = fop_alert(w.op, kTitle, "@&Continue|#&Abort", "%s", message.c_str());
    return button == 1 ? kEntrySkipped : kStopAll;
}

/// Whether nothing of the group is to be removed.
bool stays(const Worker& w, int32_t group) {
    const Group* own = w.op->groups[group];
    return w.op->kind == kFopMove && (own->incomplete || own->behind_link);
}

/// Opens the group's directory. False when its entries are to be left; *stop: and all others.
bool enter_for_delete(Worker& w, int32_t group, bool* stop) {
    enter_group(w, group);
    if (w.sources.of_group(group) >= 0) return true;
    const int error = errno;
    keep_parents(w, group);
    *stop = ask_undeleted(w, "", w.source_path, error) == kStopAll;
    return false;
}

int delete_group(Worker& w, int32_t group, bool with_progress) {
    FileOp* op = w.op;
    const Group* own = op->groups[group];
    bool entered = false;
    for (int32_t i = own->count - 1; i >= 0; --i) {
        if (own->names[i][0] == '\0') continue;
        if (with_progress) ++op->files_done;
        if ((own->kinds[i] & kEntryKept) != 0) continue;
        bool stop = false;
        if (!entered && !enter_for_delete(w, group, &stop)) return stop ? -1 : 0;
        entered = true;
        if (with_progress) {
            --op->files_done;
            if (fop_pause_trap(op) != 0) return -1;
            show_progress(w, own->names[i]);
        }
        if (fop_delete_file(w, group, i) == kStopAll) return -1;
        if (with_progress) ++op->files_done;
    }
    return 0;
}

}  // namespace

int fop_delete_file(Worker& w, int32_t group, int32_t index) {
    Group* own = w.op->groups[group];
    const char* name = own->names[index];
    bool is_directory = (own->kinds[index] & kEntryDirectory) != 0;
    const mode_t mode = (w.op->flags & kFopDeleteAll) == 0 ? mode_of(w, group, index) : 0;
    if (mode != 0) {
        is_directory = S_ISDIR(mode);
        const Answer answer = ask_delete(w, group, index, mode);
        if (answer != Answer::kDelete) {
            keep_parents(w, group);
            return answer == Answer::kSkip ? 0 : -1;
        }
    }
    const int dir = w.sources.of_group(group);
    int error = 0;
    if (w.op->kind == kFopMove && !is_directory && !is_what_was_copied(w, dir, group, index))
        error = EBUSY;
    else if (unlinkat(dir, name, is_directory ? AT_REMOVEDIR : 0) != 0)
        error = errno;
    if (error != 0) {
        keep_parents(w, group);
        if (ask_undeleted(w, name, source_path_of(w, group, index), error) == kStopAll) return -1;
    }
    tell_done(w, name);
    return 0;
}

int fop_delete_files(Worker& w, bool with_progress) {
    if (with_progress && w.op->total_files >= kLarge &&
        (w.op->flags & (kFopDeleteAll | kFopAskEach)) == 0)
        w.modes_ahead.emplace(w.op, &w.sources);
    for (int32_t group = w.op->group_count - 1; group >= 0; --group) {
        if (stays(w, group)) {
            if (w.op->groups[group]->incomplete) keep_parents(w, group);
        } else if (delete_group(w, group, with_progress) != 0) {
            return -1;
        }
    }
    return 0;
}

}  // namespace dorn
