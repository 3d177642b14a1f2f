#include "list_bench.h"

#include "dirmodel/dir_entry.h"
#include "dirmodel/dir_sort.h"
#include "filelist/columns.h"
#include "filelist/filelist.h"
#include "filelist/selection.h"
#include "measure.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTreeView>

namespace dorn::bench {

namespace {

QTreeView* list() {
    return qt_instance<QTreeView>("filelist");
}

// All that the step has left to the event loop, and the list painted once.
void settle() {
    QCoreApplication::processEvents();
    list()->viewport()->repaint();
}

void select_every_other_row() {
    fl_unselect_all();
    fl_select("*[02468]", 0);
    settle();
}

void press_key(int key, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(list(), &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(list(), &release);
}

void click_with_control() {
    const QPointF place = list()->visualRect(list()->model()->index(5, 0)).center();
    const QPointF global = list()->viewport()->mapToGlobal(place);
    QMouseEvent press(QEvent::MouseButtonPress, place, global, Qt::LeftButton, Qt::LeftButton,
                      Qt::ControlModifier);
    QApplication::sendEvent(list()->viewport(), &press);
    QMouseEvent release(QEvent::MouseButtonRelease, place, global, Qt::LeftButton, Qt::NoButton,
                        Qt::ControlModifier);
    QApplication::sendEvent(list()->viewport(), &release);
}

struct Step {
    const char* name;
    void (*run)();
};
constexpr int32_t kFirstFreeId = 100000;  // ids that no account of the system has
constexpr int32_t kOwners = 300;

constexpr Step kSteps[] = {
    {"select all", fl_select_all},
    {"invert", fl_invert_all},
    {"click with Ctrl", click_with_control},
    {"arrow key", [] { press_key(Qt::Key_Down, {}); }},
    {"type-ahead key", [] { press_key(Qt::Key_E, QStringLiteral("e")); }},
    {"status line", [] { status_bar_update(); }},
    {"repaint", [] {}},
};

void measure_step(const Step& step, double limit_ms) {
    std::vector<double> times;
    for (int i = 0; i < 5; ++i) {
        select_every_other_row();
        times.push_back(time_ms([&] {
            step.run();
            settle();
        }));
    }
    print_figure(std::string("  ") + step.name, median(times), "ms", limit_ms);
}

double sort_by(int column) {
    Widget* header = w_instance(fl_header_name(column));
    return time_ms([&] {
        fl_sort_cb(header);
        settle();
    });
}

// Entries that differ in every column, so that each order has work to do.
void vary_attributes() {
    uint32_t number = 1;
    for (int32_t i = 0; i < gDir->count; ++i) {
        number = number * 1664525 + 1013904223;
        DirEntry* entry = gDir->entries[i];
        entry->size = number >> 8;
        entry->mtime = number;
        entry->mode = (entry->mode & kTypeMask) | (number >> 23);
        entry->uid = entry->gid = kFirstFreeId + static_cast<int32_t>(number >> 9) % kOwners;
    }
}

}  // namespace

void measure_list(const std::string& directory, int count, double limit_ms) {
    fl_setpath(directory.c_str());
    std::printf("In the list of %d entries, every other one selected\n", count);
    for (const Step& step : kSteps)
        measure_step(step, limit_ms);
    select_every_other_row();
    vary_attributes();
    for (int column = 1; column <= kColumns; ++column) {
        std::vector<double> times;
        for (int i = 0; i < 3; ++i)
            times.push_back(sort_by(column));
        print_figure(std::string("  sort by ") + fl_header_name(column), median(times), "ms",
                     limit_ms);
    }
}

void measure_owner_sort() {
    for (int32_t i = 0; i < gDir->count; ++i)
        gDir->entries[i]->uid = 100000 + i * 7 % 300;
    std::vector<double> by_name;
    std::vector<double> by_owner;
    for (int i = 0; i < 5; ++i) {
        by_name.push_back(time_ms([] { dir_sort(gDir, dir_cmp_name, 1); }));
        by_owner.push_back(time_ms([] { dir_sort(gDir, dir_cmp_user, 1); }));
    }
    print_ratio("sort by owner, 300 ids", median(by_owner), "by name", median(by_name), 3);
}

}  // namespace dorn::bench
