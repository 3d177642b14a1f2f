// The command's window: starting a terminal emulator for it and being connected with it.
//
// The emulators of the machine are tried one after the other; one that ends with a failure, or from
// which no connection comes, is given up. When none is left, the terminal that this program itself
// was started from serves, if it was started from one.
#pragma once

#include "emulator.h"
#include "input_watch.h"
#include "platform/fd.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace dorn {

enum class WindowState {
    kAway,      ///< not asked for yet
    kStarting,  ///< asked for; no connection yet
    kOpen,      ///< `channel` is connected with it
    kNone,      ///< none can be had; a message on standard error said so
};

struct Window {
    WindowState state = WindowState::kAway;
    std::string title;
    std::string address;  ///< where the attached process connects
    Fd listener;
    Fd channel;
    std::vector<Emulator> candidates;
    size_t next = 0;  ///< the candidate to be tried next; one past them is our own terminal
    bool own_terminal = false;  ///< the one being tried, or open, is our own
    pid_t emulator = -1;        ///< the process that was started last, while it runs
    Clock::time_point deadline = Clock::time_point::max();  ///< of the one that is being tried
    Clock::time_point opened;
};

/// Prepares the window of that command without showing it. False with errno set.
bool window_setup(Window& window, const std::vector<std::string>& command);

/// The TERM of what will run in it; empty when it is our own terminal.
std::string window_terminal_type(const Window& window);

/// Starts the first emulator; the state is kStarting or kNone then.
void window_show(Window& window);

/// The process `emulator` has ended with that status (and was waited for). A failure before there
/// is a connection lets the next one be tried.
void window_emulator_ended(Window& window, int status);

/// Takes a connection from the listener: kOpen when it was one.
void window_take_connection(Window& window);

/// Tries the next emulator when nothing has come from the one that was started.
void window_check_deadline(Window& window);

/// Milliseconds until the deadline.
int window_patience(const Window& window);

/// Ends an emulator that was started and has not connected, and closes the connection. Our own
/// terminal is as it was before when this returns.
void window_dismiss(Window& window);

}  // namespace dorn
