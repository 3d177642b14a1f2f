// How fast menus open, measured in the real program; see bench/menus.
//
//     menus_bench ROOT     makes its directories below ROOT
#include "app/run.h"
#include "destmenus/dest_item.h"
#include "dirmodel/dir_entry.h"
#include "filelist/filelist.h"
#include "filelist/selection.h"
#include "measure.h"
#include "menus/menus.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMenu>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace dorn;
using namespace dorn::bench;

constexpr double kOpenLimitMs = 50;
constexpr int kSelected = 100000;
constexpr int kRounds = 5;
std::string sRoot;

// The directory of `count` entries that `make` makes, made when it is not there.
std::string make_entries(const char* name, int count, void (*make)(const std::string& path)) {
    const std::string path = sRoot + "/" + name + "-" + std::to_string(count);
    const std::string complete = path + ".complete";
    if (access(complete.c_str(), F_OK) == 0) return path;
    mkdir(path.c_str(), 0755);
    for (int i = 0; i < count; ++i)
        make(path + "/entry-" + std::to_string(i));
    std::ofstream mark(complete);
    return path;
}

// Milliseconds until the menu that `open` opens is painted.
double opening_ms(const std::function<void()>& open) {
    const double ms = time_ms([&] {
        open();
        QApplication::processEvents();
        if (QWidget* popup = QApplication::activePopupWidget()) popup->repaint();
    });
    if (QApplication::activePopupWidget() == nullptr) {
        std::fputs("menus_bench: no menu opened\n", stderr);
        std::exit(1);
    }
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    QApplication::processEvents();
    return ms;
}

void measure_opening(const std::string& what, const std::function<void()>& open) {
    std::vector<double> times;
    for (int i = 0; i < kRounds; ++i)
        times.push_back(opening_ms(open));
    print_figure(what, median(times), "ms", kOpenLimitMs);
}

void measure_menus(const std::string& selection) {
    for (const char* name : {"file_menu", "edit_menu", "go_menu", "hotlist_menu", "help_menu"}) {
        auto* menu = qt(w_instance("base"))->findChild<QMenu*>(QLatin1String(name));
        measure_opening(std::string(name) + selection, [menu] { menu->popup(QPoint(10, 10)); });
    }
    measure_opening("file list's context menu" + selection, [] { menus_open_list_menu(10, 10); });
}

struct Filled {
    double first_ms;
    double whole_ms;
    double checked_ms;
    double turn_ms;  // the longest time that the event loop was away
};

Filled fill_once(const std::string& directory, int count) {
    DestMenu menu(qt(w_instance("base")), directory, 0, nullptr);
    Filled filled{-1, -1, -1, 0};
    QElapsedTimer since;
    since.start();
    menu.popup(QPoint(10, 10));
    while (filled.checked_ms < 0) {
        QElapsedTimer turn;
        turn.start();
        QApplication::processEvents();
        const double now = static_cast<double>(since.nsecsElapsed()) / 1e6;
        filled.turn_ms = std::max(filled.turn_ms, static_cast<double>(turn.nsecsElapsed()) / 1e6);
        if (filled.first_ms < 0 && !menu.entries().empty()) filled.first_ms = now;
        if (filled.whole_ms < 0 && menu.entries().size() == static_cast<std::size_t>(count))
            filled.whole_ms = now;
        if (menu.finished()) filled.checked_ms = now;
        usleep(200);  // the other threads have the machine, as in the program's idle loop
    }
    menu.close();
    return filled;
}

void measure_filling(int count) {
    const std::string directory = make_entries(
        "directories", count, [](const std::string& path) { mkdir(path.c_str(), 0755); });
    const std::string find = "exec find '" + directory + "' -maxdepth 1 -type d >/dev/null";
    command_ms(find);
    std::vector<double> find_times;
    std::vector<double> first;
    std::vector<double> whole;
    std::vector<double> checked;
    std::vector<double> turns;
    for (int i = 0; i < kRounds; ++i) {
        find_times.push_back(command_ms(find));
        const Filled filled = fill_once(directory, count);
        first.push_back(filled.first_ms);
        whole.push_back(filled.whole_ms);
        checked.push_back(filled.checked_ms);
        turns.push_back(filled.turn_ms);
    }
    const bool limited = count == 10000;
    std::printf("submenu of %d directories\n", count);
    print_figure("  first names shown", median(first), "ms", limited ? 100 : 0);
    print_ratio("  complete", median(whole), "find", median(find_times), 0);
    print_figure("  complete", median(whole), "ms", limited ? 1000 : 0);
    print_figure("  all looked at for directories", median(checked), "ms", 0);
    print_figure("  longest turn of the event loop", median(turns), "ms", kOpenLimitMs);
}

void measure_everything() {
    std::signal(SIGCHLD, SIG_DFL);   // dorn ignores it, and then no child's status can be had
    std::signal(SIGWINCH, SIG_IGN);  // other instances may ask for a re-read
    measure_menus("");
    const std::string files = make_entries(
        "files", kSelected, [](const std::string& path) { std::ofstream(path + ".txt"); });
    fl_setpath(files.c_str());
    fl_select_all();
    measure_menus(", 100000 selected");
    if (gDir->n_selected != kSelected) {
        std::fprintf(stderr, "menus_bench: %d entries selected\n", gDir->n_selected);
        std::exit(1);
    }
    measure_filling(10000);
    measure_filling(50000);
    std::fflush(stdout);
    _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: menus_bench ROOT\n", stderr);
        return 2;
    }
    sRoot = argv[1];
    return dorn_run(argc, argv, measure_everything);
}
