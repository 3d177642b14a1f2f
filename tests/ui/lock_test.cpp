#include "ui/lock.h"

#include <QCoreApplication>
#include <QTest>

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace dorn {
namespace {

// Serves the event loop until the thread has ended.
void join_served(std::thread* thread, const std::atomic<bool>& ended) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return ended.load(); }, 20000));
    if (ended)
        thread->join();
    else
        thread->detach();
}

void run_served(const std::function<void()>& body) {
    std::atomic<bool> ended{false};
    std::thread thread([&] {
        body();
        ended = true;
    });
    join_served(&thread, ended);
}

TEST(Gate, WorksOfAThreadRunOnTheEventLoopInTheirOrderAndAreWaitedFor) {
    const auto loop = std::this_thread::get_id();
    std::string order;  // touched without a lock: the gate is the only order there is
    const GateTicket ticket;
    run_served([&] {
        ui_locked([&] { order += std::this_thread::get_id() == loop ? "a" : "?"; });
        while (!ui_try_locked(ticket, [&] { order += "b"; }))
            std::this_thread::yield();
        ui_handed([&] { order += "c"; });
        ui_locked([&] { order += "d"; });
    });
    EXPECT_TRUE(order == "abcd" || order == "acbd") << order;
}

TEST(Gate, AQuestionHoldsItAgainstAllButWhatIsHandedOver) {
    std::string order;
    std::atomic<bool> asked{false}, answered{false}, other_ended{false};
    std::thread other([&] {
        while (!asked)
            std::this_thread::yield();
        const GateTicket ticket;
        const bool redrawn = ui_try_locked(ticket, [] {});
        const bool noticed = ui_locked_if_free([] {});
        ui_handed([&] { order += redrawn || noticed ? "?" : "handed "; });
        answered = true;
        ui_locked([&] { order += "second"; });
        other_ended = true;
    });
    run_served([&] {
        ui_locked([&] {
            asked = true;
            EXPECT_TRUE(ui_gate_is_held_by_other());
            EXPECT_TRUE(QTest::qWaitFor([&] { return answered.load(); }, 20000));
            QTest::qWait(1);  // serves what must not be served here
            order += "first ";
        });
    });
    join_served(&other, other_ended);
    EXPECT_EQ(order, "handed first second");
    EXPECT_FALSE(ui_gate_is_held_by_other());
}

TEST(Gate, ATicketLetsOneRedrawWaitAndNoneOnceItIsClosed) {
    GateTicket kept, closed;
    int shown = 0, dropped = 0;
    std::vector<bool> taken;
    std::thread thread([&] {
        for (int i = 0; i < 2; ++i) {
            taken.push_back(ui_try_locked(kept, [&] { ++shown; }));
            taken.push_back(ui_try_locked(closed, [&] { ++dropped; }));
        }
    });
    thread.join();
    closed.close();
    ui_serve_gate();
    EXPECT_EQ(taken, (std::vector<bool>{true, true, false, false}));
    EXPECT_FALSE(ui_try_locked(closed, [&] { ++dropped; }));
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(dropped, 0);
}

}  // namespace
}  // namespace dorn
