// Cut, Copy, Paste and Delete of the Edit menu.
#include "config/config.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "filelist/transfer.h"
#include "fileops/engine/cut_list.h"
#include "fileops/engine/file_clipboard.h"
#include "fileops/engine/file_op.h"
#include "fileops/start.h"
#include "menus/commands.h"
#include "menus/menus.h"
#include "ui/dialogs.h"

#include <QGuiApplication>

#include <string>

namespace dorn {

namespace {

constexpr int kDelete = 1;  // button

int32_t must_be_moved = 0;   // set by Cut for the copy that it makes
std::string sPasteWaitsFor;  // the directory of a Paste that came before the clipboard was read

bool is_anything_selected() {
    return gDir != nullptr && gDir->n_selected > 0;
}

void report_left_out(const TransferLists& lists) {
    std::string text =
        std::to_string(lists.foreign) +
        (lists.foreign == 1 ? " entry of the clipboard is" : " entries of the clipboard are") +
        " no local file and can't be pasted:\n";
    for (const std::string& entry : lists.left_out)
        text += entry + "\n";
    if (static_cast<std::size_t>(lists.foreign) > lists.left_out.size()) text += "...\n";
    ui_alert(w_instance("base"), "Paste", text.c_str(), "@#&Continue");
}

bool needs_question(const FileTransfer& record) {
    const bool several = (gConfig->flags & kDeleteManyPrompt) != 0;
    if (record.names.size() > 1) return several;
    return (gConfig->flags & kDeleteOnePrompt) != 0 || (one_dir_packed && several);
}

bool user_agrees(const FileTransfer& record) {
    const std::string message =
        record.names.size() == 1
            ? std::string("Do you wish to delete '") +
                  fname_decode(record.names[0].c_str(), nullptr) + "'?\n"
            : "Do you wish to delete these " + std::to_string(record.names.size()) + " files?\n";
    return ui_alert(w_instance("base"), "Delete", message.c_str(), "@&Delete|#&Cancel") == kDelete;
}

}  // namespace

int em_copy() {
    if (!is_anything_selected()) return 0;
    const bool cut = must_be_moved != 0;
    const bool marks_go = file_any_cut();
    if (std::unique_ptr<FileTransfer> record = fl_pack_transf())
        file_clipboard_put(std::move(*record), cut);
    if (cut || marks_go) fl_refresh();  // which clears the selection
    return 0;
}

int em_cut() {
    must_be_moved = 1;
    em_copy();
    must_be_moved = 0;
    return 0;
}

int em_paste() {
    if (gDir == nullptr || gDir->path.empty()) return 0;
    if (file_clipboard_is_being_read()) {
        sPasteWaitsFor = gDir->path;
        return 0;
    }
    sPasteWaitsFor.clear();
    TransferLists lists = file_clipboard_lists();
    const std::string destination = gDir->path;
    std::erase_if(lists.lists, [&](const auto& list) { return list.directory == destination; });
    file_ops(lists.cut ? kFopMove : kFopCopy, std::move(lists.lists), destination.c_str());
    if (lists.foreign > 0) report_left_out(lists);
    return 0;
}

void em_clipboard_changed() {
    if (sPasteWaitsFor.empty() || file_clipboard_is_being_read()) return;
    // Who works in another program meanwhile may have put something else there.
    const bool is_there = gDir != nullptr && gDir->path == sPasteWaitsFor &&
                          QGuiApplication::applicationState() == Qt::ApplicationActive;
    sPasteWaitsFor.clear();
    if (is_there && menus_run("em_paste") == -1) ui_bell();
}

int em_check_clipboard_for_type(int, const char* type) {
    return file_clipboard_has(type) ? 1 : 0;
}

int em_delete() {
    if (!is_anything_selected()) return 0;
    std::unique_ptr<FileTransfer> record = fl_pack_transf();
    if (record == nullptr) return -1;
    if (needs_question(*record) && !user_agrees(*record)) {
        fl_free_transf(std::move(record));
        return 0;
    }
    _file_op(kFopDelete, std::move(record), "");
    return 0;
}

}  // namespace dorn
