#include "platform/spare_thread.h"

#include "platform/signals.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace dorn {

struct SpareCall::State {
    explicit State(std::function<void()> to_run) : work(std::move(to_run)) {}

    /// Runs the work and tells that it is done; what it captured is gone by then.
    void run() {
        work();
        work = nullptr;
        const std::lock_guard lock(mutex);
        ended = true;
        changed.notify_all();
    }

    std::function<void()> work;
    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;
};

SpareCall::SpareCall(std::function<void()> work)
    : state_(std::make_shared<State>(std::move(work))) {
    try {
        const SignalsBlocked blocked;
        std::thread([state = state_] { state->run(); }).detach();
    } catch (const std::system_error&) {
        state_->run();
    }
}

bool SpareCall::done(int wait_ms) const {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, std::chrono::milliseconds(wait_ms),
                                    [this] { return state_->ended; });
}

bool spare_call(std::function<void()> work, int timeout_ms) {
    return SpareCall(std::move(work)).done(timeout_ms);
}

}  // namespace dorn
