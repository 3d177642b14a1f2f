// One copy, move or delete under way: the record that its worker thread works on.
//
// Everything that the record points at, and the record itself, is owned by its allocation list; the
// worker frees that as its very last act, after the operation's slot has taken back its pointer to
// the record (slot_mark_removed). Only `cancelled` and `paused` are written by another thread.
#pragma once

#include "fileops/engine/path_list.h"
#include "ui/lock.h"
#include "ui/widget.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <pthread.h>
#include <string>
#include <sys/types.h>

namespace dorn {

inline constexpr int32_t kFopCopy = 0;
inline constexpr int32_t kFopMove = 1;
inline constexpr int32_t kFopDelete = 2;

// Bits of FileOp::flags.
inline constexpr uint32_t kFopMakeDestination = 0x0001;  // the destination is the copy of the one
                                                         // source directory and is to be made
inline constexpr uint32_t kFopBufferSize = 0x00F0;       // copy buffer in units of 4096 bytes
inline constexpr uint32_t kFopDeleteAll = 0x0200;        // delete without asking
inline constexpr uint32_t kFopAskEach = 0x0400;          // ask before deleting a writeable file
inline constexpr uint32_t kFopOverwriteAll = 0x1000;     // overwrite without asking
inline constexpr uint32_t kFopLinksAsFiles = 0x2000;     // follow symbolic links
inline constexpr uint32_t kFopLinksAsLinks = 0x4000;     // copy symbolic links as links
inline constexpr uint32_t kFopIgnoreOwner = 0x8000;  // failures to change the owner don't matter
inline constexpr uint32_t kFopAllButFirst = 0xFFFFFFFE;  // what a move's first rename sets

inline constexpr int32_t kFopDefaultBuffer = 32768;  // bytes

/// What a slot shows of its operation, and where. The worker has a copy of its own.
struct SlotDisplay {
    Widget* progress_bar = nullptr;
    Widget* title_text = nullptr;
    Widget* time_text = nullptr;
    Widget* from_widget = nullptr;
    Widget* to_widget = nullptr;
    Widget* count_text = nullptr;
    Widget* cancel_button = nullptr;
    Widget* panel = nullptr;
    GateTicket ticket;  // of the slot's redraws; closed when the panel goes

    std::string title;
    std::string from_label;
    std::string from_text;
    std::string to_label;
    std::string to_text;
    int32_t percent = 0;    // 0 to 100
    int32_t time_left = 0;  // seconds; 0 or less shows as a blank
};

// What the worker knows of an entry, bits of Group::kinds.
inline constexpr uint8_t kEntryKnown = 0x01;      // its type has been read
inline constexpr uint8_t kEntryDirectory = 0x02;  // it is a directory itself, no link to one
inline constexpr uint8_t kEntryFollowed = 0x04;   // it is a link, and what it points to is copied
inline constexpr uint8_t kEntryMade = 0x08;       // this operation made the directory of its copy
inline constexpr uint8_t kEntryListed = 0x20;     // what it holds is a group
inline constexpr uint8_t kEntryKept = 0x10;       // it stays where it is, or something in it does

/// A run of names in one directory. Group 0 holds what the user chose; each directory that the scan
/// meets adds one behind it. An empty name is finished or skipped.
struct Group {
    const char* directory;  // full path of group 0's; null for the others, see group_path
    int32_t parent;         // group that holds this directory; -1 for group 0
    int32_t parent_name;    // and which of its names this directory is
    dev_t device;           // the directory as the scan met it
    ino_t inode;
    dev_t copy_device;   // the directory that takes its copies, as it was first met
    ino_t copy_inode;    // 0: not met yet
    uint64_t bytes;      // what the scan counted for its names
    bool incomplete;     // its listing broke off, so nothing of it may be removed by a move
    bool behind_link;    // a link was followed to it, so nothing of it may be removed by a move
    uint16_t copy_mode;  // of a directory that was there to take its copies, before it was opened
    int32_t count;
    char** names;
    uint8_t* kinds;    // of each name
    uint64_t* prints;  // of each name, for a move: the file that was copied whole, see print_of
};

struct FileOp {
    pthread_t thread;
    std::atomic<int32_t> cancelled;
    std::atomic<int32_t> paused;
    int32_t kind;
    uint32_t flags;
    const char* destination;  // empty for a delete
    int32_t buffer_size;      // bytes
    char* buffer;
    int32_t prefix_length;  // bytes of a full source path that its destination leaves out
    int32_t group_count;
    Group** groups;
    int32_t total_files;  // entries
    uint64_t total_bytes;
    int32_t files_done;
    uint64_t bytes_done;
    timespec last_redraw;
    timespec eta_start;  // zero until the first estimate
    SlotDisplay* display;
    PathList* allocations;
    /// Told of each entry that has been moved or deleted, from the worker's thread; null: nobody.
    int (*on_item_done)(const char* directory, const char* name);
};

}  // namespace dorn
