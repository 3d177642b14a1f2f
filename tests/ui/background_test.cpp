#include "ui/background.h"

#include "ui/qt_widget.h"
#include "ui/timer.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace dorn {
namespace {

struct Counter {
    int calls = 0;
    int stop_after = 1000;
};

void count(Timer* timer, void* data) {
    auto* counter = static_cast<Counter*>(data);
    if (++counter->calls == counter->stop_after) wtimer_detach(timer);
}

TEST(Timers, RepeatUntilTheirCallbackDetachesThem) {
    Timer timer;
    Counter counter{0, 3};
    wtimer_attach(&timer, 1, count, &counter);
    EXPECT_TRUE(QTest::qWaitFor([&] { return counter.calls == 3; }));
}

TEST(Timers, AttachingAgainReplacesCallbackAndData) {
    Timer timer;
    Counter first, second{0, 1};
    wtimer_trigger(&timer);
    wtimer_attach(&timer, 1, count, &first);
    wtimer_attach(&timer, 1, count, &second);
    EXPECT_TRUE(QTest::qWaitFor([&] { return second.calls == 1; }));
    EXPECT_EQ(first.calls, 0);
}

WorkResult count_work(void* data) {
    return ++*static_cast<int*>(data) == 3 ? WorkResult::Done : WorkResult::Continue;
}

TEST(WorkProcedures, RunUntilTheySayDoneOrAreDetached) {
    QWidget widget;
    int calls = 0;
    int detached = 0;
    int after = 0;
    wproc_attach(handle(&widget), count_work, &calls);
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls == 3; }));
    wproc_attach(handle(&widget), count_work, &detached);
    wproc_detach(handle(&widget));
    wproc_detach(handle(&widget));
    wproc_attach(handle(&widget), count_work, &after);
    EXPECT_TRUE(QTest::qWaitFor([&] { return after == 3; }));
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(detached, 0);
}

TEST(Bounded, ACallThatHangsIsLeftBehind) {
    auto release = std::make_shared<std::atomic<bool>>(false);
    EXPECT_FALSE(ui_bounded([release] { release->wait(false); }, 60));
    release->store(true);
    release->notify_all();
    auto ran = std::make_shared<bool>(false);
    EXPECT_TRUE(ui_bounded([ran] { *ran = true; }));
    EXPECT_TRUE(*ran);
}

TEST(Bounded, ClosingTheMainWindowEndsTheWait) {
    QWidget base;
    base.setObjectName(QStringLiteral("base"));
    ui_register_instances(&base);
    base.show();
    QTimer::singleShot(0, &base, [&base] { base.close(); });
    auto release = std::make_shared<std::atomic<bool>>(false);
    QElapsedTimer waited;
    waited.start();
    EXPECT_FALSE(ui_bounded([release] { release->wait(false); }, 60000));
    EXPECT_LT(waited.elapsed(), 30000);
    release->store(true);
    release->notify_all();
}

TEST(Async, WorkRunsElsewhereAndItsEndIsToldHere) {
    const auto here = std::this_thread::get_id();
    auto there = std::make_shared<std::atomic<std::thread::id>>(here);
    int dropped = 0;
    int ended = 0;
    auto* owner = new QWidget;
    ui_async(
        handle(owner), [] {}, [&] { ++dropped; });
    delete owner;
    for (int i = 0; i < 20; ++i) {
        ui_async(
            nullptr, [there] { *there = std::this_thread::get_id(); },
            [&] {
                EXPECT_EQ(std::this_thread::get_id(), here);
                ++ended;
            });
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return ended == 20; }));
    EXPECT_EQ(dropped, 0);
    EXPECT_NE(there->load(), here);
}

}  // namespace
}  // namespace dorn
