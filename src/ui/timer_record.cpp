// The timers' records: the same on every screen.
#include "ui/timer.h"

namespace dorn {

void wtimer_attach(Timer* timer, uint32_t interval_ms, TimerCallback callback, void* data) {
    timer->attached = true;
    timer->callback = callback;
    timer->data = data;
    timer->interval_ms = interval_ms;
    timer->arm(interval_ms);
}

void x_timer_cb(Timer* timer) {
    if (!timer->attached || timer->interval_ms == 0 || timer->callback == nullptr) return;
    timer->callback(timer, timer->data);
    timer->arm(timer->interval_ms);
}

void wtimer_detach(Timer* timer) {
    timer->interval_ms = 0;
}

void wtimer_trigger(Timer* timer) {
    if (timer->attached && timer->callback != nullptr) timer->callback(timer, timer->data);
}

}  // namespace dorn
