// Repeating timers whose callback and data live in the timer.
//
//     static Timer sReadTimer;
//     wtimer_attach(&sReadTimer, 300, x_print_progress, cache);
//     ...
//     wtimer_detach(&sReadTimer);
//
// A timer that follows a label is one of its own beside it. Callbacks run on the event-loop thread.
#pragma once

#include <cstdint>
#include <memory>

namespace dorn {

class Timer;
using TimerCallback = void (*)(Timer* timer, void* data);

/// One timer. It may be a static object: it takes nothing from the screen before it is attached.
class Timer {
  public:
    Timer();
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    bool attached = false;  // the record below is in use
    TimerCallback callback = nullptr;
    void* data = nullptr;
    uint32_t interval_ms = 0;  // 0: stopped

    /// Arms the timer to expire once after `ms` milliseconds; 0 disarms it.
    void arm(uint32_t ms);

  private:
    struct Host;  // the toolkit's timer
    std::unique_ptr<Host> host_;
};

/// Stores the record in the timer, or replaces it, and arms the timer for `interval_ms`.
void wtimer_attach(Timer* timer, uint32_t interval_ms, TimerCallback callback, void* data);

/// What a timer runs when it expires: the callback, then it is armed again with the interval that
/// its record holds after the call. Nothing without a callback or with an interval of 0.
void x_timer_cb(Timer* timer);

/// Sets the interval to 0: the callback is not called again. The timer must have been attached.
void wtimer_detach(Timer* timer);

/// Calls the callback once now; the arming does not change. Nothing without a record.
void wtimer_trigger(Timer* timer);

}  // namespace dorn
