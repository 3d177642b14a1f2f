#include "filelist/list_drop.h"

#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "filelist/file_drop.h"
#include "filelist/list_drag.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "ui/timer.h"

#include <QDropEvent>
#include <QScrollBar>

#include <cstring>

namespace dorn {

bool dnd_active = false;

namespace {

constexpr int64_t kFallsBack = 1000;   // milliseconds in which a drag of the list's own is none
constexpr int kScrollEdge = 16;        // pixels from the upper and lower edge where a drag scrolls
constexpr uint32_t kScrollPause = 80;  // milliseconds between two rows
constexpr int kBetween = 2;            // pixels of a row's edges that count as between the rows

std::string sShown;  // what fl_drop_shown tells
QPoint sPosition;    // where the drag was last, in the viewport
Timer sScrollTimer;

void show_target(const std::string& directory) {
    if (sShown == directory) return;
    sShown = directory;
    gPane.view->viewport()->update();
}

std::string directory_at(const QPoint& position) {
    const int row = gPane.view->row_at(position);
    if (row < 0) return fl_drop_directory(-1);
    const QRect area = gPane.view->visualRect(gPane.view->model()->index(row, 0));
    const int y = position.y();
    const bool between = y - area.top() < kBetween || area.bottom() - y < kBetween;
    return fl_drop_directory(between ? -1 : row);
}

bool leads_back(const DirEntry& entry) {
    const char* name = fname_encode(fname_decode(entry.name, nullptr));
    return name != nullptr && std::strcmp(name, entry.name) == 0;
}

int scroll_step() {
    if (sPosition.y() < kScrollEdge) return -1;
    return sPosition.y() >= gPane.view->viewport()->height() - kScrollEdge ? 1 : 0;
}

void scroll_on(Timer*, void*) {
    wtimer_detach(&sScrollTimer);
    if (gPane.view == nullptr || !dnd_active) return;
    QScrollBar* bar = gPane.view->verticalScrollBar();
    const int before = bar->value();
    bar->setValue(before + scroll_step());
    if (bar->value() == before) return;
    const std::string directory = directory_at(sPosition);
    show_target(file_drop_has_work(directory) ? directory : std::string());
    sScrollTimer.interval_ms = kScrollPause;
}

bool enter(const QDropEvent& event) {
    dnd_active = true;
    const bool taken = file_drop_action(event) != Qt::IgnoreAction;
    if (taken) gPane.view->setFocus(Qt::OtherFocusReason);
    return taken;
}

void leave() {
    dnd_active = false;
    show_target({});
}

void motion(QDropEvent* event) {
    if (!dnd_active) enter(*event);  // it came in while the window was blocked
    sPosition = event->position().toPoint();
    const std::string directory = directory_at(sPosition);
    file_drop_hover(event, directory);
    show_target(event->isAccepted() ? directory : std::string());
    const bool running = sScrollTimer.attached && sScrollTimer.interval_ms != 0;
    if (scroll_step() != 0 && !running)
        wtimer_attach(&sScrollTimer, kScrollPause, scroll_on, nullptr);
}

void drop(QDropEvent* event) {
    const std::string directory = directory_at(event->position().toPoint());
    const bool falls_back = dnd_clock() - dnd_start_timestamp < kFallsBack;
    file_drop(event, falls_back || directory != sShown ? std::string() : directory);
    leave();
}

}  // namespace

std::string fl_drop_directory(int row) {
    if (fl_is_reading() || gDir == nullptr || gDir->path.empty()) return {};
    if (row < 0) return gDir->path;
    if (row >= static_cast<int>(gPane.rows.size())) return {};
    const int32_t index = gPane.rows[static_cast<std::size_t>(row)].index;
    if (index < 0) {
        std::string parent = gDir->path;
        es_remove_subdirectory(&parent);
        return parent;
    }
    if (index >= gDir->count) return {};
    const DirEntry& entry = *gDir->entries[index];
    if (!is_directory(entry) || !leads_back(entry)) return {};
    return es_construct_fullpath(gDir->path.c_str(), entry.name);
}

const std::string& fl_drop_shown() {
    return sShown;
}

void fl_dnd_cb(QEvent* event) {
    switch (event->type()) {
        case QEvent::DragEnter:
            // Taken wherever it comes in: the toolkit tells no motion of a drag that is not.
            event->setAccepted(enter(*static_cast<QDropEvent*>(event)));
            break;
        case QEvent::DragMove:
            motion(static_cast<QDropEvent*>(event));
            break;
        case QEvent::DragLeave:
            leave();
            break;
        case QEvent::Drop:
            drop(static_cast<QDropEvent*>(event));
            break;
        default:
            break;
    }
}

}  // namespace dorn
