// The toolkit lock: how a thread other than the event loop's reaches the screen.
//
// It is a gate, not a mutex. A thread hands it a piece of work and the event loop runs it, one at a
// time, in the order of arrival. While a ui_locked work runs (a question that is up, its nested
// event loop included) the gate is held: other questions wait, redraws are turned away, and only
// what ui_handed brings is still served.
//
//     ui_locked([&] { answer = ui_alert(parent, title, message, buttons); });
//     ui_try_locked(ticket, [shown] { show(shown); });      // shown: a copy
//
// Called on the event-loop thread itself each of them runs the work at once. Works must not throw.
#pragma once

#include <functional>
#include <memory>

namespace dorn {

/// What binds the redraws of one operation together: at most one of them waits, and none is run
/// once the ticket is closed. Copies share it. Any thread.
class GateTicket {
  public:
    GateTicket();

    /// Event-loop thread only: drops the redraw that waits and refuses every later one. To be
    /// called before the widgets that it draws on go.
    void close();

    struct State;
    const std::shared_ptr<State>& state() const {
        return state_;
    }

  private:
    std::shared_ptr<State> state_;
};

/// Waits until the gate is free, has the event loop run `work`, and returns when that is done.
void ui_locked(const std::function<void()>& work);

/// The same, but only when the gate is free at once: false, with nothing run, when it is held.
bool ui_locked_if_free(const std::function<void()>& work);

/// Hands `work` over and returns at once without waiting for it; it must own all it uses. False,
/// with nothing handed over, when the gate is held, when the ticket's last one has not run yet, or
/// when the ticket is closed.
bool ui_try_locked(const GateTicket& ticket, std::function<void()> work);

/// Has the event loop run `work`, also while the gate is held, and returns when that is done. For
/// work that shows nothing and asks nothing and calls no event loop.
void ui_handed(const std::function<void()>& work);

/// Event-loop thread only: runs all that waits now. For the places that wait for a worker.
void ui_serve_gate();

/// Event-loop thread only: whether another thread's ui_locked work is under way, that is, whether
/// the caller is called by one or shown while one waits for its answer.
bool ui_gate_is_held_by_other();

}  // namespace dorn
