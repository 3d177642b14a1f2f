// One entry on its way from its directory to its copy's.
#pragma once

#include "fileops/engine/worker.h"

namespace dorn {

struct EntryCopy {
    Worker& w;
    int32_t group;
    int32_t index;         // kFinishDirectory: the group's directory itself
    int from;              // directory that holds the entry
    const char* name;      // and its name in there
    struct stat source;    // the entry, or what it points to when links are followed
    uint64_t print = 0;    // of the entry itself, for a move that is to remove it
    int to;                // directory that takes the copy
    const char* to_name;   // and its name in there
    std::string new_name;  // the one that the user gave instead, relative to the working directory

    // What has the copy's name, as look_at_target finds it.
    bool looked = false;
    bool exists = false;    // links followed
    struct stat target {};  // links followed
    struct stat target_self {};
    bool made = false;  // this operation made the copy's file
};

/// Reads what has the copy's name.
void look_at_target(EntryCopy& c);

/// Whether the copy's name leads to the entry itself.
bool is_own_target(const EntryCopy& c);

/// The paths of the entry and of its copy.
std::string source_path(const EntryCopy& c);
std::string copy_path(const EntryCopy& c);

/// Shows the entry in the slot, when that is due; `copied` bytes of it are done.
void show_progress(const EntryCopy& c, uint64_t copied);

/// Has the slot hold the entry's paths, for the question that comes.
void show_entry(const EntryCopy& c);

/// ask_skip about the entry or its copy, which the slot shows then.
int ask_about(const EntryCopy& c, std::string_view text, const std::string& path, int error = 0);

/// Copies a regular file. As fop_copy_file.
int copy_regular(EntryCopy& c);

/// Gives the copy the owner and the times of the entry, and a file made here its set-id bits once
/// the owner is right. kEntryDone or kStopAll.
int finish_open(const EntryCopy& c, int fd);
int finish_at(const EntryCopy& c, int flags);

/// Gives the copy of the group's directory its mode, times and owner. As fop_copy_file.
int finish_directory(Worker& w, int32_t group);

}  // namespace dorn
