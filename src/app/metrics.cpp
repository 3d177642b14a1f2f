// Sizes, between the configuration record and the widgets.
#include "app/base.h"
#include "filelist/columns.h"
#include "ui/qt_widget.h"

#include <QAbstractButton>
#include <QMainWindow>
#include <QSplitter>

namespace dorn {

namespace {

constexpr int kSavedColumns = 6;
constexpr int kSmallest = 1;     // pixels; a damaged record may hold anything
constexpr int kLargest = 16383;  // pixels

// A size that no window can have stands for the default.
int sane(int value, int fallback) {
    return value >= kSmallest && value <= kLargest ? value : fallback;
}

void set_hotlist_width(int width) {
    auto* divider = qt_instance<QSplitter>("divider");
    const QWidget* panel = qt(w_instance("hotlist_panel"));
    if (divider == nullptr || panel == nullptr) return;
    const int whole = divider->width() - divider->handleWidth();
    const int wanted = qMax(width, panel->minimumWidth());
    divider->setSizes({wanted, qMax(whole - wanted, 1)});
    divider->setStretchFactor(0, 0);
    divider->setStretchFactor(1, 1);
}

}  // namespace

void base_set_window_metrics(const Config* config) {
    QWidget* base = qt(w_instance("base"));
    if (base == nullptr) return;
    base->resize(sane(config->win_width, 600), sane(config->win_height, 410));
    set_hotlist_width(sane(config->hotlist_width, 190));
}

void base_get_window_metrics(Config* config) {
    const QWidget* base = qt(w_instance("base"));
    if (base == nullptr) return;
    const bool filling = base->isMaximized() || base->isFullScreen();
    const QSize size = filling ? base->normalGeometry().size() : base->size();
    config->win_width = size.width();
    config->win_height = size.height();
    const QWidget* panel = qt(w_instance("hotlist_panel"));
    if (panel != nullptr && !panel->isHidden() && panel->width() > 0)
        config->hotlist_width = panel->width();
}

void base_set_divider_metrics(const Config* config) {
    static constexpr int defaults[kSavedColumns] = {125, 50, 105, 53, 53, 75};
    for (int column = 1; column <= kSavedColumns; ++column) {
        const int width = config->column_width[column - 1];
        fl_set_column_width(column, sane(width, defaults[column - 1]));
    }
    if (config->show_hotlist != 0) return;
    if (auto* toggle = qt_instance<QAbstractButton>("tb_hotlist"); toggle != nullptr)
        toggle->setChecked(false);
    if (QWidget* panel = qt(w_instance("hotlist_panel")); panel != nullptr) panel->hide();
}

void base_get_divider_metrics(Config* config) {
    for (int column = 1; column <= kSavedColumns; ++column) {
        const int width = fl_get_column_width(column);
        if (width > 0) config->column_width[column - 1] = width;
    }
}

}  // namespace dorn
