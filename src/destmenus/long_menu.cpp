#include "destmenus/long_menu.h"

#include "ui/qt_widget.h"

#include <QActionEvent>
#include <QApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStyle>
#include <QStyleOptionMenuItem>

#include <algorithm>

namespace dorn {

namespace {

constexpr QColor kFaint(0x90, 0x90, 0x90);
constexpr int kScrollMs = 60;
constexpr int kTicksToSpeedUp = 8;   // pointing for so long moves one row more at a time
constexpr int kFastestScroll = 200;  // rows a tick
constexpr std::size_t kFewestRows = 4;
constexpr int kWidestRowEms = 60;
constexpr qint64 kTypingPauseMs = 1000;
constexpr int kWheelRows = 3;  // a notch
constexpr int kWheelNotch = 120;

int tick_rows(int ticks) {
    return std::min(1 + ticks / kTicksToSpeedUp * (ticks / kTicksToSpeedUp), kFastestScroll);
}

QString more_text(const char16_t* arrow, std::size_t count) {
    const QString text = QString::fromUtf16(arrow);
    return count == 0 ? text : text + QStringLiteral("  %1 more").arg(count);
}

}  // namespace

LongMenu::LongMenu(QWidget* parent) : QMenu(parent) {}

std::size_t LongMenu::capacity() const {
    QStyleOptionMenuItem option;
    option.initFrom(this);
    option.menuItemType = QStyleOptionMenuItem::Normal;
    option.font = font();
    const QSize text(1, fontMetrics().height());
    const int row_height =
        std::max(1, style()->sizeFromContents(QStyle::CT_MenuItem, &option, text, this).height());
    const int frame = style()->pixelMetric(QStyle::PM_MenuPanelWidth, nullptr, this) +
                      style()->pixelMetric(QStyle::PM_MenuVMargin, nullptr, this) +
                      style()->pixelMetric(QStyle::PM_MenuDesktopFrameWidth, nullptr, this);
    const int rows = (screen()->availableGeometry().height() - 2 * frame) / row_height;
    const qsizetype others = fixed_actions().size();
    return static_cast<std::size_t>(
        std::max<qsizetype>(static_cast<qsizetype>(kFewestRows), rows - others));
}

void LongMenu::make_more_rows(bool windowed) {
    if (windowed == (above_ != nullptr)) return;
    if (!windowed) {
        delete std::exchange(above_, nullptr);
        delete std::exchange(below_, nullptr);
        return;
    }
    above_ = new QAction(this);
    below_ = new QAction(this);
    insertAction(slots_.isEmpty() ? nullptr : slots_.front(), above_);
    addAction(below_);
    for (QAction* more : {above_, below_}) {
        QObject::connect(more, &QAction::hovered, this, [this] {
            scroll_ticks_ = 0;
            scroll_timer_.start(kScrollMs, this);
        });
    }
}

void LongMenu::make_slots(std::size_t count) {
    while (shown() > count)
        delete slots_.takeLast();
    while (shown() < count) {
        auto* action = new QAction(this);
        insertAction(below_, action);
        slots_.append(action);
        QObject::connect(action, &QAction::hovered, this, [this, action] { armed(action); });
        QObject::connect(action, &QAction::triggered, this, [this, action] {
            if (const std::optional<std::size_t> entry = entry_of(action)) activate(*entry);
        });
    }
}

void LongMenu::show_more_rows() {
    if (above_ == nullptr) return;
    const std::size_t before = top_;
    const std::size_t behind = length_ - top_ - shown();
    above_->setText(more_text(u"\u25B2", before));
    above_->setEnabled(before > 0);
    below_->setText(more_text(u"\u25BC", behind));
    below_->setEnabled(behind > 0);
}

// Gives the slots the entries from `top` on; the slot of an open submenu keeps it.
void LongMenu::show_window(std::size_t top) {
    const QScopedValueRollback<bool> quiet(quiet_, true);
    top_ = std::min(top, length_ - shown());
    const int widest = kWidestRowEms * fontMetrics().averageCharWidth();
    for (std::size_t i = 0; i < shown(); ++i) {
        QAction* action = slots_[static_cast<qsizetype>(i)];
        if (action->menu() != nullptr && !action->menu()->isVisible()) action->setMenu(nullptr);
        const QString text = row(top_ + i).text;
        action->setText(fontMetrics()
                            .elidedText(text, Qt::ElideMiddle, widest)
                            .replace(u'&', QStringLiteral("&&")));
    }
    show_more_rows();
}

void LongMenu::set_length(std::size_t length, std::optional<std::size_t> current) {
    const std::optional<std::size_t> before = this->current();
    const std::size_t slot = before ? *before - top_ : 0;
    length_ = length;
    const std::size_t fit = capacity();
    const bool windowed = length_ > fit;
    make_more_rows(windowed);
    make_slots(windowed ? fit - 2 : length_);
    std::size_t top = std::min(top_, length_ - shown());
    if (before && current) top = *current > slot ? *current - slot : 0;
    show_window(top);
    if (isVisible() && before && current && this->current() != current) go_to(*current);
    if (isVisible() && opened_by_key_ && activeAction() == nullptr) go_to(0);
    fit_screen();
}

void LongMenu::refresh() {
    show_window(top_);
    update();
}

std::optional<std::size_t> LongMenu::entry_of(const QAction* action) const {
    const qsizetype slot = slots_.indexOf(action);
    if (slot < 0) return std::nullopt;
    return top_ + static_cast<std::size_t>(slot);
}

std::optional<std::size_t> LongMenu::current() const {
    return entry_of(activeAction());
}

QAction* LongMenu::action_of(std::size_t index) const {
    if (index < top_ || index - top_ >= shown()) return nullptr;
    return slots_[static_cast<qsizetype>(index - top_)];
}

// QMenu opens the submenu of an action that is made active, so it has none at that moment.
void LongMenu::make_active(QAction* action) {
    const QScopedValueRollback<bool> quiet(quiet_, true);
    const QScopedValueRollback<bool> by_key(by_key_, true);
    if (slots_.contains(action)) action->setMenu(static_cast<QMenu*>(nullptr));
    setActiveAction(action);
}

void LongMenu::go_to(std::size_t index) {
    if (index >= length_) return;
    const auto at = static_cast<long long>(index);
    const auto first = static_cast<long long>(top_);
    const auto end = first + static_cast<long long>(shown());
    if (at < first)
        scroll(at - first);
    else if (at >= end)
        scroll(at - end + 1);
    make_active(action_of(index));
}

// Moves the window over the list.
void LongMenu::scroll(long long rows) {
    const auto last = static_cast<long long>(length_ - shown());
    const auto top = std::clamp(static_cast<long long>(top_) + rows, 0LL, last);
    if (static_cast<std::size_t>(top) == top_) return;
    for (const QAction* action : slots_) {
        if (action->menu() != nullptr) action->menu()->hide();
    }
    show_window(static_cast<std::size_t>(top));
    fit_screen();
}

bool LongMenu::has_open_submenu() const {
    return std::any_of(slots_.begin(), slots_.end(), [](const QAction* action) {
        return action->menu() != nullptr && action->menu()->isVisible();
    });
}

void LongMenu::forget_submenu(const QMenu* submenu) {
    const QScopedValueRollback<bool> quiet(quiet_, true);
    for (QAction* action : slots_) {
        if (action->menu() == submenu) action->setMenu(static_cast<QMenu*>(nullptr));
    }
}

void LongMenu::armed(QAction* action) {
    const std::optional<std::size_t> entry = entry_of(action);
    if (by_key_ || !entry || action->menu() != nullptr) return;
    QMenu* submenu = arm(*entry);
    if (submenu == nullptr) return;
    const QScopedValueRollback<bool> quiet(quiet_, true);
    action->setMenu(submenu);
}

void LongMenu::fit_screen() {
    if (!isVisible()) return;
    QActionEvent changed(QEvent::ActionChanged, actions().value(0));
    QMenu::actionEvent(&changed);  // a new layout, for all that has changed
    const QSize size = sizeHint();
    // Never narrower than it was: a window that moves over the list would change its width.
    setMinimumWidth(std::max(minimumWidth(), size.width()));
    resize(size.expandedTo(QSize(minimumWidth(), 0)));
    const QRect area = screen()->availableGeometry();
    QPoint at = pos();
    const auto* above = qobject_cast<const QMenu*>(parentWidget());
    const bool beyond = at.x() + width() > area.right() + 1;
    if (above != nullptr && above->isVisible() && (beyond || at.x() < above->x()))
        at.setX(above->x() - width());
    at.setX(std::max(area.left(), at.x()));
    at.setY(std::max(area.top(), std::min(at.y(), area.bottom() + 1 - height())));
    move(at);
    update();
}

QList<QAction*> LongMenu::fixed_actions() const {
    QList<QAction*> fixed;
    for (QAction* action : actions()) {
        if (action != above_ && action != below_ && !slots_.contains(action)) fixed.append(action);
    }
    return fixed;
}

// Of an action only its text matters to the layout, and that is made anew by fit_screen.
void LongMenu::actionEvent(QActionEvent* event) {
    if (quiet_ && event->type() == QEvent::ActionChanged) return;
    QMenu::actionEvent(event);
}

void LongMenu::initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const {
    QMenu::initStyleOption(option, action);
    const std::optional<std::size_t> entry = entry_of(action);
    if (!entry || *entry >= length_) return;
    const Row look = row(*entry);
    option->menuItemType =
        look.opens ? QStyleOptionMenuItem::SubMenu : QStyleOptionMenuItem::Normal;
    if (!look.faint) return;
    for (const QPalette::ColorRole role :
         {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        option->palette.setColor(role, kFaint);
}

// The places of the keyboard's bar are the fixed items that can be chosen, then the entries.
void LongMenu::go_to_place(const QList<QAction*>& fixed, qsizetype place) {
    if (place < fixed.size())
        make_active(fixed[place]);
    else
        go_to(static_cast<std::size_t>(place - fixed.size()));
}

bool LongMenu::move_by_key(int key) {
    QList<QAction*> fixed = fixed_actions();
    fixed.removeIf([](const QAction* a) { return a->isSeparator() || !a->isEnabled(); });
    const qsizetype places = fixed.size() + static_cast<qsizetype>(length_);
    if (places == 0) return false;
    const std::optional<std::size_t> entry = current();
    const qsizetype place =
        entry ? fixed.size() + static_cast<qsizetype>(*entry) : fixed.indexOf(activeAction());
    const auto page = static_cast<qsizetype>(std::max<std::size_t>(shown(), 2) - 1);
    switch (key) {
        case Qt::Key_Up:
            go_to_place(fixed, place <= 0 ? places - 1 : place - 1);
            return true;
        case Qt::Key_Down:
            go_to_place(fixed, (place + 1) % places);
            return true;
        case Qt::Key_PageUp:
            go_to_place(fixed, std::max<qsizetype>(place - page, 0));
            return true;
        case Qt::Key_PageDown:
            go_to_place(fixed, std::min(place + page, places - 1));
            return true;
        case Qt::Key_Home:
            go_to_place(fixed, 0);
            return true;
        case Qt::Key_End:
            go_to_place(fixed, places - 1);
            return true;
        default:
            return false;
    }
}

// Goes to the first entry that begins with what has been typed; where mnemonics are in the menu,
// letters are theirs.
bool LongMenu::find_typed(const QString& text) {
    if (!typed_since_.isValid() || typed_since_.elapsed() > kTypingPauseMs) typed_.clear();
    if (text.isEmpty() || !text.front().isPrint() || !fixed_actions().isEmpty()) return false;
    if (typed_.isEmpty() && text.front().isSpace()) return false;
    typed_since_.start();
    typed_ += text;
    for (std::size_t i = 0; i < length_; ++i) {
        if (!row(i).text.startsWith(typed_, Qt::CaseInsensitive)) continue;
        go_to(i);
        break;
    }
    return true;
}

void LongMenu::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const std::optional<std::size_t> entry = current();
    if (entry && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        activate(*entry);
        return;
    }
    const bool held = (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0;
    if (!held && (move_by_key(key) || find_typed(event->text()))) return;
    const bool open = entry && key == (isRightToLeft() ? Qt::Key_Left : Qt::Key_Right);
    if (open) armed(activeAction());
    QMenu::keyPressEvent(event);
    if (!open || activeAction() == nullptr) return;
    if (auto* submenu = dynamic_cast<LongMenu*>(activeAction()->menu()))
        submenu->opened_by_key_ = true;
}

QAction* LongMenu::action_under(const QMouseEvent& event) const {
    const QPoint at = event.position().toPoint();
    return rect().contains(at) ? actionAt(at) : nullptr;
}

// While a menu is open the toolkit tells of no double clicks, so they are recognised here. The
// second press of one that it does tell of comes here, too.
void LongMenu::mousePressEvent(QMouseEvent* event) {
    const std::optional<std::size_t> entry = entry_of(action_under(*event));
    double_click_ = entry && entry == pressed_ && event->button() == Qt::LeftButton &&
                    pressed_since_.elapsed() <= QApplication::doubleClickInterval();
    pressed_ = double_click_ ? std::nullopt : entry;
    pressed_since_.start();
    QMenu::mousePressEvent(event);
}

void LongMenu::mouseReleaseEvent(QMouseEvent* event) {
    const bool twice = std::exchange(double_click_, false);
    const QAction* action = action_under(*event);
    const std::optional<std::size_t> entry = entry_of(action);
    if (action != nullptr && (action == above_ || action == below_)) {
        const auto page = static_cast<long long>(shown());
        scroll(action == above_ ? -page : page);
        return;
    }
    if (twice && entry)
        activate(*entry);
    else
        QMenu::mouseReleaseEvent(event);
}

void LongMenu::timerEvent(QTimerEvent* event) {
    if (event->timerId() != scroll_timer_.timerId()) return QMenu::timerEvent(event);
    const QAction* pointed = activeAction();
    if (!isVisible() || pointed == nullptr || (pointed != above_ && pointed != below_)) {
        scroll_timer_.stop();
        return;
    }
    const int rows = tick_rows(scroll_ticks_++);
    scroll(pointed == above_ ? -rows : rows);
}

void LongMenu::wheelEvent(QWheelEvent* event) {
    wheel_ += event->angleDelta().y() * kWheelRows;
    scroll(-(wheel_ / kWheelNotch));
    wheel_ %= kWheelNotch;
    event->accept();
}

}  // namespace dorn
