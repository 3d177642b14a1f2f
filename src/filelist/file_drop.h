// What the file list and the bookmarks tree share as places where lists of files are dropped: what
// a drop does, what it answers while it hovers, and its start. Event-loop thread only.
//
// A list of our own moves, with Ctrl it copies; another program's does what it proposes, a copy or
// a move. The operation starts by way of the event loop, after whoever offered the list has its
// answer, so that neither a question nor a hung clipboard keeps that program waiting.
#pragma once

#include "fileops/engine/transfer.h"

#include <Qt>

#include <string>

class QDropEvent;

namespace dorn {

/// What dropping what the event carries does: CopyAction, MoveAction, or IgnoreAction for what is
/// not taken: no list of files, a proposal to link, anything while a question waits for its answer.
Qt::DropAction file_drop_action(const QDropEvent& event);

/// Whether a drop of the list into `directory` has nothing to do: its files are there already, or
/// the directory is one of them.
bool file_drop_is_idle(const FileTransfer& transfer, const std::string& directory);

/// Whether a drop into `directory` can do anything: not for "", nor where the list that is dragged
/// from this window is idle.
bool file_drop_has_work(const std::string& directory);

/// Answers a motion: accepted with the action that the drop into `directory` would have, so that
/// the pointer shows it; ignored where it would do nothing.
void file_drop_hover(QDropEvent* event, const std::string& directory);

/// Answers a drop and starts its operations, one a source directory; none when `directory` is "".
/// What is no local file is left out and the user told.
void file_drop(QDropEvent* event, const std::string& directory);

}  // namespace dorn
