#include "fileops/slots_window.h"

#include "ui/qt_widget.h"
#include "ui_slots_holder.h"

#include <QCloseEvent>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>

namespace dorn {

namespace {

constexpr int kMostWidth = 1200;    // pixels
constexpr int kSpaceBelow = 50;     // pixels of the workspace that the window leaves free
constexpr int kScrollBarRoom = 15;  // pixels

void (*sChanged)() = nullptr;
bool (*sIsLast)() = nullptr;

void tell_changed() {
    if (sChanged != nullptr) sChanged();
}

class SlotsWindow : public QWidget {
  public:
    SlotsWindow() {
        layout_.setupUi(this);
        setWindowIcon(ui_icon("dorn", "system-file-manager"));
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_QuitOnClose, false);
        ui_register_instances(this);
        const QRect workspace = screen()->availableGeometry();
        most_height_ = workspace.height() - kSpaceBelow - workspace.top();
    }

    SlotPanel* add() {
        auto* panel = new SlotPanel(layout_.slots_column);
        layout_.slots_column_layout->insertWidget(0, panel);
        if (slot_size_.isEmpty()) measure(panel);
        panel->show();
        ++panels_;
        fit();
        return panel;
    }

    // The panel may be in the middle of telling of a press of its button.
    void take(SlotPanel* panel) {
        layout_.slots_column_layout->removeWidget(panel);
        panel->hide();
        panel->deleteLater();
        --panels_;
        fit();
    }

    bool is_empty() const {
        return panels_ == 0;
    }

  protected:
    void closeEvent(QCloseEvent* event) override {
        if (!is_empty() && sIsLast != nullptr && sIsLast()) {
            event->ignore();
            showMinimized();
        }
    }
    void hideEvent(QHideEvent* event) override {
        QWidget::hideEvent(event);
        tell_changed();
    }
    void showEvent(QShowEvent* event) override {
        QWidget::showEvent(event);
        tell_changed();
    }

  private:
    void measure(SlotPanel* panel) {
        slot_size_ = {panel->sizeHint().expandedTo(panel->minimumSize()).width(), panel->height()};
        most_height_ -= most_height_ % slot_size_.height();
        layout_.slots_holder->verticalScrollBar()->setSingleStep(slot_size_.height());
    }

    void fit() {
        const int height = panels_ * slot_size_.height();
        const int bar = height > most_height_ ? kScrollBarRoom : 0;
        resize(qMin(slot_size_.width() + bar, kMostWidth), qMin(height, most_height_));
        // It grows downwards, and may have been put near the lower edge.
        const int below = frameGeometry().bottom() - screen()->availableGeometry().bottom();
        if (isVisible() && below > 0) move(x(), qMax(y() - below, 0));
    }

    Ui::SlotsHolder layout_;
    QSize slot_size_;  // measured once, from the first
    int most_height_ = 0;
    int panels_ = 0;
};

QPointer<SlotsWindow> sHolder;

}  // namespace

SlotPanel* slots_window_add() {
    if (!sHolder) sHolder = new SlotsWindow;
    SlotPanel* panel = sHolder->add();
    sHolder->show();
    return panel;
}

void slots_window_remove(SlotPanel* panel) {
    if (!sHolder) return;
    sHolder->take(panel);
    if (!sHolder->is_empty()) return;
    SlotsWindow* empty = sHolder;
    sHolder.clear();
    empty->hide();
    empty->deleteLater();
}

void slots_window_raise() {
    if (!sHolder) return;
    if (sHolder->isMinimized())
        sHolder->showNormal();
    else
        sHolder->show();
    sHolder->raise();
    sHolder->activateWindow();
}

bool slots_window_is_hidden() {
    return sHolder && !sHolder->isVisible();
}

void slots_window_set_hidden_cb(void (*changed)(), bool (*is_last)()) {
    sChanged = changed;
    sIsLast = is_last;
}

}  // namespace dorn
