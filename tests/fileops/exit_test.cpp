// The ways in which the program ends while operations run.
#include "app/base.h"
#include "fileops/slots.h"
#include "fileops/start.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace dorn {
namespace {

int sEnded = 0;

class Exit : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        fakes_.add("zap");
        sEnded = 0;
        slot_set_exit_cb([] { ++sEnded; }, [] { return base_window_closed != 0; });
        sandbox_.mkdir("to");
        sandbox_.write("a", "content");
    }
    void TearDown() override {
        FakePrograms::wait();
        base_window_closed = 0;
        window_->show();
        WindowTest::TearDown();
    }
    FileOp* start_copy() {
        EXPECT_EQ(fop_start_cmd(kFopCopy, sandbox_.path(), {"a"}, sandbox_.file("to").c_str()), 0);
        return slot.front()->op;
    }

    FakePrograms fakes_;
};

TEST_F(Exit, HidesTheWindowAndTheLastOperationEndsTheProgram) {
    FileOp* op = start_copy();
    op->paused = 1;
    fm_exit();
    EXPECT_FALSE(window_->isVisible());
    slot_timer();
    EXPECT_EQ(sEnded, 0);
    op->paused = 0;
    EXPECT_TRUE(QTest::qWaitFor([] { return sEnded > 0; }, 20000));
    EXPECT_EQ(n_slots, 0);
    EXPECT_EQ(sandbox_.read("to/a"), "content");
}

TEST_F(Exit, ClosingTheWindowAndSignalsCancelEveryOperationAndItsQuestion) {
    sandbox_.write("to/a", "older");
    for (const bool by_signal : {false, true}) {
        sEnded = 0;
        FileOp* halted = start_copy();
        halted->paused = 1;
        start_copy();
        QTimer asked;
        asked.callOnTimeout([&] {
            if (QApplication::activeModalWidget() == nullptr) return;
            asked.stop();
            by_signal ? signal_terminate() : static_cast<void>(window_->close());
        });
        asked.start(1);
        EXPECT_TRUE(QTest::qWaitFor([] { return sEnded > 0; }, 20000));
        EXPECT_FALSE(window_->isVisible());
        EXPECT_EQ(n_slots, 0);
        EXPECT_EQ(sandbox_.read("to/a"), "older");
        base_window_closed = 0;
        window_->show();
    }
}

}  // namespace
}  // namespace dorn
