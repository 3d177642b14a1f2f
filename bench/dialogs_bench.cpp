// How fast the dialogs open and how a change of many entries keeps the window alive, measured in
// the real program; see bench/dialogs.
//
//     dialogs_bench DIRECTORY     shows the directory and works on all its entries
#include "app/run.h"
#include "dirmodel/dir_entry.h"
#include "filelist/selection.h"
#include "measure.h"
#include "menus/menus.h"
#include "ui/qt_widget.h"

#include <QCoreApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace dorn;
using namespace dorn::bench;

constexpr int kOpenings = 15;
constexpr double kOpenLimit = 50;       // ms
constexpr double kManyOpenLimit = 200;  // ms
constexpr double kFrozenLimit = 100;    // ms

QWidget* opened(const char* dialog) {
    QWidget* window = qt(w_instance(dialog));
    if (window != nullptr && window->isVisible()) return window;
    std::fprintf(stderr, "dialogs_bench: '%s' did not open\n", dialog);
    std::exit(1);
}

// From the command to the whole dialog painted; the window system's part is waited for, too.
double open_ms(const char* command, const char* dialog) {
    const double ms = time_ms([command, dialog] {
        menus_run(command);
        QWidget* window = opened(dialog);
        while (!window->windowHandle()->isExposed())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        window->repaint();
    });
    static_cast<QDialog*>(opened(dialog))->reject();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    return ms;
}

void measure_dialog(const char* what, const char* command, const char* dialog, double limit) {
    const double first = open_ms(command, dialog);
    std::vector<double> times;
    for (int i = 0; i < kOpenings; ++i)
        times.push_back(open_ms(command, dialog));
    print_figure(what, median(times), "ms", limit);
    print_figure("  the first time", first, "ms", limit);
}

void measure_many() {
    fl_select_all();
    const std::string what = "Properties of " + std::to_string(gDir->n_selected) + " entries";
    measure_dialog(what.c_str(), "fm_inspect", "property_dlg", kManyOpenLimit);
    menus_run("fm_inspect");
    // The longest time for which the event loop was not served while the change was made.
    QElapsedTimer since;
    qint64 longest = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout,
                     [&] { longest = std::max(longest, since.restart()); });
    auto* toggle = qt_instance<QAbstractButton>("pr_oexec");
    toggle->click();
    const bool wanted = toggle->isChecked();
    QElapsedTimer whole;
    qint64 applied = 0;
    QObject::connect(static_cast<QDialog*>(opened("property_dlg")), &QDialog::finished, [&] {
        applied = whole.elapsed();
        tick.stop();
    });
    tick.start(1);
    since.start();
    whole.start();
    qt_instance<QPushButton>("pr_done")->click();
    print_figure("  changing the mode of all", static_cast<double>(applied), "ms", 0);
    print_figure("  longest time without a sign of life", static_cast<double>(longest), "ms",
                 kFrozenLimit);
    struct stat status {};
    if (stat(gDir->entries[0]->name, &status) != 0 || ((status.st_mode & 01) != 0) != wanted) {
        std::fputs("dialogs_bench: the mode was not changed\n", stderr);
        std::exit(1);
    }
}

void measure_everything() {
    fl_unselect_all();
    measure_dialog("New File", "fm_new_file", "new_dlg", kOpenLimit);
    measure_dialog("Select Pattern", "em_select_pattern", "pattern_dlg", kOpenLimit);
    measure_dialog("Preferences", "em_preferences", "config_dlg", kOpenLimit);
    measure_dialog("Associations", "em_associations", "associate_dlg", kOpenLimit);
    measure_dialog("About", "help_about", "about_dlg", kOpenLimit);
    measure_dialog("Quick Reference", "help_quickref", "quickref", kOpenLimit);
    measure_dialog("Symbolic Link", "fm_symlink", "symlink_dlg", kOpenLimit);
    fl_select_index(0);
    measure_dialog("Open With", "fm_open_with", "open_with", kOpenLimit);
    measure_dialog("Properties of one entry", "fm_inspect", "property_dlg", kOpenLimit);
    measure_many();
    std::fflush(stdout);
    _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: dialogs_bench DIRECTORY\n", stderr);
        return 2;
    }
    return dorn_run(argc, argv, measure_everything);
}
