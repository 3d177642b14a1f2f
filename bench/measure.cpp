#include "measure.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace dorn::bench {

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void give_up(const std::string& what) {
    std::fprintf(stderr, "open_bench: %s\n", what.c_str());
    std::exit(1);
}

double since_ms(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

const char* verdict(double value, double limit) {
    if (limit <= 0) return "";
    return value <= limit ? "  reached" : "  MISSED";
}

}  // namespace

double time_ms(const std::function<void()>& work) {
    const Clock::time_point begin = Clock::now();
    work();
    return since_ms(begin);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

double command_ms(const std::string& command) {
    int status = 0;
    const double ms = time_ms([&] { status = std::system(command.c_str()); });
    if (status != 0) give_up(command + " failed");
    return ms;
}

Painted run_until_painted(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    int pipe_ends[2];
    if (pipe2(pipe_ends, O_CLOEXEC) != 0) give_up("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe_ends[1], STDOUT_FILENO);
    const Clock::time_point begin = Clock::now();
    pid_t child = 0;
    const int error =
        posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipe_ends[1]);
    if (error != 0) give_up(command[0] + ": " + std::strerror(error));
    char line[100] = "";
    const ssize_t length = read(pipe_ends[0], line, sizeof line - 1);
    Painted painted{since_ms(begin)};
    close(pipe_ends[0]);
    waitpid(child, nullptr, 0);
    if (length <= 0 || std::strncmp(line, "painted", 7) != 0)
        give_up(command[0] + " showed nothing");
    painted.resident = std::strtoll(line + 7, nullptr, 10);
    return painted;
}

int64_t resident_bytes() {
    std::ifstream statm("/proc/self/statm");
    int64_t all = 0;
    int64_t resident = 0;
    statm >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

std::string make_tree(const std::string& root, int count) {
    const std::string path = root + "/" + std::to_string(count);
    const std::string complete = path + ".complete";
    if (access(complete.c_str(), F_OK) == 0) return path;
    if (mkdir(path.c_str(), 0755) != 0 && errno != EEXIST) give_up("can't make " + path);
    const int directory = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int i = 0; i < count; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "entry-%07d", i);
        const int file = openat(directory, name, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (file == -1) give_up("can't make " + path + "/" + name);
        close(file);
    }
    close(directory);
    std::ofstream mark(complete);
    return path;
}

void print_ratio(const std::string& what, double ms, const std::string& against, double other_ms,
                 double limit) {
    const double ratio = ms / other_ms;
    std::printf("%-44s %9.1f ms  %5.2f x %s (%.1f ms)", what.c_str(), ms, ratio, against.c_str(),
                other_ms);
    if (limit > 0) std::printf(", at most %.2f:%s", limit, verdict(ratio, limit));
    std::printf("\n");
    std::fflush(stdout);
}

void print_figure(const std::string& what, double value, const char* unit, double limit) {
    std::printf("%-44s %9.1f %s", what.c_str(), value, unit);
    if (limit > 0) std::printf(", at most %.0f:%s", limit, verdict(value, limit));
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace dorn::bench
