// The operations window and the gate under it, with operations that only report, ask and pause.
#include "fileops/slots.h"

#include "fileops/engine/progress.h"
#include "fileops/engine/prompts.h"
#include "fileops/long_filename.h"
#include "fileops/slot_panel.h"
#include "fileops/slots_window.h"
#include "support/fake_programs.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <cerrno>
#include <gtest/gtest.h>
#include <thread>

namespace dorn {
namespace {

// An operation without files. It goes on until `finish` is set or it is cancelled.
struct FakeOperation {
    struct Work {
        std::atomic<bool> finish{false};
        std::atomic<int> asks{0};    // questions that it is still to ask
        std::atomic<int> answer{0};  // the last one's
    };

    FakeOperation() {
        const SlotDisplay* display = slot_add();
        panel = display->panel;
        auto* op = new FileOp{};
        op->display = new SlotDisplay(*display);
        std::thread([op, what = what] { work(op, *what); }).detach();
        slot_set_op(panel, op);
    }
    static void work(FileOp* op, Work& what) {
        while (!what.finish && fop_pause_trap(op) == 0) {
            fop_update_info(op, "Copying", "From: ", "/home/user/a", "To: ", "/tmp/a", 40, 75);
            if (what.asks > 0) {
                --what.asks;
                what.answer = fop_alert(op, "Copy", "&Skip|@&Overwrite|#&Abort", "%s exists.", "a");
            }
            std::this_thread::yield();
        }
        slot_mark_removed(op->display->panel);
        delete op->display;
        delete op;
    }
    SlotPanel* shown() const {
        return static_cast<SlotPanel*>(qt(panel));
    }
    FileOp* op() const {
        for (const auto& one : slot) {
            if (one->display.panel == panel) return one->op;
        }
        return nullptr;
    }

    Widget* panel;
    std::shared_ptr<Work> what = std::make_shared<Work>();
};

bool wait_until(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, 20000);
}

QWidget* question() {
    return QApplication::activeModalWidget();
}

// Runs `act` once from the event loop while a question is up.
void while_asked(std::function<void()> act) {
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act = std::move(act)] {
        if (question() == nullptr) return;
        timer->stop();
        timer->deleteLater();
        act();
    });
    timer->start(1);
}

int sEnded = 0;
bool sClosed = false;

class Slots : public ::testing::Test {
  protected:
    void SetUp() override {
        fakes_.add("zap");
        sEnded = 0;
        sClosed = false;
        slot_set_exit_cb([] { ++sEnded; }, [] { return sClosed; });
    }
    void TearDown() override {
        for (const auto& one : slot) {
            if (one->op != nullptr) one->op->cancelled = 1;
        }
        ui_close_questions();
        EXPECT_TRUE(wait_until([] {
            for (std::size_t i = 0; i < slot.size(); ++i) {
                if (slot[i]->op == nullptr) slot_remove(slot[i--]->display.panel);
            }
            return n_slots == 0;
        }));
        FakePrograms::wait();
    }

    FakePrograms fakes_;
};

TEST_F(Slots, TheNewestIsAtTheTopOfAWindowThatScrollsAndThereIsALimit) {
    std::vector<Widget*> panels;
    for (int i = 0; i < kMaxSlots; ++i)
        panels.push_back(slot_add()->panel);
    errno = 0;
    EXPECT_EQ(slot_add(), nullptr);
    EXPECT_EQ(errno, ENOMEM);
    QApplication::processEvents();
    const int height = qt(panels[0])->height();
    for (int i = 0; i < kMaxSlots; ++i)
        EXPECT_EQ(qt(panels[std::size_t(i)])->y(), (kMaxSlots - 1 - i) * height);
    const QWidget* window = qt(panels[0])->window();
    EXPECT_LT(window->height(), kMaxSlots * height);
    while (n_slots > 1)
        slot_remove(panels[std::size_t(n_slots) - 1]);
    EXPECT_EQ(window->height(), height);
    EXPECT_EQ(slot_remove(panels[0]), 0);
    EXPECT_EQ(slot_remove(panels[0]), -1);
}

TEST_F(Slots, TheCancelQuestionHaltsTheOperationAndLeavesItAsItsAnswerSays) {
    const struct {
        bool paused;
        Qt::Key key;
        bool cancelled;
    } rows[] = {{false, Qt::Key_Escape, false},
                {true, Qt::Key_Escape, false},
                {true, Qt::Key_Return, true},
                {false, Qt::Key_Return, true}};
    for (const auto& row : rows) {
        const FakeOperation operation;
        if (row.paused) operation.shown()->pause_button()->click();
        EXPECT_EQ(operation.op()->paused != 0, row.paused);
        while_asked([&] {
            EXPECT_NE(operation.op()->paused, 0);
            QTest::keyClick(question(), row.key);
        });
        operation.shown()->cancel_button()->click();
        FileOp* op = operation.op();
        ASSERT_NE(op, nullptr);
        EXPECT_EQ(op->paused != 0, row.paused);
        EXPECT_EQ(op->cancelled != 0, row.cancelled);
        EXPECT_EQ(operation.shown()->cancel_button()->isEnabled(), !row.cancelled);
        operation.what->finish = true;
        op->cancelled = 1;
        EXPECT_TRUE(wait_until([] { return n_slots == 0; }));
    }
}

TEST_F(Slots, AnOperationThatEndsTakesItsCancelQuestionWithIt) {
    const FakeOperation ending;
    const FakeOperation other;
    while_asked([&] { ending.op()->cancelled = 1; });
    ending.shown()->cancel_button()->click();
    EXPECT_EQ(question(), nullptr);
    EXPECT_EQ(n_slots, 1);
    EXPECT_EQ(other.op()->cancelled, 0);
}

TEST_F(Slots, TheLongNameDialogGivesTheNameTypedOrSkips) {
    const FakeOperation asking;
    const std::tuple<const char*, const char*, int, const char*> rows[] = {
        {"long_filename_rename", "shorter", 1, "shorter"},
        {"long_filename_rename", "", 1, "proposed\xff"},
        {"long_filename_rename", "?proposed?", 1, "proposed\xff"},
        {"long_filename_skip", "shorter", 0, "proposed\xff"}};
    for (const auto& [button, typed, renames, name] : rows) {
        newfile = "proposed\xff";
        do_rename = 0;
        while_asked([button = button, typed = typed] {
            for (QWidget* control : QApplication::activeModalWidget()->findChildren<QWidget*>()) {
                if (!control->isVisible() || control->focusPolicy() == Qt::NoFocus) continue;
                const auto* told = QAccessible::queryAccessibleInterface(control);
                EXPECT_FALSE(told->text(QAccessible::Name).isEmpty()) << "for a screen reader";
            }
            qt_instance<QLineEdit>("long_filename_newname")->setText(QString::fromUtf8(typed));
            qt_instance<QPushButton>(button)->click();
        });
        long_filename_ask(asking.panel);
        EXPECT_EQ(do_rename, renames);
        EXPECT_EQ(newfile, name);
    }
}

TEST_F(Slots, OthersEndAndAreRemovedWhileOneWaitsForAnAnswer) {
    const FakeOperation asking;
    const std::vector<FakeOperation> others(5);
    bool removed = false;
    asking.what->asks = 1;
    while_asked([&] {
        for (const FakeOperation& other : others)
            other.what->finish = true;
        removed = wait_until([] { return n_slots == 1; });
        QTest::keyClick(question(), Qt::Key_Return);
    });
    EXPECT_TRUE(wait_until([&] { return asking.what->answer != 0; }));
    EXPECT_TRUE(removed);
    EXPECT_EQ(asking.what->answer, 2);
}

TEST_F(Slots, EveryInstanceIsToldOnceForAllThatEndedTogether) {
    const std::vector<FakeOperation> operations(3);
    for (const FakeOperation& operation : operations)
        operation.what->finish = true;
    for (const FakeOperation& operation : operations)
        while (operation.op() != nullptr)
            ui_serve_gate();
    slot_timer();
    slot_timer();
    EXPECT_EQ(n_slots, 0);
    FakePrograms::wait();
    EXPECT_EQ(fakes_.runs("zap"), (FakePrograms::Runs{{"-f", "-s", "SIGWINCH", "dorn"}}));
    EXPECT_EQ(sEnded, 0);
}

TEST_F(Slots, AFailedOneGoesByItsButtonAndKeepsNoProgramAlive) {
    slot_terminate_all(n_slots);
    EXPECT_EQ(sEnded, 1);
    const SlotDisplay* failed = slot_add();
    slot_set_op(failed->panel, nullptr);
    const FakeOperation running;
    sClosed = true;
    slot_terminate_all(n_slots);
    EXPECT_TRUE(wait_until([] { return sEnded > 1; }));
    EXPECT_EQ(running.op(), nullptr);
    EXPECT_EQ(n_slots, 1);
    static_cast<SlotPanel*>(qt(failed->panel))->cancel_button()->click();
    EXPECT_EQ(n_slots, 0);
}

TEST_F(Slots, AClosedWindowComesBackWhenAskedForAndWithTheNextOperation) {
    const FakeOperation first;
    QWidget* window = first.shown()->window();
    EXPECT_TRUE(window->isVisible());
    for (const bool by_operation : {false, true}) {
        window->close();
        EXPECT_TRUE(slots_window_is_hidden());
        if (by_operation)
            FakeOperation();
        else
            slots_show();
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_NE(first.op(), nullptr);
}

}  // namespace
}  // namespace dorn
