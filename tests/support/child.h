// Programs run as processes of the test's own, with waits that end.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace dorn {

struct ChildSetting {
    std::map<std::string, std::string> variables;  // beside the test's own; an empty one is unset
    std::string directory;                         // that it works in
    std::string output;                            // files for what it writes; empty: the test's
    std::string errors;
    std::function<void()> before;  // runs in the child
};

/// Starts the program `words[0]`, a path, with nothing to read on its standard input.
pid_t start_child(std::vector<std::string> words, const ChildSetting& setting = {});

/// Waits for its end: the exit status, 1000 and the signal that ended it, -1 when it goes on.
int end_of_child(pid_t child);

/// Whether the condition comes to hold within half a minute.
bool wait_until(const std::function<bool()>& condition);

}  // namespace dorn
