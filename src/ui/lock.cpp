// The gate between the other threads and the event loop, on the toolkit's side.
//
// Works wait in two queues under one mutex: the ordinary lane in the order of arrival, and that of
// ui_handed, which is served while the gate is held as well. The event loop is woken by an eventfd:
// no thread but its own ever touches an object of the toolkit.
#include "ui/lock.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSocketNotifier>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace dorn {

/// Under the gate's mutex.
struct GateTicket::State {
    bool closed = false;
    bool waiting = false;  // a redraw of it is in the lane
};

namespace {

constexpr qint64 kTurnMs = 10;  // works are served for so long before the event loop has its turn

/// A work that its caller waits for; on the caller's stack.
struct Awaited {
    const std::function<void()>* work;
    std::condition_variable done_signal;
    bool done = false;
};

/// One entry of the ordinary lane: a work that is waited for, or a redraw that owns itself.
struct Entry {
    Awaited* awaited = nullptr;
    std::function<void()> redraw;
    std::shared_ptr<GateTicket::State> ticket;
};

struct Gate {
    std::mutex mutex;
    std::deque<Entry> lane;
    std::deque<Awaited*> handed;
    int questions = 0;   // ui_locked works in the lane or running: more than none holds the gate
    int running = 0;     // of them under way on the event loop
    bool woken = false;  // the eventfd has been written and not been read since
    int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const std::thread::id loop = std::this_thread::get_id();
};

int sServed = 0;  // ui_locked works of other threads under way; event-loop thread only

// Never destroyed: threads may come here while the process ends, and then wait for ever. Made on
// the event-loop thread, before main.
Gate* const sGate = new Gate;

bool on_event_loop() {
    return std::this_thread::get_id() == sGate->loop;
}

// With the mutex held.
void wake() {
    if (std::exchange(sGate->woken, true)) return;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(sGate->wake, &one, sizeof one);
}

void wait_for(std::unique_lock<std::mutex>* lock, Awaited* awaited) {
    wake();
    awaited->done_signal.wait(*lock, [awaited] { return awaited->done; });
}

// Runs it with the mutex let go. Its caller may be gone as soon as the mutex is let go again.
void run_awaited(std::unique_lock<std::mutex>* lock, Awaited* awaited) {
    lock->unlock();
    (*awaited->work)();
    lock->lock();
    awaited->done = true;
    awaited->done_signal.notify_one();
}

void run_question(std::unique_lock<std::mutex>* lock, Awaited* awaited) {
    ++sGate->running;
    ++sServed;
    run_awaited(lock, awaited);
    --sServed;
    --sGate->running;
    --sGate->questions;
}

void run_redraw(std::unique_lock<std::mutex>* lock, Entry* entry) {
    entry->ticket->waiting = false;
    lock->unlock();
    entry->redraw();
    entry->redraw = nullptr;
    lock->lock();
}

// False when nothing waits that may be run.
bool serve_one(std::unique_lock<std::mutex>* lock) {
    if (!sGate->handed.empty()) {
        Awaited* awaited = sGate->handed.front();
        sGate->handed.pop_front();
        run_awaited(lock, awaited);
        return true;
    }
    if (sGate->running > 0 || sGate->lane.empty()) return false;
    Entry entry = std::move(sGate->lane.front());
    sGate->lane.pop_front();
    if (entry.awaited != nullptr)
        run_question(lock, entry.awaited);
    else
        run_redraw(lock, &entry);
    return true;
}

void serve(qint64 turn_ms) {
    QElapsedTimer since;
    since.start();
    std::unique_lock lock(sGate->mutex);
    uint64_t wakes = 0;
    [[maybe_unused]] const ssize_t got = read(sGate->wake, &wakes, sizeof wakes);
    sGate->woken = false;
    while (serve_one(&lock)) {
        if (turn_ms < 0 || since.elapsed() < turn_ms) continue;
        wake();
        return;
    }
}

void open_gate() {
    auto* notifier =
        new QSocketNotifier(sGate->wake, QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, [] { serve(kTurnMs); });
}

// Runs a ui_locked work on the event loop itself: the gate is held meanwhile.
void hold_and_run(const std::function<void()>& work) {
    std::unique_lock lock(sGate->mutex);
    ++sGate->questions;
    ++sGate->running;
    lock.unlock();
    work();
    lock.lock();
    --sGate->running;
    --sGate->questions;
    if (!sGate->lane.empty()) wake();
}

void queue_and_wait(std::unique_lock<std::mutex>* lock, const std::function<void()>& work) {
    Awaited awaited{&work, {}, false};
    ++sGate->questions;
    sGate->lane.push_back({&awaited, {}, {}});
    wait_for(lock, &awaited);
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(open_gate)

GateTicket::GateTicket() : state_(std::make_shared<State>()) {}

void GateTicket::close() {
    Entry dropped;  // goes when the mutex has been let go
    const std::lock_guard lock(sGate->mutex);
    state_->closed = true;
    if (!state_->waiting) return;
    state_->waiting = false;
    const auto found = std::find_if(sGate->lane.begin(), sGate->lane.end(),
                                    [this](const Entry& e) { return e.ticket == state_; });
    dropped = std::move(*found);
    sGate->lane.erase(found);
}

void ui_locked(const std::function<void()>& work) {
    if (on_event_loop()) return hold_and_run(work);
    std::unique_lock lock(sGate->mutex);
    queue_and_wait(&lock, work);
}

bool ui_locked_if_free(const std::function<void()>& work) {
    if (on_event_loop()) {
        hold_and_run(work);
        return true;
    }
    std::unique_lock lock(sGate->mutex);
    if (sGate->questions > 0) return false;
    queue_and_wait(&lock, work);
    return true;
}

bool ui_try_locked(const GateTicket& ticket, std::function<void()> work) {
    const std::shared_ptr<GateTicket::State>& state = ticket.state();
    std::unique_lock lock(sGate->mutex);
    if (state->closed) return false;
    if (on_event_loop()) {
        lock.unlock();
        work();
        return true;
    }
    if (sGate->questions > 0 || state->waiting) return false;
    state->waiting = true;
    sGate->lane.push_back({nullptr, std::move(work), state});
    wake();
    return true;
}

void ui_handed(const std::function<void()>& work) {
    if (on_event_loop()) return work();
    std::unique_lock lock(sGate->mutex);
    Awaited awaited{&work, {}, false};
    sGate->handed.push_back(&awaited);
    wait_for(&lock, &awaited);
}

void ui_serve_gate() {
    serve(-1);
}

bool ui_gate_is_held_by_other() {
    return sServed > 0;
}

}  // namespace dorn
