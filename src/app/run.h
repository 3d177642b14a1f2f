// The program from its first line to its last.
#pragma once

namespace dorn {

/// Runs dorn with the arguments of main and returns its exit status. `ready`, unless null, is
/// called once when the start directory is shown and painted and the event loop is idle.
int dorn_run(int argc, char** argv, void (*ready)() = nullptr);

}  // namespace dorn
