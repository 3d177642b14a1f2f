#include "support/child.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace dorn {

namespace {

void redirect(int descriptor, const std::string& path, int flags) {
    if (path.empty()) return;
    const int file = open(path.c_str(), flags, 0600);
    dup2(file, descriptor);
    close(file);
}

}  // namespace

pid_t start_child(std::vector<std::string> words, const ChildSetting& setting) {
    const pid_t child = fork();
    if (child != 0) return child;
    for (const auto& [name, value] : setting.variables) {
        if (value.empty())
            unsetenv(name.c_str());
        else
            setenv(name.c_str(), value.c_str(), 1);
    }
    redirect(0, "/dev/null", O_RDONLY);
    redirect(1, setting.output, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND);
    redirect(2, setting.errors, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND);
    if (!setting.directory.empty() && chdir(setting.directory.c_str()) != 0) _exit(99);
    if (setting.before) setting.before();
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    execv(pointers[0], pointers.data());
    _exit(98);
}

int end_of_child(pid_t child) {
    int status = 0;
    if (!wait_until([&] { return waitpid(child, &status, WNOHANG) == child; })) return -1;
    return WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool wait_until(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace dorn
