// Many real operations on the same few trees at once, handled at random.
#include "config/config.h"
#include "fileops/slot_panel.h"
#include "fileops/slots.h"
#include "fileops/start.h"
#include "support/fake_programs.h"
#include "support/sandbox.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <utility>

namespace dorn {
namespace {

constexpr int kFolders = 8, kFilesEach = 10, kTargets = kMaxSlots / 2;

class Stress : public ::testing::Test {
  protected:
    void SetUp() override {
        fakes_.add("zap");
        before_ = std::exchange(gConfig, &config_);
        slot_set_exit_cb(nullptr, nullptr);
        sandbox_.mkdir("source");
        for (int folder = 0; folder < kFolders; ++folder) {
            names_.push_back("folder" + std::to_string(folder));
            sandbox_.mkdir("source/" + names_.back());
            for (int file = 0; file < kFilesEach; ++file)
                sandbox_.write(file_name(folder, file), std::string(40000, 'x'));
        }
        for (int i = 0; i < kTargets; ++i)
            sandbox_.mkdir("target" + std::to_string(i));
        answers_.callOnTimeout([this] { answer(); });
        answers_.start(1);
    }
    void TearDown() override {
        const auto all_ended = [] {
            for (const auto& one : slot) {
                if (one->op != nullptr) one->op->cancelled = 1;
            }
            return n_slots == 0;
        };
        EXPECT_TRUE(QTest::qWaitFor(all_ended, 60000));
        FakePrograms::wait();
        gConfig = before_;
    }

    static std::string file_name(int folder, int file) {
        return "source/folder" + std::to_string(folder) + "/file" + std::to_string(file);
    }
    int below(int limit) {
        return static_cast<int>(random_() % static_cast<unsigned>(limit));
    }
    // A copy of all into a folder, a move from one folder to another, or a delete there.
    void start() {
        const std::string from = sandbox_.file("target" + std::to_string(below(kTargets)));
        const std::string to = sandbox_.file("target" + std::to_string(below(kTargets)));
        const std::vector<std::string> one = {"folder" + std::to_string(below(kFolders))};
        const int kind = below(4);
        if (kind == 0)
            fop_start_cmd(kFopMove, from.c_str(), one, to.c_str());
        else if (kind == 1)
            fop_start_cmd(kFopDelete, from.c_str(), one, "");
        else
            fop_start_cmd(kFopCopy, sandbox_.file("source").c_str(), names_, to.c_str());
        ++started_;
    }
    void answer() {
        QWidget* question = QApplication::activeModalWidget();
        if (question == nullptr) return;
        if (below(4) == 0) QTest::keyClick(question, Qt::Key_Tab);
        QTest::keyClick(question, below(2) == 0 ? Qt::Key_Return : Qt::Key_Escape);
    }
    void press_a_button() {
        const Slot& one = *slot[std::size_t(below(n_slots))];
        const auto* panel = static_cast<SlotPanel*>(qt(one.display.panel));
        if (below(30) == 0)
            panel->cancel_button()->click();
        else
            panel->pause_button()->click();
    }

    FakePrograms fakes_;
    Sandbox sandbox_;
    Config config_{};
    Config* before_ = nullptr;  // of the tests with a whole window
    std::vector<std::string> names_;
    std::mt19937 random_{7};
    QTimer answers_;
    int started_ = 0;
};

// DORN_STRESS_SECONDS makes it as long as one likes.
TEST_F(Stress, FiftyOperationsPausedResumedAndCancelledAtRandomLeaveTheSourceWhole) {
    const char* seconds = std::getenv("DORN_STRESS_SECONDS");
    const int ms = seconds == nullptr ? 3000 : std::atoi(seconds) * 1000;
    QElapsedTimer since;
    for (since.start(); since.elapsed() < ms; QTest::qWait(1)) {
        while (n_slots < kMaxSlots)
            start();
        press_a_button();
    }
    RecordProperty("operations", started_);
    EXPECT_GT(started_, kMaxSlots);
    for (int folder = 0; folder < kFolders; ++folder) {
        for (int file = 0; file < kFilesEach; ++file)
            EXPECT_EQ(sandbox_.read(file_name(folder, file)).size(), 40000u);
    }
}

}  // namespace
}  // namespace dorn
