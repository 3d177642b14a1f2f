// How fast copies, moves and deletes are, measured in the real program with its window, beside the
// same worker without a screen (operations_headless) and the commands that a user would type. The
// rivals take turns, each on a tree of its own, with the disk's queue empty at the start.
//
//     operations_bench HEADLESS ROOT OTHER ROUNDS BIG_MIB
#include "app/run.h"
#include "fileops/engine/fop.h"
#include "fileops/slots.h"
#include "fileops/start.h"
#include "measure.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace dorn;
using namespace dorn::bench;
using Clock = std::chrono::steady_clock;

constexpr const char* kRivals[] = {"command", "headless", "window"};
constexpr std::size_t kRivalCount = std::size(kRivals);

struct Arguments {
    std::string headless, root, other;
    int rounds, big_mib;
};
Arguments sArguments;

// What is copied about: a name below the root.
struct Workload {
    const char* what;
    std::string name;
    int entries;       // below it, with it
    double name_size;  // bytes of a name, NUL included
};

using Times = std::map<std::string, std::array<std::vector<double>, kRivalCount>>;

std::atomic<int> sEnded{0};
std::atomic<Clock::time_point> sEnd;

void note_end(Widget* panel) {
    sEnd = Clock::now();
    ++sEnded;
    slot_mark_removed(panel);
}

[[noreturn]] void give_up(const std::string& what) {
    std::fprintf(stderr, "operations_bench: %s\n", what.c_str());
    std::exit(1);
}

void start(int32_t kind, const std::string& directory, const std::string& name,
           const std::string& destination) {
    if (fop_start_cmd(kind, directory.c_str(), {name}, destination.c_str()) != 0)
        give_up("no operation on " + directory + "/" + name);
    fop_set_ended_cb(note_end);
}

void wait_for_ends(int count) {
    while (sEnded < count || n_slots > 0)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

double window_ms(int32_t kind, const std::string& directory, const std::string& name,
                 const std::string& destination) {
    sEnded = 0;
    const Clock::time_point begin = Clock::now();
    start(kind, directory, name, destination);
    wait_for_ends(1);
    return std::chrono::duration<double, std::milli>(sEnd.load() - begin).count();
}

struct Headless {
    double ms;
    std::size_t held;  // bytes
};

Headless headless(const std::string& kind, const std::string& directory, const std::string& name,
                  const std::string& destination) {
    const std::string command = sArguments.headless + " " + kind + " '" + directory + "' '" + name +
                                "' '" + destination + "'";
    Headless result{};
    FILE* output = ::popen(command.c_str(), "r");
    if (output == nullptr || std::fscanf(output, "%lf %zu", &result.ms, &result.held) != 2 ||
        ::pclose(output) != 0)
        give_up(command);
    return result;
}

const char* kind_word(int32_t kind) {
    return kind == kFopCopy ? "copy" : kind == kFopMove ? "move" : "delete";
}

std::string place(const std::string& root, std::size_t rival) {
    return root + "/" + kRivals[rival];
}

// The rival's turn.
double turn(int32_t kind, std::size_t rival, const std::string& directory, const std::string& name,
            const std::string& destination) {
    static const char* const kCommands[] = {"cp -a", "mv", "rm -rf"};
    sync();
    if (rival == 1) return headless(kind_word(kind), directory, name, destination).ms;
    if (rival == 2) return window_ms(kind, directory, name, destination);
    std::string command =
        std::string("exec ") + kCommands[kind] + " '" + directory + "/" + name + "'";
    if (kind != kFopDelete) command += " '" + destination + "'";
    return command_ms(command);
}

void fresh_directory(const std::string& path) {
    command_ms("rm -rf '" + path + "' && mkdir -p '" + path + "'");
}

void copies(const Workload& load, int round, Times* times) {
    for (std::size_t i = 0; i < kRivalCount; ++i) {
        const std::size_t rival = (i + static_cast<std::size_t>(round)) % kRivalCount;
        fresh_directory(place(sArguments.root, rival));
        (*times)["copy"][rival].push_back(
            turn(kFopCopy, rival, sArguments.root, load.name, place(sArguments.root, rival)));
    }
}

void measure(const Workload& load) {
    Times times;
    command_ms("cp -a '" + sArguments.root + "/" + load.name + "' '" + sArguments.other +
               "' && rm -rf '" + sArguments.other + "/" + load.name + "'");
    for (int round = 0; round < sArguments.rounds; ++round) {
        copies(load, round, &times);
        for (std::size_t i = 0; i < kRivalCount; ++i) {
            const std::size_t rival = (i + static_cast<std::size_t>(round)) % kRivalCount;
            times["delete"][rival].push_back(
                turn(kFopDelete, rival, place(sArguments.root, rival), load.name, ""));
        }
        copies(load, round + 1, &times);
        for (std::size_t i = 0; i < kRivalCount; ++i) {
            const std::size_t rival = (i + static_cast<std::size_t>(round)) % kRivalCount;
            fresh_directory(place(sArguments.other, rival));
            times["move"][rival].push_back(turn(kFopMove, rival, place(sArguments.root, rival),
                                                load.name, place(sArguments.other, rival)));
            fresh_directory(place(sArguments.other, rival));
        }
    }
    std::printf("%s\n", load.what);
    const std::map<std::string, const char*> commands = {
        {"copy", "cp -a"}, {"move", "mv"}, {"delete", "rm -rf"}};
    for (auto& [kind, rivals] : times) {
        const double own = median(rivals[1]);
        print_ratio("  " + kind, own, commands.at(kind), median(rivals[0]), 1.0);
        print_ratio("  " + kind + " with the window", median(rivals[2]), "headless", own, 1.05);
    }
}

void measure_scan(const Workload& load) {
    const std::string at = place(sArguments.root, 1);
    fresh_directory(at);
    headless("copy", sArguments.root, load.name, at);
    const double held = static_cast<double>(headless("delete", at, load.name, "").held);
    print_figure("memory of a scan, an entry beside its name", held / load.entries - load.name_size,
                 "bytes", 160);
}

// How late a timer of the event loop is while operations run.
void measure_answers(const Workload& load) {
    constexpr int kOperations = 10;
    constexpr int kEvery = 5;  // ms
    std::vector<double> late;
    QElapsedTimer since;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        late.push_back(static_cast<double>(since.nsecsElapsed()) / 1e6 - kEvery);
        since.start();
    });
    sEnded = 0;
    since.start();
    timer.start(kEvery);
    for (int i = 0; i < kOperations; ++i) {
        const std::string destination = sArguments.root + "/answers/" + std::to_string(i);
        fresh_directory(destination);
        since.start();
        start(kFopCopy, sArguments.root, load.name, destination);
    }
    wait_for_ends(kOperations);
    timer.stop();
    std::sort(late.begin(), late.end());
    print_figure("lateness of the event loop, 10 operations", late.at(late.size() * 99 / 100),
                 "ms, 99th percentile", 50);
    print_figure("", late.back(), "ms at most", 0);
    fresh_directory(sArguments.root + "/answers");
}

void make_files(const std::string& tree, int directories, int files, std::size_t size) {
    if (access((tree + ".complete").c_str(), F_OK) == 0) return;
    fresh_directory(tree);
    const std::string content(size, 'x');
    for (int i = 0; i < directories; ++i) {
        const std::string directory = tree + "/directory-" + std::to_string(10000 + i);
        mkdir(directory.c_str(), 0755);
        for (int j = 0; j < files; ++j) {
            const std::string path = directory + "/entry-" + std::to_string(10000 + j);
            const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
            if (file == -1 || write(file, content.data(), size) != static_cast<ssize_t>(size))
                give_up("can't make " + path);
            close(file);
        }
    }
    command_ms("touch '" + tree + ".complete'");
}

void measure_everything() {
    std::signal(SIGCHLD, SIG_DFL);  // dorn ignores it, and then no child's status can be had
    gDonePause = 0;
    const std::string& root = sArguments.root;
    const std::string big = "big-" + std::to_string(sArguments.big_mib);
    make_files(root + "/small", 200, 100, 4096);
    make_files(root + "/empty", 2000, 100, 0);
    command_ms("[ -e " + root + "/" + big + " ] || head -c " + std::to_string(sArguments.big_mib) +
               "M /dev/urandom >" + root + "/" + big);
    const Workload loads[] = {
        {"20000 files of 4 KiB in 200 directories", "small", 20201, 12},
        {"one big file", big, 1, 0},
        {"200000 empty files in 2000 directories", "empty", 202001, 12},
    };
    for (const Workload& load : loads)
        measure(load);
    measure_scan(loads[2]);
    measure_answers(loads[0]);
    std::fflush(stdout);
    _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::fputs("usage: operations_bench HEADLESS ROOT OTHER ROUNDS BIG_MIB\n", stderr);
        return 2;
    }
    sArguments = {argv[1], argv[2], argv[3], std::atoi(argv[4]), std::atoi(argv[5])};
    std::string program = "dorn";
    std::string start = "/";
    char* arguments[] = {program.data(), start.data(), nullptr};
    return dorn_run(2, arguments, measure_everything);
}
