// An editable combo box over an input history that goes somewhere only when it is told to: by Enter
// or by a choice from its list. Event-loop thread only.
#pragma once

#include <QComboBox>
#include <QKeyEvent>
#include <QObject>

#include <functional>

namespace dorn {

/// Watches one combo box, whose child it is. What a stock combo box does beside Enter and choice
/// (matching a history entry when the focus leaves, in any case; stepping through the history by
/// arrow key or wheel, each step acting like a choice) is taken from it.
class EntryField : public QObject {
  public:
    explicit EntryField(QComboBox* combo);

    /// Looks at each key press first; true when the key is used up.
    std::function<bool(QKeyEvent* event)> on_key;
    /// Called for what interrupts a sequence of keys: a mouse button, the focus leaving.
    std::function<void()> on_interrupt;
    /// Called soon after the palette has changed.
    std::function<void()> on_palette;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// While a key press is being handled: the length that the text had without its selected part;
    /// -1 otherwise.
    qsizetype length_before_key() const {
        return length_before_key_;
    }

  private:
    bool key_pressed(QObject* watched, QKeyEvent* event);

    QComboBox* combo_;
    qsizetype length_before_key_ = -1;
};

}  // namespace dorn
