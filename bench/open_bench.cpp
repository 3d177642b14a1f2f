// How fast directories open, measured in the real program: it runs as dorn does, and the
// measurements begin when its window is painted.
//
//     open_bench BARE_WINDOW ROOT COUNT...   measures, with directories made below ROOT
//     open_bench --painted DIRECTORY         shows it, prints "painted BYTES" and ends
#include "app/run.h"
#include "dirmodel/dir_entry.h"
#include "filelist/filelist.h"
#include "list_bench.h"
#include "measure.h"
#include "ui/qt_widget.h"

#include <QCoreApplication>
#include <QTimer>
#include <QTreeView>
#include <QWindow>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace dorn;
using namespace dorn::bench;

struct Arguments {
    std::string program;
    std::string bare_window;
    std::string root;
    std::vector<int> counts;
};
Arguments sArguments;

struct Opened {
    double list_ms;  // the program's own list
    double ls_ms;    // ls -l of the same directory
};

std::string quoted(const std::string& path) {
    return "'" + path + "'";
}

// The bare window's own rule: exposed by the window system, then painted whole.
void tell_painted() {
    QWidget* window = qt(w_instance("base"));
    if (!window->windowHandle()->isExposed()) {
        QTimer::singleShot(0, window, tell_painted);
        return;
    }
    window->repaint();
    std::printf("painted %lld\n", static_cast<long long>(resident_bytes()));
    std::fflush(stdout);
    _exit(0);
}

double open_once(const std::string& empty, const std::string& directory, int count) {
    fl_setpath(empty.c_str());
    const double ms = time_ms([&] { fl_setpath(directory.c_str()); });
    const auto* list = qt_instance<QTreeView>("filelist");
    if (gDir->count != count || list->model()->rowCount() != count + 1) {
        std::fprintf(stderr, "open_bench: %d rows instead of %d\n", list->model()->rowCount(),
                     count + 1);
        std::exit(1);
    }
    return ms;
}

Opened measure_opening(const std::string& empty, int count) {
    const std::string directory = make_tree(sArguments.root, count);
    const std::string ls = "exec ls -l " + quoted(directory) + " >/dev/null";
    const std::string find =
        "exec find " + quoted(directory) + " -maxdepth 1 -printf '%s %t %u %g %M %p\\n' >/dev/null";
    command_ms(ls);
    open_once(empty, directory, count);
    std::vector<double> list_times;
    std::vector<double> ls_times;
    std::vector<double> find_times;
    std::vector<double> whole_times;
    int64_t resident = 0;
    for (int i = 0; i < 5; ++i) {
        ls_times.push_back(command_ms(ls));
        list_times.push_back(open_once(empty, directory, count));
        find_times.push_back(command_ms(find));
        const Painted painted = run_until_painted({sArguments.program, "--painted", directory});
        whole_times.push_back(painted.ms);
        resident = painted.resident;
    }
    const double own = median(list_times);
    const double other = median(ls_times);
    const bool many = count >= 100000;
    std::printf("%d entries\n", count);
    print_ratio("  fl_setpath to rows in the list", own, "ls -l", other, many ? 0.5 : 0);
    print_ratio("", own, "find -printf", median(find_times), 0);
    print_ratio("  process start to painted and idle", median(whole_times), "ls -l", other,
                count == 100000 ? 0.7 : 0);
    const int64_t bare = run_until_painted({sArguments.program, "--painted", empty}).resident;
    print_figure("  memory an entry above the empty window", double(resident - bare) / count,
                 "bytes", many ? 450 : 0);
    return {own, other};
}

void measure_start_up() {
    const std::string directory = make_tree(sArguments.root, 20);
    std::vector<double> own;
    std::vector<double> bare;
    for (int i = 0; i < 11; ++i) {
        bare.push_back(run_until_painted({sArguments.bare_window}).ms);
        own.push_back(run_until_painted({sArguments.program, "--painted", directory}).ms);
    }
    print_ratio("start-up, 20 entries", median(own), "bare window", median(bare), 1.5);
}

void measure_everything() {
    std::signal(SIGCHLD, SIG_DFL);  // dorn ignores it, and then no child's status can be had
    const std::string empty = make_tree(sArguments.root, 0);
    measure_start_up();
    double at_100000 = 0;
    for (int count : sArguments.counts) {
        const Opened opened = measure_opening(empty, count);
        if (count == 100000) at_100000 = opened.list_ms;
        if (count == 1000000 && at_100000 > 0)
            print_ratio("  growth from 100000", opened.list_ms, "100000", at_100000, 11);
    }
    for (int count : sArguments.counts) {
        if (count < 100000) continue;
        measure_list(make_tree(sArguments.root, count), count, count == 100000 ? 100 : 0);
        if (count == 100000) measure_owner_sort();
    }
    std::fflush(stdout);
    _exit(0);
}

int run_dorn(const std::string& directory, void (*ready)()) {
    std::string program = "dorn";
    std::string start = directory;
    char* arguments[] = {program.data(), start.data(), nullptr};
    return dorn_run(2, arguments, ready);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--painted") == 0) return run_dorn(argv[2], tell_painted);
    if (argc < 4) {
        std::fputs("usage: open_bench BARE_WINDOW ROOT COUNT...\n", stderr);
        return 2;
    }
    sArguments = {argv[0], argv[1], argv[2], {}};
    for (int i = 3; i < argc; ++i)
        sArguments.counts.push_back(std::atoi(argv[i]));
    return run_dorn(make_tree(sArguments.root, 0), measure_everything);
}
