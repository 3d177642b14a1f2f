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

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <cerrno>
#include <gtest/gtest.h>
#include <thread>

namespace dorn {
namespace {

// What a worker does beside its files. It goes on until `finish` is set or it is cancelled.
struct FakeWork {
    std::atomic<bool> finish{false};
    std::atomic<int> asks{0};    // questions that it is still to ask
    std::atomic<int> answer{0};  // the last one's
    std::atomic<bool> ended{false};
};

void work(FileOp* op, const std::shared_ptr<FakeWork>& what) {
    while (!what->finish && fop_pause_trap(op) == 0) {
        fop_update_info(op, "Copying", "From: ", "/home/user/a", "To: ", "/tmp/a", 40, 75);
        if (what->asks > 0) {
            --what->asks;
            what->answer = fop_alert(op, "Copy", "&Skip|@&Overwrite|#&Abort", "%s exists.", "a");
        }
        std::this_thread::yield();
    }
    slot_mark_removed(op->display->panel);
    delete op->display;
    delete op;
    what->ended = true;
}

struct FakeOperation {
    Widget* panel = nullptr;
    std::shared_ptr<FakeWork> what = std::make_shared<FakeWork>();

    static FakeOperation start() {
        FakeOperation operation;
        const SlotDisplay* display = slot_add();
        if (display == nullptr) return operation;
        operation.panel = display->panel;
        auto* op = new FileOp{};
        op->total_files = 3;
        op->display = new SlotDisplay(*display);
        std::thread([op, what = operation.what] { work(op, what); }).detach();
        slot_set_op(operation.panel, op);
        return operation;
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
};

bool wait_until(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, 20000);
}

QMessageBox* question() {
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
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

TEST_F(Slots, TheNewestIsAtTheTopAndTheWindowGrowsWithThemUpToItsLimit) {
    std::vector<Widget*> panels;
    for (int i = 0; i < kMaxSlots; ++i)
        panels.push_back(slot_add()->panel);
    errno = 0;
    EXPECT_EQ(slot_add(), nullptr);
    EXPECT_EQ(errno, ENOMEM);
    const auto* area = qt_instance<QScrollArea>("slots_holder");
    ASSERT_NE(area, nullptr);
    QApplication::processEvents();
    const int height = qt(panels[0])->height();
    for (int i = 0; i < kMaxSlots; ++i)
        EXPECT_EQ(qt(panels[std::size_t(i)])->y(), (kMaxSlots - 1 - i) * height);
    const int full_width = area->window()->width();
    EXPECT_EQ(area->window()->height() % height, 0);
    EXPECT_EQ(area->verticalScrollBar()->singleStep(), height);
    while (n_slots > 1)
        slot_remove(panels[std::size_t(n_slots) - 1]);
    EXPECT_EQ(area->window()->height(), height);
    EXPECT_EQ(full_width, area->window()->width() + 15);
    EXPECT_EQ(slot_remove(panels[0]), 0);
    EXPECT_EQ(slot_remove(panels[0]), -1);
}

TEST_F(Slots, TheCancelQuestionHaltsTheOperationAndLeavesItAsItsAnswerSays) {
    struct {
        bool paused;
        Qt::Key key;
        bool cancelled;
    } const rows[] = {{false, Qt::Key_Escape, false},
                      {true, Qt::Key_Escape, false},
                      {true, Qt::Key_Return, true},
                      {false, Qt::Key_Return, true}};
    for (const auto& row : rows) {
        const FakeOperation operation = FakeOperation::start();
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
    const FakeOperation ending = FakeOperation::start();
    const FakeOperation other = FakeOperation::start();
    while_asked([&] { ending.op()->cancelled = 1; });
    ending.shown()->cancel_button()->click();
    EXPECT_EQ(question(), nullptr);
    EXPECT_EQ(n_slots, 1);
    EXPECT_EQ(other.op()->cancelled, 0);
}

TEST_F(Slots, TheLongNameDialogGivesTheNameTypedOrSkips) {
    const FakeOperation asking = FakeOperation::start();
    const struct {
        const char* button;
        std::string typed;
        int renames;
        std::string name;
    } rows[] = {{"long_filename_rename", "shorter", 1, "shorter"},
                {"long_filename_rename", "", 1, "proposed\xff"},
                {"long_filename_rename", "?proposed?", 1, "proposed\xff"},
                {"long_filename_skip", "shorter", 0, "proposed\xff"}};
    for (const auto& row : rows) {
        newfile = "proposed\xff";
        do_rename = 0;
        QTimer::singleShot(0, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            dialog->findChild<QLineEdit*>(QStringLiteral("long_filename_newname"))
                ->setText(QString::fromStdString(row.typed));
            dialog->findChild<QPushButton*>(QLatin1String(row.button))->click();
        });
        long_filename_ask(asking.panel);
        EXPECT_EQ(do_rename, row.renames);
        EXPECT_EQ(newfile, row.name);
    }
}

TEST_F(Slots, OthersEndAndAreRemovedWhileOneWaitsForAnAnswer) {
    const FakeOperation asking = FakeOperation::start();
    std::vector<FakeOperation> others;
    for (int i = 0; i < 5; ++i)
        others.push_back(FakeOperation::start());
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
    std::vector<FakeOperation> operations;
    for (int i = 0; i < 3; ++i)
        operations.push_back(FakeOperation::start());
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
    const FakeOperation running = FakeOperation::start();
    sClosed = true;
    slot_terminate_all(n_slots);
    EXPECT_TRUE(wait_until([] { return sEnded > 1; }));
    EXPECT_TRUE(running.what->ended);
    EXPECT_EQ(n_slots, 1);
    static_cast<SlotPanel*>(qt(failed->panel))->cancel_button()->click();
    EXPECT_EQ(n_slots, 0);
}

TEST_F(Slots, AClosedWindowComesBackWhenAskedForAndWithTheNextOperation) {
    const FakeOperation first = FakeOperation::start();
    QWidget* window = first.shown()->window();
    EXPECT_TRUE(window->isVisible());
    for (const bool by_operation : {false, true}) {
        window->close();
        EXPECT_TRUE(slots_window_is_hidden());
        if (by_operation)
            FakeOperation::start();
        else
            slots_show();
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_NE(first.op(), nullptr);
}

}  // namespace
}  // namespace dorn
