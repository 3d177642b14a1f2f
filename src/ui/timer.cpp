#include "ui/timer.h"

#include <QTimer>

namespace dorn {

struct Timer::Host {
    QTimer timer;
};

Timer::Timer() = default;
Timer::~Timer() = default;

void Timer::arm(uint32_t ms) {
    if (!host_) {
        if (ms == 0) return;
        host_ = std::make_unique<Host>();
        host_->timer.setSingleShot(true);
        QObject::connect(&host_->timer, &QTimer::timeout, [this] { x_timer_cb(this); });
    }
    if (ms == 0)
        host_->timer.stop();
    else
        host_->timer.start(static_cast<int>(ms));
}

}  // namespace dorn
