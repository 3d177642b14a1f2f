#include "filelist/columns.h"

#include "filelist/header_row.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QHeaderView>

#include <array>

namespace dorn {

namespace {

struct Column {
    const char* header;
    DirCompare compare;
};

constexpr std::array<Column, kColumns> kColumnTable = {{{"fh_filename", dir_cmp_name},
                                                        {"fh_size", dir_cmp_size},
                                                        {"fh_date", dir_cmp_date},
                                                        {"fh_owner", dir_cmp_user},
                                                        {"fh_group", dir_cmp_group},
                                                        {"fh_permissions", dir_cmp_permissions},
                                                        {"fh_link", dir_cmp_link}}};

constexpr int kWidest = 16383;  // pixels; what a damaged configuration may ask for at most

DirCompare sSortFunction = dir_cmp_name;
int sSortOrder = 1;

const Column* find_column(const Widget* header) {
    for (const Column& column : kColumnTable) {
        if (header != nullptr && w_instance(column.header) == header) return &column;
    }
    return nullptr;
}

// The current index stays with its entry when the entries change places.
DirEntry* take_current() {
    const int32_t index = gDir->current;
    if (index < 0 || index >= gDir->count) return nullptr;
    fl_set_current(-2);
    return gDir->entries[index];
}

void give_back_current(const DirEntry* entry) {
    for (int32_t i = 0; entry != nullptr && i < gDir->count; ++i) {
        if (gDir->entries[i] == entry) return fl_set_current(i);
    }
}

bool is_column(int column) {
    return column >= 1 && column <= kColumns;
}

}  // namespace

const char* fl_header_name(int column) {
    return is_column(column) ? kColumnTable[static_cast<std::size_t>(column - 1)].header : "";
}

int fl_get_column_width(int column) {
    if (!is_column(column)) return -1;
    const QWidget* header = qt(w_instance(fl_header_name(column)));
    return header == nullptr ? -1 : header->width();
}

void fl_set_column_width(int column, int width) {
    if (!is_column(column)) return;
    QWidget* header = qt(w_instance(fl_header_name(column)));
    if (header == nullptr) return;
    const int sane = qBound(0, width, kWidest);
    header->resize(sane, header->height());
    auto* row = qt_instance<HeaderRow>("header_row");
    if (row != nullptr) row->place_again();
    if (gPane.view != nullptr && gPane.view->model() != nullptr)
        gPane.view->header()->resizeSection(column - 1, sane);
}

void show_sort_method(Widget* header) {
    static const QIcon up = ui_icon("image_sort_up");
    static const QIcon down = ui_icon("image_sort_down");
    for (const Column& column : kColumnTable) {
        auto* button = qt_instance<QAbstractButton>(column.header);
        if (button == nullptr) continue;
        const bool marked = handle(button) == header;
        button->setIcon(!marked ? QIcon() : sSortOrder != 0 ? up : down);
        const char* direction = sSortOrder != 0 ? "ascending" : "descending";
        button->setAccessibleDescription(
            marked ? QStringLiteral("sorted, %1").arg(QLatin1String(direction)) : QString());
    }
}

void fl_sort_cb(Widget* header) {
    const Column* column = find_column(header);
    if (column == nullptr || fl_is_reading()) return;
    if (column->compare == sSortFunction)
        sSortOrder = sSortOrder != 0 ? 0 : 1;
    else
        sSortFunction = column->compare;
    show_sort_method(header);
    DirEntry* const current = take_current();
    dir_sort(gDir, sSortFunction, sSortOrder);
    give_back_current(current);
    fl_update();
    misc_give_focus(w_instance("filelist"));
}

DirCompare fl_sort_function() {
    return sSortFunction;
}

int fl_sort_order() {
    return sSortOrder;
}

}  // namespace dorn
