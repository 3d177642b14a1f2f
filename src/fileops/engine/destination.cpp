// Where an operation's copies go, settled before anything is changed.
#include "fileops/engine/prompts.h"
#include "fileops/engine/worker.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace dorn {

namespace {

constexpr const char* kTitle = "File Scan";

/// The destination's path in two: the directory that holds it, open, and its name in there.
struct Place {
    Fd parent;
    std::string name;
    bool exists = false;
    struct stat status {};  // links followed

    bool is_directory() const {
        return exists && S_ISDIR(status.st_mode);
    }
};

Place place_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    Place place;
    place.parent = open_directory(slash == std::string::npos ? "." : path.substr(0, slash + 1));
    place.name = path.substr(slash == std::string::npos ? 0 : slash + 1);
    if (path == "/") place.name = ".";
    if (!place.parent) {  // calls with the whole path tell why, each in its place
        place.parent = Fd(AT_FDCWD);
        place.name = path;
    }
    place.exists = fstatat(place.parent.get(), place.name.c_str(), &place.status, 0) == 0;
    return place;
}

/// Whether the entry is the destination or holds it, or its copy would be the entry itself.
bool is_into_itself(Worker& w, int source_dir, int copy_dir, int32_t index) {
    constexpr int kUnfollowed = AT_SYMLINK_NOFOLLOW;
    struct stat source;
    const char* name = w.op->groups[0]->names[index];
    if (name[0] == '\0' || fstatat(source_dir, name, &source, kUnfollowed) != 0) return false;
    if (S_ISDIR(source.st_mode) && is_in_chain(w.destination_chain, source)) return true;
    struct stat copy;
    const char* copy_name = w.copies.name_of(0, index);
    if (fstatat(copy_dir, copy_name, &copy, kUnfollowed) != 0) return false;
    if (is_same_file(source, copy)) return true;
    struct stat end;
    const bool is_link = S_ISLNK(source.st_mode) && fstatat(source_dir, name, &end, 0) == 0;
    if (is_link && is_same_file(end, copy)) return true;
    if (S_ISLNK(copy.st_mode) && fstatat(copy_dir, copy_name, &copy, 0) == 0 &&
        is_same_file(source, copy))
        return true;
    return (w.op->flags & kFopLinksAsFiles) != 0 && is_link && is_same_file(end, copy);
}

int check_into_itself(Worker& w, const Place& place) {
    const int source_dir = w.sources.of_group(0);
    if (place.parent.get() == AT_FDCWD) return 0;  // there is nowhere to copy to
    const Fd inside = open_at(place.parent.get(), place.is_directory() ? place.name.c_str() : ".",
                              O_PATH | O_DIRECTORY | O_CLOEXEC);
    w.destination_chain = chain_of(inside.get());
    for (int32_t i = 0; i < w.op->groups[0]->count; ++i) {
        if (is_into_itself(w, source_dir, inside.get(), i)) return refuse_into_itself(w);
    }
    return 0;
}

int report_place(Worker& w, const char* title, const char* text) {
    const std::string message = filled(text, {shown(w.op->destination)});
    fop_errinfo(w.op, title, "%s", message.c_str());
    return -1;
}

/// One entry: into the destination, or to the very path of it.
int check_one(Worker& w, Place& place) {
    FileOp* op = w.op;
    struct stat source;
    std::string path;
    _build_path(path, op->groups[0]->directory, op->groups[0]->names[0]);
    if (fstatat(w.sources.of_group(0), op->groups[0]->names[0], &source, AT_SYMLINK_NOFOLLOW) !=
        0) {
        fop_errinfo(op, kTitle, "Unable to get stats for '%s'", path.c_str());
        return -1;
    }
    if (place.is_directory()) return 0;
    if (place.exists && (place.status.st_mode & S_IFMT) != (source.st_mode & S_IFMT))
        return report_place(w, kTitle, "Source and destination file types mismatch.");
    op->prefix_length = static_cast<int32_t>(path.size());
    if (!place.exists && S_ISDIR(source.st_mode)) op->flags |= kFopMakeDestination;
    return 0;
}

/// Asks whether the destination is to be made. 0 when it is.
int ask_to_make(Worker& w) {
    const int button = fop_alert(w.op, "Make Directory", "&Yes|&Abort",
                                 "The '%s' directory doesn't exist\n"
                                 "Do you want to create this directory ?",
                                 shown(w.op->destination).c_str());
    return button == 1 ? 0 : -1;
}

int check_several(Worker& w, const Place& place) {
    if (!place.exists) return ask_to_make(w);
    if (place.is_directory()) return 0;
    return report_place(w, kTitle, "Can't copy/move multiple files into \n'%s'\n");
}

/// Makes the destination if it is to take several entries, and opens what takes the copies.
int open_destination(Worker& w, Place& place, bool is_path_of_one) {
    if (is_path_of_one) {
        w.copies.set_root(std::move(place.parent), place.name);
        return 0;
    }
    if (!place.exists && mkdirat(place.parent.get(), place.name.c_str(), 0777) != 0)
        return report_place(w, "Make Directory", "Unable to create '%s' directory\n");
    w.copies.set_root(
        open_at(place.parent.get(), place.name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return 0;
}

}  // namespace

int fop_check_dst(Worker& w) {
    FileOp* op = w.op;
    if (op->kind == kFopDelete) return 0;
    std::string path = op->destination;
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    Place place = place_of(path);
    const bool is_one = op->groups[0]->count == 1;
    if ((is_one ? check_one(w, place) : check_several(w, place)) != 0) return -1;
    const bool is_path_of_one = is_one && !place.is_directory();
    if (is_path_of_one) w.copies.set_root(Fd(), place.name);
    if (check_into_itself(w, place) != 0) return -1;
    return open_destination(w, place, is_path_of_one);
}

}  // namespace dorn
