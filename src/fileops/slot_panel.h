// The panel of one slot: what the user sees of one operation, and its two buttons. Event-loop
// thread only.
#pragma once

#include "fileops/engine/file_op.h"

#include <QFrame>

#include <memory>

class QPushButton;
class QToolButton;
namespace Ui {
class Slot;
}

namespace dorn {

class SlotPanel : public QFrame {
  public:
    enum class Look { Running, Paused, Cancelling, Failed };

    explicit SlotPanel(QWidget* parent);
    ~SlotPanel() override;

    /// Shows the state: a paused one greyed and with the picture that resumes, one that is being
    /// cancelled without buttons to press, one that failed to start with nothing but its button.
    void set_look(Look look);

    /// The panel's widgets, as the operation's redraws name them.
    SlotDisplay display();

    QToolButton* pause_button() const;
    QPushButton* cancel_button() const;

  private:
    std::unique_ptr<Ui::Slot> layout_;
};

}  // namespace dorn
