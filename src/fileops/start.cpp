#include "fileops/start.h"

#include "config/config.h"
#include "fileops/engine/cut_list.h"
#include "fileops/engine/fop.h"
#include "fileops/engine/prompts.h"
#include "fileops/long_filename.h"
#include "fileops/slots.h"
#include "ui/dialogs.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace dorn {

int _file_op(int32_t kind, std::unique_ptr<FileTransfer> transfer, const char* destination) {
    return fop_start_cmd(kind, transfer->directory.c_str(), transfer->names, destination);
}

void file_ops(int32_t kind, std::vector<FileTransfer> lists, const char* destination) {
    int failed = 0;
    for (FileTransfer& list : lists) {
        if (_file_op(kind, std::make_unique<FileTransfer>(std::move(list)), destination) != 0)
            ++failed;
    }
    if (failed == 0 || lists.size() == 1) return;
    wreport(w_instance("base"), "File Operation",
            "The files of %d more directories were left alone: as many operations as can run at "
            "once are running.",
            failed);
}

int fop_start_cmd(int32_t kind, const char* directory, const std::vector<std::string>& names,
                  const char* destination) {
    fop_set_ended_cb(slot_mark_removed);
    fop_set_long_name_cb(long_filename_ask);
    const SlotDisplay* display = slot_add();
    if (display == nullptr) return -1;
    file_get_cut_files();
    const auto count = static_cast<int32_t>(names.size());
    const uint32_t flags = fop_request_flags(kind, count, one_dir_packed, gConfig->flags);
    FileOp* op = fop(kind, directory, names, destination, flags, display,
                     kind == kFopCopy ? nullptr : file_uncut);
    const int error = errno;
    slot_set_op(display->panel, op);
    if (op != nullptr) return 0;
    wprintf(display->from_widget, "%s", std::strerror(error));
    errno = error;
    std::perror("failed to start operation!\n");
    return -1;
}

}  // namespace dorn
