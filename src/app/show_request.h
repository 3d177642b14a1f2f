// What a window is asked to show beside its directory, and the way there: a process that starts
// another one for it hands the request over in a variable of its environment.
//
// Event-loop thread only.
#pragma once

#include <string>
#include <vector>

namespace dorn {

struct ShowRequest {
    std::string directory = {};           // an absolute path
    std::vector<std::string> names = {};  // of entries in there to select
    bool properties = false;              // and to open the Properties dialog for
};

/// Starts another dorn for it. `startup_id`, unless empty, lets its window take the keyboard from
/// the one where the user asked for it. Very long requests are cut: the last names are not selected
/// then. 0, or -1 when it can't be started.
int show_request_start(const ShowRequest& request, const std::string& startup_id);

/// The request that this process was started with, which is taken out of its environment.
ShowRequest show_request_take();

/// Selects what it names, once its directory is shown; nothing when another one is. Entries that
/// the list hides are left out.
void show_request_apply(const ShowRequest& request);

}  // namespace dorn
