#include "destmenus/dest_commands.h"

#include "destmenus/dest_dialogs.h"
#include "dialogs/typed_name.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "filelist/transfer.h"
#include "fileops/start.h"

namespace dorn {

namespace {

struct Verb {
    const char* verb;
    const char* title;
    int32_t kind;
};
constexpr Verb kCopyTo{"copy", "Copy to", kFopCopy};
constexpr Verb kMoveTo{"move", "Move to", kFopMove};

std::string selection_text(const FileTransfer& transfer) {
    if (transfer.names.size() == 1) return fname_decode(transfer.names.front().c_str(), nullptr);
    return std::to_string(transfer.names.size()) + " files";
}

// The directory that was typed, absolute, in bytes; nothing when there is none to go to.
std::optional<std::string> ask_for_destination(const Verb& verb, const FileTransfer& transfer) {
    const std::optional<Destination> typed = input_dest(verb.title);
    if (!typed) return std::nullopt;
    if (!typed->path) {
        report_untranslatable(typed->text);
        return std::nullopt;
    }
    if (typed->path->starts_with('/')) return typed->path;
    return es_construct_fullpath(transfer.directory.c_str(), typed->path->c_str());
}

void to_destination(const Verb& verb, const char* path) {
    std::unique_ptr<FileTransfer> transfer = fl_pack_transf();
    if (!transfer) return;
    std::optional<std::string> destination;
    if (path == nullptr)
        destination = ask_for_destination(verb, *transfer);
    else if (confirm(verb.verb, selection_text(*transfer).c_str(), path) == 1)
        destination = path;
    if (destination)
        _file_op(verb.kind, std::move(transfer), destination->c_str());
    else
        fl_free_transf(std::move(transfer));
}

}  // namespace

void x_copy_to_dest(const char* path) {
    to_destination(kCopyTo, path);
}

void x_move_to_dest(const char* path) {
    to_destination(kMoveTo, path);
}

void re_route(DestAction action) {
    dtm_run(action, std::nullopt);
}

}  // namespace dorn
