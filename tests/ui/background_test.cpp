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

TEST(Timers, RepeatUntilTheirLastCallbackDetachesThem) {
    Timer timer;
    int replaced = 0, calls = 0;
    wtimer_trigger(&timer);
    wtimer_attach(
        &timer, 1, [](Timer*, void* data) { ++*static_cast<int*>(data); }, &replaced);
    const TimerCallback three_times = [](Timer* self, void* data) {
        if (++*static_cast<int*>(data) == 3) wtimer_detach(self);
    };
    wtimer_attach(&timer, 1, three_times, &calls);
    EXPECT_TRUE(QTest::qWaitFor([&] { return calls == 3; }));
    bool later = false;
    QTimer::singleShot(5, [&later] { later = true; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return later; }));
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(replaced, 0);
}

// A work that hangs until its test is over.
struct Hanging {
    std::shared_ptr<std::atomic<bool>> release = std::make_shared<std::atomic<bool>>(false);
    ~Hanging() {
        release->store(true);
        release->notify_all();
    }
    std::function<void()> work() const {
        return [release = release] { release->wait(false); };
    }
};

TEST(Bounded, ACallThatHangsIsLeftBehind) {
    const Hanging hanging;
    EXPECT_FALSE(ui_bounded(hanging.work(), 60));
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
    const Hanging hanging;
    QElapsedTimer waited;
    waited.start();
    EXPECT_FALSE(ui_bounded(hanging.work(), 60000));
    EXPECT_LT(waited.elapsed(), 30000);
}

TEST(Async, WorkRunsElsewhereAndItsEndIsToldHere) {
    const auto here = std::this_thread::get_id();
    auto there = std::make_shared<std::atomic<std::thread::id>>(here);
    int dropped = 0, ended = 0;
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
