// The shown path and filter, re-reading, the pane's timer and the status line.
#include "filelist/filelist.h"

#include "config/config.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/entry_text.h"
#include "dirmodel/name_translation.h"
#include "filelist/columns.h"
#include "filelist/list_model.h"
#include "filelist/list_view.h"
#include "filelist/navigation.h"
#include "filelist/pane.h"
#include "filelist/selection.h"
#include "filelist/typeahead.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QTimer>

#include <cstring>

namespace dorn {

namespace {

Timer ftimer;
bool sReading = false;
bool sReadAgain = false;  // a refresh was asked for that could not be done yet
bool sQuiet = false;      // the one under way was asked for by other processes alone
bool sQuietAgain = true;  // and so was what could not be done yet
int sHolds = 0;           // that keep refreshes waiting
std::string last_path;    // the directory that the list showed last

void timer_expired(Timer*, void*) {
    fl_timer_cb();
}

// The name to make current again after the read: that of the first selected entry, when the same
// directory is read again.
std::string name_to_return_to(bool same_directory) {
    if (!same_directory || gDir->n_selected == 0) return {};
    for (int32_t i = 0; i < gDir->count; ++i) {
        if ((gDir->entries[i]->flags & kEntrySelected) != 0) return gDir->entries[i]->name;
    }
    return {};
}

void place_after_read(const std::string& name, bool same_directory) {
    const bool scroll = !same_directory;
    const int32_t index = name.empty() ? -1 : fl_find_name(name.c_str());
    fl_place_current(index, scroll);
}

// Nothing to tell, or why the list is empty or short.
int show_idle_status() {
    Widget* status1 = w_instance("status1");
    if (gDir->read_error == 0 || gDir->path.empty()) return wprintf(status1, "%s", "");
    return wprintf(status1, "Cannot access directory '%s': %s",
                   fname_decode(gDir->path.c_str(), nullptr), std::strerror(gDir->read_error));
}

int refresh_once() {
    const bool same_directory = !gDir->path.empty() && last_path == gDir->path;
    const std::string name = name_to_return_to(same_directory);
    last_path = gDir->path;
    if (gPane.view != nullptr) gPane.view->set_left_row(gPane.view->current_row());
    const ScopedBlock block(w_instance("base"));
    fl_timer_disable();
    dir_read(gDir, fl_sort_function(), fl_sort_order());
    gDir->n_selected = 0;
    gDir->n_selected_dirs = 0;
    if (!same_directory && gPane.view != nullptr) gPane.view->set_first_visible_row(0);
    fl_update();
    place_after_read(name, same_directory);
    return show_idle_status();
}

// By way of the event loop, so that a storm of requests never keeps the user from it.
void refresh_later() {
    if (gPane.view == nullptr) return;
    QTimer::singleShot(0, gPane.view, fl_refresh_if_asked);
}

// Does it now, for all who have asked, or notes that it is to be done.
int refresh(bool quiet) {
    quiet = quiet && sQuietAgain;
    sReadAgain = sReading || sHolds > 0;
    sQuietAgain = !sReadAgain || quiet;
    if (sReadAgain) return 0;
    fl_cache();
    sReading = true;
    sQuiet = quiet;
    const int result = refresh_once();
    sReading = false;
    sQuiet = false;
    if (sReadAgain) refresh_later();
    return result;
}

}  // namespace

void fl_setup() {
    fl_cache();
    gPane.view = qt_instance<ListView>("filelist");
    if (gPane.view == nullptr) return;
    gPane.model = new ListModel(gPane.view);
    gPane.view->setModel(gPane.model);
    gPane.view->setFont(ui_font(gConfig->list_font));
    gPane.view->attach_header();
    QObject::connect(gPane.view, &QObject::destroyed, [] { gPane = Pane{}; });
}

bool fl_is_reading() {
    return sReading;
}

int fl_refresh() {
    return refresh(false);
}

int fl_refresh_quietly() {
    return refresh(true);
}

bool fl_is_refreshed_quietly() {
    return sQuiet;
}

void fl_hold_refresh(bool on) {
    sHolds += on ? 1 : -1;
    if (sHolds == 0 && sReadAgain) refresh_later();
}

void fl_refresh_if_asked() {
    if (sReadAgain) refresh(true);
}

int fl_setpath(const char* path) {
    if (sReading || sHolds > 0) return -1;  // the entries must stay those of the path
    std::optional<std::string> checked = x_check_path(path);
    if (!checked || *checked == fl_cache().path) return -1;
    gDir->path = std::move(*checked);
    fl_refresh();
    return 0;
}

int fl_setspec(const char* pattern) {
    const char* wanted = pattern == nullptr || *pattern == '\0' ? "*" : pattern;
    if (sReading || fl_cache().filespec == wanted) return -1;
    gDir->filespec = wanted;
    if (!gDir->path.empty()) fl_refresh();
    return 0;
}

void fl_timer_set() {
    const int32_t timeout = gConfig->keyfind_timeout;
    wtimer_attach(&ftimer, timeout > 0 ? static_cast<uint32_t>(timeout) : 0, timer_expired,
                  nullptr);
}

void fl_timer_disable() {
    if (ftimer.attached) {
        wtimer_detach(&ftimer);
        ftimer.arm(0);
    }
    interp_reset();
}

int fl_timer_cb() {
    fl_timer_disable();
    status_bar_update();
    return 0;
}

int status_bar_update() {
    if (fl_cache().n_selected > 0) {
        int64_t sum = 0;
        for (int32_t i = 0; i < gDir->count; ++i) {
            if ((gDir->entries[i]->flags & kEntrySelected) != 0) sum += gDir->entries[i]->size;
        }
        wprintf(w_instance("status1"), "%d selected item%s, %s", gDir->n_selected,
                gDir->n_selected > 1 ? "s" : "", ll2str(sum));
        return 0;
    }
    show_idle_status();
    wprintf(w_instance("status2"), "%d item%s, %s", gDir->count, gDir->count >= 2 ? "s" : "",
            ll2str(gDir->total_size));
    return 0;
}

}  // namespace dorn
