#include "fileops/slot_panel.h"

#include "ui/qt_widget.h"
#include "ui_slot.h"

namespace dorn {

namespace {

constexpr int kWidthCharacters = 72;  // a path as the lines show it, and its label

}  // namespace

SlotPanel::SlotPanel(QWidget* parent) : QFrame(parent), layout_(std::make_unique<Ui::Slot>()) {
    layout_->setupUi(this);
    setFixedHeight(sizeHint().height());
    setMinimumWidth(kWidthCharacters * fontMetrics().averageCharWidth());
    ui_register_instances(this);
    set_look(Look::Running);
}

SlotPanel::~SlotPanel() = default;

QToolButton* SlotPanel::pause_button() const {
    return layout_->slot_pause;
}

QPushButton* SlotPanel::cancel_button() const {
    return layout_->cancel_button;
}

void SlotPanel::set_look(Look look) {
    const bool paused = look == Look::Paused;
    const bool failed = look == Look::Failed;
    const bool may_pause = look == Look::Running || paused;
    QToolButton* pause = layout_->slot_pause;
    pause->setIcon(paused ? ui_icon("resume", "media-playback-start")
                          : ui_icon("pause", "media-playback-pause"));
    pause->setToolTip(paused ? QStringLiteral("Resume") : QStringLiteral("Pause"));
    pause->setEnabled(may_pause);
    layout_->slot_progress_bar->setEnabled(look == Look::Running);
    layout_->slot_state_text->setText(paused ? QStringLiteral("Paused") : QString());
    layout_->cancel_button->setEnabled(look != Look::Cancelling);
    layout_->cancel_button->setText(look == Look::Cancelling ? QStringLiteral("Cancelling...")
                                    : failed                 ? QStringLiteral("Close")
                                                             : QStringLiteral("Cancel"));
    if (failed) layout_->slot_header_text->setText(QStringLiteral("Failed to start operation!"));
}

SlotDisplay SlotPanel::display() {
    SlotDisplay display;
    display.progress_bar = handle(layout_->slot_progress_bar);
    display.title_text = handle(layout_->slot_header_text);
    display.time_text = handle(layout_->slot_time_text);
    display.from_widget = handle(layout_->slot_from_text);
    display.to_widget = handle(layout_->slot_to_text);
    display.count_text = handle(layout_->slot_n_text);
    display.cancel_button = handle(layout_->cancel_button);
    display.panel = handle(this);
    return display;
}

}  // namespace dorn
