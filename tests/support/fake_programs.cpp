#include "support/fake_programs.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace dorn {

FakePrograms::FakePrograms() : path_before_(std::getenv("PATH")) {
    // What detaches itself is then waited for, too.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    sandbox_.mkdir("bin");
    sandbox_.mkdir("runs");
    setenv("PATH", (sandbox_.file("bin") + ":" + path_before_).c_str(), 1);
    add("orterm", "case $1 in -*) shift ;; esac\nexec \"$@\"");
}

FakePrograms::~FakePrograms() {
    wait();
    setenv("PATH", path_before_.c_str(), 1);
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

void FakePrograms::add(const std::string& name, const std::string& then) const {
    sandbox_.script("bin/" + name, "{ for a in \"$@\"; do printf '%s\\0' \"$a\"; done; } >'" +
                                       sandbox_.file("runs/") + name + ".'$$\n" + then);
}

void FakePrograms::wait() {
    while (waitpid(-1, nullptr, 0) > 0) {
    }
}

FakePrograms::Runs FakePrograms::runs(const std::string& name) const {
    Runs found;
    for (const auto& file : std::filesystem::directory_iterator(sandbox_.file("runs"))) {
        if (file.path().stem() != name) continue;
        std::istringstream stream(read_file(file.path()));
        found.emplace_back();
        for (std::string argument; std::getline(stream, argument, '\0');)
            found.back().push_back(argument);
        std::filesystem::remove(file.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace dorn
