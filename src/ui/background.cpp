#include "ui/background.h"

#include "platform/spare_thread.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include <deque>
#include <memory>

namespace dorn {

namespace {

constexpr qint64 kBackgroundPeriodMs = 16;
constexpr int kPatienceMs = 50;  // a call that takes no longer is waited for without further ado

// A minimised window counts as shown, a closed one does not.
bool is_shown(const Widget* widget) {
    return widget != nullptr && qt(widget)->isVisible();
}

}  // namespace

void ui_background() {
    static QElapsedTimer since;
    if (since.isValid() && since.elapsed() < kBackgroundPeriodMs) return;
    since.start();
    QCoreApplication::processEvents();
    since.start();
}

bool ui_bounded(std::function<void()> work, int timeout_ms) {
    SpareCall call(std::move(work));
    if (call.done(qMin(kPatienceMs, timeout_ms))) return true;
    const bool shown = is_shown(w_instance("base"));
    const ScopedBlock block(w_instance("base"));
    QElapsedTimer waited;
    waited.start();
    bool done = false;
    while (!(done = call.done(kBackgroundPeriodMs)) &&
           waited.elapsed() < timeout_ms - kPatienceMs) {
        QCoreApplication::processEvents();
        if (shown && !is_shown(w_instance("base"))) break;  // closed meanwhile: nobody waits
    }
    return done;
}

namespace {

// The calls of ui_async: a queue, and those under way, looked at by a timer while there are any.
constexpr std::size_t kMostAsyncCalls = 8;
constexpr qint64 kAsyncLimitMs = 10000;
constexpr int kAsyncPollMs = 10;

struct AsyncCall {
    QPointer<QWidget> owner;
    bool owned;
    std::function<void()> work;
    std::function<void()> done;
    std::unique_ptr<SpareCall> call;
    QElapsedTimer since;

    bool wanted() const {
        return !owned || owner;
    }
};

class AsyncCalls {
  public:
    AsyncCalls() {
        QObject::connect(&poll_, &QTimer::timeout, [this] { look(); });
        poll_.setInterval(kAsyncPollMs);
    }

    void add(AsyncCall call) {
        waiting_.push_back(std::move(call));
        start_waiting();
        poll_.start();
    }

  private:
    void start_waiting() {
        while (!waiting_.empty() && running_.size() < kMostAsyncCalls) {
            AsyncCall call = std::move(waiting_.front());
            waiting_.pop_front();
            if (!call.wanted()) continue;
            call.call = std::make_unique<SpareCall>(std::move(call.work));
            call.since.start();
            running_.push_back(std::move(call));
        }
    }

    void look() {
        std::deque<AsyncCall> ended;
        for (auto it = running_.begin(); it != running_.end();) {
            const bool done = it->call->done(0);
            if (done && it->wanted()) ended.push_back(std::move(*it));
            const bool leave = done || it->since.elapsed() > kAsyncLimitMs;
            it = leave ? running_.erase(it) : it + 1;
        }
        start_waiting();
        if (running_.empty()) poll_.stop();
        for (AsyncCall& call : ended) {
            if (call.wanted()) call.done();
        }
    }

    QTimer poll_;
    std::deque<AsyncCall> waiting_;
    std::deque<AsyncCall> running_;
};

}  // namespace

void ui_async(Widget* owner, std::function<void()> work, std::function<void()> done) {
    static auto* const calls = new AsyncCalls;  // lives as long as the event loop
    calls->add({qt(owner), owner != nullptr, std::move(work), std::move(done), nullptr, {}});
}

namespace {

constexpr const char* kWorkProperty = "dorn_work_procedure";

class IdleTimer : public QTimer {
  public:
    IdleTimer(QObject* parent, WorkProcedure procedure, void* data) : QTimer(parent) {
        QObject::connect(this, &QTimer::timeout, this, [this, procedure, data] {
            const QPointer<IdleTimer> alive(this);  // the procedure may take its widget down
            if (procedure(data) == WorkResult::Done && alive) end();
        });
        start(0);
    }

    // Never called again from here on; gone when no call of it is under way.
    void end() {
        stop();
        deleteLater();
    }
};

QHash<int, QPointer<IdleTimer>>& idle_timers() {
    static QHash<int, QPointer<IdleTimer>> timers;
    return timers;
}

}  // namespace

int wproc_attach(Widget* widget, WorkProcedure procedure, void* data) {
    static int last_id = 0;
    auto* timer = new IdleTimer(qt(widget), procedure, data);
    const int id = ++last_id;
    idle_timers().insert(id, timer);
    QObject::connect(timer, &QObject::destroyed, [id] { idle_timers().remove(id); });
    qt(widget)->setProperty(kWorkProperty, id);
    return id;
}

void wproc_detach(Widget* widget) {
    const int id = qt(widget)->property(kWorkProperty).toInt();
    if (id == 0) return;
    if (IdleTimer* timer = idle_timers().value(id)) timer->end();
    qt(widget)->setProperty(kWorkProperty, 0);
}

void wproc_finished(Widget* widget) {
    qt(widget)->setProperty(kWorkProperty, 0);
}

}  // namespace dorn
