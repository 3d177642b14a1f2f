// File-system calls on a path that may be dead, made on a spare thread and given up after a time.
//
// The work goes on after the caller has given up, so it must own all it touches: capture by value
// or by shared_ptr, never by reference to the caller's stack.
#pragma once

#include <functional>
#include <memory>

namespace dorn {

/// A piece of work under way on a spare thread. Copies share it.
class SpareCall {
  public:
    /// Starts `work`. Where no thread can be made it is run at once, on the calling thread.
    explicit SpareCall(std::function<void()> work);

    /// Waits at most `wait_ms` milliseconds; true when the work is done. What the work wrote is
    /// then visible to the caller.
    bool done(int wait_ms) const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

/// Runs `work` and waits for it for at most `timeout_ms`; true when it ended in time.
bool spare_call(std::function<void()> work, int timeout_ms);

}  // namespace dorn
