#include "fileops/engine/worker.h"

#include "fileops/engine/fop.h"
#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <unistd.h>

namespace dorn {

int gDonePause = 1000;

namespace {

constexpr Verb kVerbs[] = {
    {"Copy", "copy", "Copying", "Can't copy file(s) into itself."},
    {"Move", "move", "Moving", "Can't move file(s) into itself."},
    {"Delete", "delete", "Deleting", ""},
};

// What a worker goes through. A failure of the first two ends it at once; all others lead to
// kDone, the ends by Cancel and Abort included.
enum class Stage {
    kCheck,          // where the copies go, and whether they may
    kRename,         // a move only: what needs no copying
    kScan,           // what there is below the chosen names
    kTransfer,       // copy and move, one entry after the other
    kRemoveSources,  // a move only: what was copied whole, however kTransfer ended
    kDelete,         // a delete only
    kDone,           // shown for gDonePause
    kEnded,          // not shown
};

std::atomic<void (*)(Widget*)> sEnded{nullptr};

/// Passes a group over whose directory was skipped; what was counted for it leaves the total.
void pass_over(Worker& w, int32_t group) {
    const Group* own = w.op->groups[group];
    empty_group(w, group, 0);
    w.op->files_done += own->count;
    w.op->total_bytes -= std::min(own->bytes, w.op->total_bytes);
}

bool is_skipped(const FileOp* op, int32_t group) {
    const Group* own = op->groups[group];
    return group > 0 && op->groups[own->parent]->names[own->parent_name][0] == '\0';
}

/// Opens both directories of the group. kEntryDone, kEntrySkipped when the user leaves it out, or
/// kStopAll.
int open_group(Worker& w, int32_t group) {
    enter_group(w, group);
    if (w.sources.of_group(group) == -1) {
        const int error = errno;
        return ask_skip(w, "Copy/Move", "Unable to stat '%s'\n%s\n", w.source_path, error);
    }
    if (w.copies.of_group(group) == -1)
        return ask_skip(w, "Copy/Move", "Unable to make '%s' directory\n", w.copy_path, 0);
    return kEntryDone;
}

/// Copies the entries of a group. 0, or -1 with the entry at which it stopped in `*at`.
int transfer_entries(Worker& w, int32_t group, int32_t* at) {
    FileOp* op = w.op;
    const Group* own = op->groups[group];
    for (int32_t& i = *at; i < own->count; ++i) {
        if (fop_pause_trap(op) != 0) return -1;
        if (own->names[i][0] != '\0') {
            const int result = fop_copy_file(w, group, i);
            if (result == kStopAll) return -1;
            if (result == kEntryDone) {
                tell_done(w, own->names[i]);
            } else {
                empty_entry(w, group, i);
                keep_parents(w, group);
            }
        }
        ++op->files_done;
    }
    return fop_pause_trap(op) == 0 ? 0 : -1;
}

/// Copies a group and gives the copy of its directory its last touch. 0, or -1 with the entry at
/// which it stopped in `*at`.
int transfer_group(Worker& w, int32_t group, int32_t* at) {
    *at = 0;
    if (is_skipped(w.op, group)) {
        pass_over(w, group);
        return 0;
    }
    const int opened = open_group(w, group);
    if (opened == kStopAll) return -1;
    if (opened == kEntrySkipped) {
        if (group > 0) close_copy_directory(w, group);
        pass_over(w, group);
        keep_parents(w, group);
        return 0;
    }
    const bool is_through = transfer_entries(w, group, at) == 0;
    const int finished = group == 0   ? kEntryDone
                         : is_through ? fop_copy_file(w, group, kFinishDirectory)
                                      : kStopAll;
    if (finished == kEntrySkipped) close_copy_directory(w, group);
    if (finished != kEntryDone) keep_parents(w, group);
    return is_through && finished != kStopAll ? 0 : -1;
}

/// Closes what was opened for content that does not come, since the copying stopped at that entry,
/// which may have been opened itself.
void close_copy_directories(Worker& w, int32_t stopped, int32_t at) {
    for (int32_t group = std::max(stopped, 1); group < w.op->group_count; ++group) {
        const Group* own = w.op->groups[group];
        if (own->parent > stopped || (own->parent == stopped && own->parent_name > at)) return;
        if (!is_skipped(w.op, group)) close_copy_directory(w, group);
    }
}

/// Copies everything; what was not reached is passed over.
void transfer(Worker& w) {
    FileOp* op = w.op;
    op->flags |= kFopDeleteAll;  // the removals that end a move never ask
    fop_update_info(op, w.verb->progress, nullptr, nullptr, nullptr, nullptr, 0, kTimeKeep);
    int32_t at = 0;
    int32_t group = 0;
    while (group < op->group_count && transfer_group(w, group, &at) == 0)
        ++group;
    close_copy_directories(w, group, at);
    for (; group < op->group_count; ++group, at = 0)
        empty_group(w, group, at);
}

Stage next_stage(Worker& w, Stage stage) {
    const bool is_move = w.op->kind == kFopMove;
    switch (stage) {
        case Stage::kCheck:
            if (fop_check_dst(w) != 0) return Stage::kEnded;
            return is_move ? Stage::kRename : Stage::kScan;
        case Stage::kRename:
            return fop_move_files(w) == 0 ? Stage::kScan : Stage::kEnded;
        case Stage::kScan:
            if (fop_build_filelist(w) != 0) return Stage::kDone;
            return w.op->kind == kFopDelete ? Stage::kDelete : Stage::kTransfer;
        case Stage::kTransfer:
            transfer(w);
            return is_move ? Stage::kRemoveSources : Stage::kDone;
        case Stage::kRemoveSources:
            fop_delete_files(w, false);
            return Stage::kDone;
        case Stage::kDelete:
            fop_delete_files(w, true);
            return Stage::kDone;
        default:
            return stage;
    }
}

void run(FileOp* op) {
    fop_update_info(op, "Scanning", "", "", "", "", kPercentNone, kTimeKeep);
    Stage stage = Stage::kCheck;
    try {
        Worker w(op);
        while (stage != Stage::kDone && stage != Stage::kEnded)
            stage = next_stage(w, stage);
    } catch (const std::bad_alloc&) {
        fop_ENOMEM(op);
    }
    if (stage == Stage::kEnded) return;
    fop_update_info(op, nullptr, "Done", "", "", "", 100, 0);
    usleep(static_cast<useconds_t>(gDonePause) * 1000);
}

}  // namespace

Worker::Worker(FileOp* operation)
    : op(operation),
      verb(&kVerbs[operation->kind]),
      sources(operation, TreeDirs::Side::kSource),
      copies(operation, TreeDirs::Side::kCopy) {
    Group* chosen = op->groups[0];
    const auto count = static_cast<std::size_t>(chosen->count);
    void* notes = std::calloc(count, sizeof(uint64_t) + sizeof(uint8_t));
    if (alloc_add(op->allocations, notes) == nullptr) {
        std::free(notes);
        throw std::bad_alloc();
    }
    chosen->prints = static_cast<uint64_t*>(notes);
    chosen->kinds = reinterpret_cast<uint8_t*>(chosen->prints + count);
    Fd directory = open_directory(chosen->directory);
    struct stat status;
    if (directory && fstat(directory.get(), &status) == 0) {
        chosen->device = status.st_dev;
        chosen->inode = status.st_ino;
    }
    sources.set_root(std::move(directory));
}

void* fop_thread(void* op) {
    auto* own = static_cast<FileOp*>(op);
    Widget* panel = own->display->panel;
    run(own);
    if (const auto ended = sEnded.load()) ended(panel);
    free_op(own);
    return nullptr;
}

void fop_set_ended_cb(void (*ended)(Widget* panel)) {
    sEnded = ended;
}

}  // namespace dorn
