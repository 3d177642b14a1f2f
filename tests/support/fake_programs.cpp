#include "support/fake_programs.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace dorn {

namespace {

std::vector<std::string> split_at_nul(const std::string& text) {
    std::vector<std::string> parts;
    std::string part;
    for (const char c : text) {
        if (c != '\0') {
            part += c;
            continue;
        }
        parts.push_back(part);
        part.clear();
    }
    return parts;
}

}  // namespace

FakePrograms::FakePrograms() : path_before_(std::getenv("PATH")) {
    // What detaches itself is then waited for, too.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    sandbox_.mkdir("bin");
    sandbox_.mkdir("runs");
    setenv("PATH", (folder() + ":" + path_before_).c_str(), 1);
    add("orterm", "case $1 in -*) shift ;; esac\nexec \"$@\"");
}

FakePrograms::~FakePrograms() {
    wait();
    setenv("PATH", path_before_.c_str(), 1);
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

void FakePrograms::add(const std::string& name, const std::string& then) const {
    const std::string script = "bin/" + name;
    sandbox_.write(script, "#!/bin/sh\n{ for a in \"$@\"; do printf '%s\\0' \"$a\"; done; } >'" +
                               sandbox_.file("runs/") + name + ".'$$\n" + then + "\n");
    chmod(sandbox_.file(script).c_str(), 0755);
}

void FakePrograms::wait() {
    while (waitpid(-1, nullptr, 0) > 0) {
    }
}

FakePrograms::Runs FakePrograms::runs(const std::string& name) const {
    Runs found;
    for (const auto& file : std::filesystem::directory_iterator(sandbox_.file("runs"))) {
        if (file.path().stem() != name) continue;
        std::ifstream stream(file.path(), std::ios::binary);
        found.push_back(split_at_nul(std::string(std::istreambuf_iterator<char>(stream), {})));
        std::filesystem::remove(file.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string FakePrograms::folder() const {
    return sandbox_.file("bin");
}

}  // namespace dorn
