// How often it is looked whether the command wants input: soon at first, then ever more rarely, so
// that a viewer that is open for hours costs nothing that can be felt.
#pragma once

#include "pty.h"

#include <chrono>

namespace dorn {

using Clock = std::chrono::steady_clock;

struct InputWatch {
    std::chrono::milliseconds pause{40};            ///< between the last look and the next
    Clock::time_point next = Clock::now() + pause;  ///< when it is due
    Clock::time_point unknown_since = Clock::time_point::max();
};

/// Milliseconds until the next look is due.
int input_watch_patience(const InputWatch& watch);

/// Looks, if it is due, and tells whether the command wants input. Programs that do not let
/// themselves be looked into for a second (those of another user, that ask for passwords) are taken
/// to want it.
bool input_watch_look(InputWatch& watch, const Pty& pty, pid_t leader);

}  // namespace dorn
