#include "filelist/file_drop.h"

#include "dirmodel/path_text.h"
#include "filelist/list_drag.h"
#include "fileops/engine/file_op.h"
#include "fileops/start.h"
#include "fileops/transfer_mime.h"
#include "ui/dialogs.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>

#include <algorithm>
#include <utility>

namespace dorn {

namespace {

bool is_own(const QMimeData* data) {
    return data->hasFormat(QLatin1String(kTypeTransfiles));
}

void tell_left_out(int foreign, bool all) {
    if (foreign > 0 && !all)
        wreport(w_instance("base"), "Drop",
                "Dropped items that are not files of this computer were left out: %d.", foreign);
    else if (all)
        wreport(w_instance("base"), "Drop",
                "The dropped items are not files of this computer. Nothing was done.");
}

void start_operations(int32_t kind, TransferLists* dropped, const std::string& directory) {
    const bool no_files = dropped->lists.empty();
    std::erase_if(dropped->lists,
                  [&](const auto& list) { return file_drop_is_idle(list, directory); });
    file_ops(kind, std::move(dropped->lists), directory.c_str());
    tell_left_out(dropped->foreign, no_files);
}

}  // namespace

Qt::DropAction file_drop_action(const QDropEvent& event) {
    const QMimeData* data = event.mimeData();
    const Qt::DropAction proposed = event.proposedAction();
    if (data == nullptr || proposed == Qt::IgnoreAction || !transfer_mime_offered(data) ||
        QApplication::activeModalWidget() != nullptr)
        return Qt::IgnoreAction;
    if (is_own(data))
        return event.modifiers().testFlag(Qt::ControlModifier) ? Qt::CopyAction : Qt::MoveAction;
    return proposed == Qt::LinkAction ? Qt::IgnoreAction : proposed;
}

bool file_drop_is_idle(const FileTransfer& transfer, const std::string& directory) {
    if (es_strip_pathname(transfer.directory) == directory) return true;
    return std::any_of(transfer.names.begin(), transfer.names.end(), [&](const std::string& name) {
        return !name.empty() &&
               es_construct_fullpath(transfer.directory.c_str(), name.c_str()) == directory;
    });
}

bool file_drop_has_work(const std::string& directory) {
    const FileTransfer* dragged = fl_dragged();
    return !directory.empty() && (dragged == nullptr || !file_drop_is_idle(*dragged, directory));
}

void file_drop_hover(QDropEvent* event, const std::string& directory) {
    const Qt::DropAction action = file_drop_action(*event);
    if (action == Qt::IgnoreAction || !file_drop_has_work(directory)) {
        event->ignore();
        return;
    }
    event->setDropAction(action);
    event->accept();
}

void file_drop(QDropEvent* event, const std::string& directory) {
    const Qt::DropAction action = file_drop_action(*event);
    if (action == Qt::IgnoreAction || directory.empty()) {
        event->ignore();
        return;
    }
    auto dropped = std::make_shared<TransferLists>(transfer_from_mime(event->mimeData()));
    // Our worker removes what it has moved. A program that is told of a move may delete its files
    // at once, before they have been copied.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    const int32_t kind = action == Qt::MoveAction ? kFopMove : kFopCopy;
    QMetaObject::invokeMethod(
        qApp, [=] { start_operations(kind, dropped.get(), directory); }, Qt::QueuedConnection);
}

}  // namespace dorn
