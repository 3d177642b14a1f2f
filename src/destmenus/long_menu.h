// A menu with a list of any length in it. Event-loop thread only.
//
// Only as many of the list's entries are actions of the menu as fit the screen; between two rows
// that tell how many more there are, these stand for a window of the list. It is moved by pointing
// at those rows, by clicking them (a page), by the wheel, by the keys and by typing the beginning
// of an entry. So opening and filling cost the same for ten entries and for a million.
//
// Actions that were put into the menu before the list stay above it.
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QMenu>

#include <cstddef>
#include <optional>

namespace dorn {

class LongMenu : public QMenu {
  public:
    explicit LongMenu(QWidget* parent);

    /// Shows a list of `length` entries in place of the one before. `current` is where the entry
    /// that was the active one is in it, if it still is; it keeps its place on the screen where it
    /// can.
    void set_length(std::size_t length, std::optional<std::size_t> current = std::nullopt);

    /// Shows the entries' present look.
    void refresh();

    /// The entry under the pointer or the keyboard's bar, if it is one.
    std::optional<std::size_t> current() const;
    /// Makes that entry the active one and brings it into sight. Opens nothing.
    void go_to(std::size_t index);

    /// Whether the submenu of an entry is open.
    bool has_open_submenu() const;
    /// Forgets the submenu of an entry, for when it goes.
    void forget_submenu(const QMenu* submenu);

    /// The entries that are in sight: the index of the first, and how many.
    std::size_t first_shown() const {
        return top_;
    }
    std::size_t shown() const {
        return static_cast<std::size_t>(slots_.size());
    }
    QAction* action_of(std::size_t index) const;

    /// Takes the menu's present size and moves it to where all of it is on the screen.
    void fit_screen();

  protected:
    struct Row {
        QString text;  // plain
        bool opens;    // drawn with the arrow of a submenu
        bool faint;    // drawn in grey
    };
    /// How an entry looks.
    virtual Row row(std::size_t index) const = 0;
    /// The submenu of an entry that is being pointed at or opened; null for a plain one.
    virtual QMenu* arm(std::size_t index) = 0;
    /// The entry was chosen: by Enter, by a double click, and by a click on a plain one.
    virtual void activate(std::size_t index) = 0;

    void actionEvent(QActionEvent* event) override;
    void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    std::size_t capacity() const;
    void make_slots(std::size_t count);
    void make_more_rows(bool windowed);
    void show_more_rows();
    void show_window(std::size_t top);
    void scroll(long long rows);
    std::optional<std::size_t> entry_of(const QAction* action) const;
    void armed(QAction* action);
    void make_active(QAction* action);
    QAction* action_under(const QMouseEvent& event) const;
    QList<QAction*> fixed_actions() const;
    void go_to_place(const QList<QAction*>& fixed, qsizetype place);
    bool move_by_key(int key);
    bool find_typed(const QString& text);

    std::size_t length_ = 0;
    std::size_t top_ = 0;       // entry of the first slot
    QList<QAction*> slots_;     // the actions that stand for entries
    QAction* above_ = nullptr;  // tells how many more there are; null where all are in sight
    QAction* below_ = nullptr;
    bool quiet_ = false;   // changes of actions don't make a new layout
    bool by_key_ = false;  // an action becomes active without its submenu
    bool opened_by_key_ = false;
    std::optional<std::size_t> pressed_;  // the entry of the last press that was no double click
    QElapsedTimer pressed_since_;
    bool double_click_ = false;
    int wheel_ = 0;  // what has been turned of a row
    QBasicTimer scroll_timer_;
    int scroll_ticks_ = 0;
    QString typed_;
    QElapsedTimer typed_since_;
};

}  // namespace dorn
