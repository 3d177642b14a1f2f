#include "fileops/slots.h"

#include "fileops/slots_window.h"
#include "platform/spawn.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"
#include "ui/timer.h"

#include <QPointer>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <vector>

namespace dorn {

int n_slots = 0;
std::vector<std::unique_ptr<Slot>> slot;

namespace {

constexpr uint32_t kTimerMs = 250;

Timer slot_delete_timer;
void (*sEnd)() = nullptr;
bool (*sBaseClosed)() = nullptr;

Slot* find_slot(const Widget* panel) {
    const auto found = std::find_if(
        slot.begin(), slot.end(), [panel](const auto& one) { return one->display.panel == panel; });
    return found == slot.end() ? nullptr : found->get();
}

SlotPanel* panel_of(const Slot* one) {
    return static_cast<SlotPanel*>(qt(one->display.panel));
}

// Whether an operation runs or its slot still waits for the timer; one that failed to start doesn't
// count.
bool is_any_running() {
    return std::any_of(slot.begin(), slot.end(),
                       [](const auto& one) { return one->op != nullptr || one->removed != 0; });
}

void end_program() {
    if (sEnd != nullptr) sEnd();
}

void slot_pause_cb(Widget* panel, bool set) {
    Slot* one = find_slot(panel);
    if (one == nullptr || one->op == nullptr) return;
    one->op->paused = set ? 1 : 0;
    panel_of(one)->set_look(set ? SlotPanel::Look::Paused : SlotPanel::Look::Running);
}

void cancel(Slot* one) {
    one->op->cancelled = 1;
    panel_of(one)->set_look(SlotPanel::Look::Cancelling);
}

// The operation may end while the question is up, and its panel go with the question.
void slot_cancel_cb(Widget* panel) {
    Slot* one = find_slot(panel);
    if (one == nullptr) return;
    if (one->op == nullptr) {
        if (one->removed == 0) slot_remove(panel);
        return;
    }
    const int32_t paused = one->op->paused.exchange(1);
    const QPointer<QWidget> alive(qt(panel));
    const int answer = ui_alert(panel, "File Operation",
                                "Do you want to terminate this operation ? ", "@&Yes|#&No");
    one = alive ? find_slot(panel) : nullptr;
    if (one == nullptr || one->op == nullptr) return;
    one->op->paused = paused;
    if (answer == 1) cancel(one);
}

// Has every running instance re-read its list: this one, too, where there is nothing to tell the
// others with.
void refresh_instances() {
    const char* path = std::getenv("PATH");
    if (find_program("zap", path == nullptr ? "" : path).empty()) {
        std::raise(SIGWINCH);
        return;
    }
    spawn_program("/bin/sh", {"sh", "-c", "zap -f -s SIGWINCH dorn >/dev/null 2>&1"});
}

}  // namespace

const SlotDisplay* slot_add() {
    if (n_slots >= kMaxSlots) {
        errno = ENOMEM;
        return nullptr;
    }
    SlotPanel* panel = slots_window_add();
    auto one = std::make_unique<Slot>();
    one->display = panel->display();
    Widget* const name = one->display.panel;
    QObject::connect(panel->pause_button(), &QToolButton::toggled,
                     [name](bool set) { slot_pause_cb(name, set); });
    QObject::connect(panel->cancel_button(), &QPushButton::clicked,
                     [name] { slot_cancel_cb(name); });
    if (slot.empty())
        wtimer_attach(
            &slot_delete_timer, kTimerMs, [](Timer*, void*) { slot_timer(); }, nullptr);
    slot.insert(slot.begin(), std::move(one));
    n_slots = static_cast<int>(slot.size());
    return &slot.front()->display;
}

void slot_set_op(Widget* panel, FileOp* op) {
    Slot* one = find_slot(panel);
    if (one == nullptr) return;
    one->op = op;
    if (op == nullptr) panel_of(one)->set_look(SlotPanel::Look::Failed);
}

void slot_mark_removed(Widget* panel) {
    ui_handed([panel] {
        Slot* one = find_slot(panel);
        if (one == nullptr) return;
        one->op = nullptr;
        one->removed = 1;
    });
}

int slot_remove(Widget* panel) {
    const auto found = std::find_if(
        slot.begin(), slot.end(), [panel](const auto& one) { return one->display.panel == panel; });
    if (found == slot.end()) return -1;
    const std::unique_ptr<Slot> gone = std::move(*found);
    slot.erase(found);
    n_slots = static_cast<int>(slot.size());
    gone->display.ticket.close();
    slots_window_remove(panel_of(gone.get()));
    if (slot.empty()) wtimer_detach(&slot_delete_timer);
    return 0;
}

void slot_timer() {
    std::vector<Widget*> ended;
    for (const auto& one : slot) {
        if (one->removed != 0) ended.push_back(one->display.panel);
    }
    for (Widget* panel : ended)
        slot_remove(panel);
    if (!ended.empty()) refresh_instances();
    if (!is_any_running() && sBaseClosed != nullptr && sBaseClosed()) end_program();
}

void slot_terminate_all(int count) {
    if (!is_any_running()) return end_program();
    for (const auto& one : slot) {
        if (count-- <= 0) break;
        if (one->op != nullptr) cancel(one.get());
    }
    ui_close_questions();
}

void slot_set_exit_cb(void (*end)(), bool (*base_closed)()) {
    sEnd = end;
    sBaseClosed = base_closed;
}

void slots_show() {
    slots_window_raise();
}

}  // namespace dorn
