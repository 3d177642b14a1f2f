// The process's signals, brought into the event loop.
//
// SIGTERM, SIGHUP, SIGINT, SIGQUIT and SIGWINCH are noted and wake the event loop by a pipe that it
// reads; SIGCHLD, SIGPIPE and SIGXFSZ are ignored; SIGALRM has an empty handler, without
// SA_RESTART, that only makes a blocked status call return. Other threads run with all signals
// blocked (SignalsBlocked below), so these reach the event-loop thread alone.
#pragma once

#include <csignal>

namespace dorn {

/// Installs all of the above; called once, on the event-loop thread. Returns the descriptor to
/// watch for reading (non-blocking, owned here), or -1 when no pipe could be made.
int signals_install();

/// The lowest number of a signal that waits, which is then taken; 0 when there is none. A signal
/// that came several times waits once.
int signals_take();

/// Blocks every signal for the calling thread while it lives; a thread made inside inherits that.
class SignalsBlocked {
  public:
    SignalsBlocked();
    ~SignalsBlocked();
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_;
};

}  // namespace dorn
