#include "filelist/list_accessible.h"

#include "filelist/columns.h"
#include "filelist/header_row.h"
#include "filelist/list_view.h"
#include "filelist/navigation.h"
#include "filelist/pane.h"
#include "filelist/selection.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>
#include <QTimer>

#include <unordered_map>

namespace dorn {

namespace {

using Interface = QAccessibleInterface;

int row_count() {
    return static_cast<int>(gPane.rows.size());
}

// The entry that a row shows: -1 for the parent row, -2 for no row.
int32_t entry_of(int row) {
    return row < 0 || row >= row_count() ? -2 : gPane.rows[static_cast<std::size_t>(row)].index;
}

// What a blocked window takes neither from the mouse nor from the keyboard it takes from nobody:
// while the directory is read the rows are not those of the entries.
bool is_blocked() {
    return ui_is_blocked(w_instance("base"));
}

bool is_selected(int row) {
    const int32_t index = entry_of(row);
    return index >= 0 && index < gDir->count && (gDir->entries[index]->flags & kEntrySelected) != 0;
}

QModelIndex model_index(const ListView& view, int row, int column) {
    return view.model() == nullptr ? QModelIndex() : view.model()->index(row, column);
}

// A cell; those of row -1 are the columns' titles.
class Cell : public Interface,
             public QAccessibleTableCellInterface,
             public QAccessibleActionInterface {
  public:
    Cell(ListView* view, int row, int column) : view_(view), row_(row), column_(column) {}

    bool isValid() const override {
        return view_ != nullptr && row_ < row_count();
    }
    QObject* object() const override {
        return nullptr;
    }
    QWindow* window() const override {
        return view_ == nullptr ? nullptr : view_->window()->windowHandle();
    }
    Interface* parent() const override {
        return QAccessible::queryAccessibleInterface(view_);
    }
    Interface* child(int) const override {
        return nullptr;
    }
    int childCount() const override {
        return 0;
    }
    int indexOfChild(const Interface*) const override {
        return -1;
    }
    Interface* childAt(int, int) const override {
        return nullptr;
    }

    QAccessible::Role role() const override {
        return is_title() ? QAccessible::ColumnHeader : QAccessible::Cell;
    }
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override;
    QAccessible::State state() const override;

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (is_title()) return nullptr;
        if (type == QAccessible::TableCellInterface)
            return static_cast<QAccessibleTableCellInterface*>(this);
        if (type == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }

    bool isSelected() const override {
        return is_selected(row_);
    }
    QList<Interface*> columnHeaderCells() const override;
    QList<Interface*> rowHeaderCells() const override {
        return {};
    }
    int columnIndex() const override {
        return column_;
    }
    int rowIndex() const override {
        return row_;
    }
    int columnExtent() const override {
        return 1;
    }
    int rowExtent() const override {
        return 1;
    }
    Interface* table() const override {
        return parent();
    }

    QStringList actionNames() const override {
        return {pressAction(), toggleAction(), setFocusAction()};
    }
    void doAction(const QString& action) override;
    QStringList keyBindingsForAction(const QString&) const override {
        return {};
    }

  private:
    bool is_title() const {
        return row_ < 0;
    }
    bool is_current() const {
        return !is_title() && view_->currentIndex().row() == row_;
    }

    QPointer<ListView> view_;
    const int row_;
    const int column_;
};

QString Cell::text(QAccessible::Text kind) const {
    if (!isValid()) return {};
    if (is_title())
        return kind == QAccessible::Name
                   ? view_->model()->headerData(column_, Qt::Horizontal).toString()
                   : QString();
    const QModelIndex index = model_index(*view_, row_, column_);
    if (kind == QAccessible::Name) return index.data(Qt::AccessibleTextRole).toString();
    if (kind == QAccessible::Description)
        return index.data(Qt::AccessibleDescriptionRole).toString();
    return {};
}

// A title's place is that of the button that stands for it.
QRect Cell::rect() const {
    if (!isValid()) return {};
    if (is_title()) {
        const QWidget* button = qt(w_instance(fl_header_name(column_ + 1)));
        return button == nullptr ? QRect()
                                 : QRect(button->mapToGlobal(QPoint(0, 0)), button->size());
    }
    const QRect area = view_->visualRect(model_index(*view_, row_, column_));
    return area.isEmpty() ? QRect()
                          : QRect(view_->viewport()->mapToGlobal(area.topLeft()), area.size());
}

QAccessible::State Cell::state() const {
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    if (is_title()) return state;
    const QRect area = view_->visualRect(model_index(*view_, row_, column_));
    state.invisible = !view_->viewport()->rect().intersects(area);
    state.focusable = true;
    state.selectable = entry_of(row_) >= 0;
    state.multiSelectable = state.selectable;
    state.selected = is_selected(row_);
    state.focused = column_ == 0 && is_current() && view_->hasFocus();
    state.active = state.focused;
    return state;
}

QList<Interface*> Cell::columnHeaderCells() const {
    Interface* list = parent();
    return list == nullptr ? QList<Interface*>() : QList<Interface*>{list->child(column_)};
}

// By way of the event loop: opening may take as long as the user takes to answer a question.
void Cell::doAction(const QString& action) {
    if (!isValid() || is_title() || is_blocked()) return;
    const int32_t index = entry_of(row_);
    if (action == pressAction())
        QTimer::singleShot(0, view_, [index] {
            if (!is_blocked()) fl_open(index);
        });
    else if (action == toggleAction())
        fl_invert_index(index);
    else if (action == setFocusAction())
        fl_place_current(index, true);
}

class Table : public QAccessibleWidget, public QAccessibleTableInterface {
  public:
    explicit Table(ListView* view) : QAccessibleWidget(view, QAccessible::Table) {}
    ~Table() override {
        forget_cells();
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TableInterface)
            return static_cast<QAccessibleTableInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    // The children are the titles and then the cells, row by row: as the toolkit numbers them when
    // it tells where the focus is.
    int childCount() const override {
        return (row_count() + 1) * kColumns;
    }
    Interface* child(int index) const override {
        if (index < 0 || index >= childCount()) return nullptr;
        const auto found = cells_.find(index);
        if (found != cells_.end()) return QAccessible::accessibleInterface(found->second);
        auto* cell = new Cell(view(), index / kColumns - 1, index % kColumns);
        cells_.emplace(index, QAccessible::registerAccessibleInterface(cell));
        return cell;
    }
    int indexOfChild(const Interface* child) const override {
        const auto* cell = dynamic_cast<const Cell*>(child);
        return cell == nullptr ? -1 : (cell->rowIndex() + 1) * kColumns + cell->columnIndex();
    }
    Interface* childAt(int x, int y) const override {
        const QPoint at = view()->viewport()->mapFromGlobal(QPoint(x, y));
        const QModelIndex index = view()->indexAt(at);
        return index.isValid() ? cellAt(index.row(), index.column()) : nullptr;
    }
    Interface* focusChild() const override {
        const QModelIndex current = view()->currentIndex();
        return current.isValid() ? cellAt(current.row(), 0) : nullptr;
    }

    Interface* caption() const override {
        return nullptr;
    }
    Interface* summary() const override {
        return nullptr;
    }
    Interface* cellAt(int row, int column) const override {
        const bool there = row >= 0 && row < row_count() && column >= 0 && column < kColumns;
        return there ? child((row + 1) * kColumns + column) : nullptr;
    }
    int rowCount() const override {
        return row_count();
    }
    int columnCount() const override {
        return kColumns;
    }
    QString columnDescription(int column) const override {
        return view()->model()->headerData(column, Qt::Horizontal).toString();
    }
    QString rowDescription(int row) const override {
        return model_index(*view(), row, 0).data(Qt::AccessibleTextRole).toString();
    }

    int selectedRowCount() const override {
        return fl_cache().n_selected;
    }
    QList<int> selectedRows() const override {
        QList<int> rows;
        for (int row = 0; row < row_count(); ++row) {
            if (is_selected(row)) rows.append(row);
        }
        return rows;
    }
    bool isRowSelected(int row) const override {
        return is_selected(row);
    }
    bool selectRow(int row) override {
        if (!is_blocked()) fl_select_index(entry_of(row));
        return is_selected(row);
    }
    bool unselectRow(int row) override {
        if (!is_blocked()) fl_unselect_index(entry_of(row));
        return !is_selected(row);
    }

    // Rows are selected as a whole: the name stands for the row.
    int selectedCellCount() const override {
        return selectedRowCount();
    }
    QList<Interface*> selectedCells() const override {
        QList<Interface*> cells;
        for (const int row : selectedRows())
            cells.append(cellAt(row, 0));
        return cells;
    }
    int selectedColumnCount() const override {
        return 0;
    }
    QList<int> selectedColumns() const override {
        return {};
    }
    bool isColumnSelected(int) const override {
        return false;
    }
    bool selectColumn(int) override {
        return false;
    }
    bool unselectColumn(int) override {
        return false;
    }

    void modelChange(QAccessibleTableModelChangeEvent*) override {
        forget_cells();
    }

  private:
    ListView* view() const {
        return static_cast<ListView*>(object());
    }
    void forget_cells() {
        for (const auto& [index, id] : cells_)
            QAccessible::deleteAccessibleInterface(id);
        cells_.clear();
    }

    // Those that were asked for, by their place among the children.
    mutable std::unordered_map<int, QAccessible::Id> cells_;
};

bool sTelling = false;  // soon
int sToldRow = -1;      // the row told of last

void tell_of_row(Interface* list, int row) {
    Interface* cell = row < 0 ? nullptr : list->child((row + 1) * kColumns);
    if (cell == nullptr) return;
    QAccessibleEvent changed(
        cell, is_selected(row) ? QAccessible::SelectionAdd : QAccessible::SelectionRemove);
    QAccessible::updateAccessibility(&changed);
}

// The current row and the one that was it before stand for all that changed: the same work for two
// rows and for a hundred thousand.
void tell_of_selection(ListView* view) {
    sTelling = false;
    Interface* list = QAccessible::queryAccessibleInterface(view);
    if (list == nullptr) return;
    QAccessibleEvent within(view, QAccessible::SelectionWithin);
    QAccessible::updateAccessibility(&within);
    const int row = view->currentIndex().row();
    if (sToldRow != row) tell_of_row(list, sToldRow);
    tell_of_row(list, row);
    sToldRow = row;
}

Interface* make(const QString&, QObject* object) {
    // The empty space behind the last title is a button for the mouse alone.
    if (auto* button = dynamic_cast<HeaderButton*>(object);
        button != nullptr && button->text().isEmpty())
        return new QAccessibleWidget(button, QAccessible::Whitespace);
    auto* view = dynamic_cast<ListView*>(object);
    return view == nullptr ? nullptr : new Table(view);
}

}  // namespace

void list_accessible_install() {
    static bool installed = false;
    if (installed) return;
    installed = true;
    QAccessible::installFactory(make);
}

void list_accessible_selection_changed(ListView* view) {
    if (!QAccessible::isActive() || view == nullptr || sTelling) return;
    sTelling = true;
    QTimer::singleShot(0, view, [view] { tell_of_selection(view); });
}

}  // namespace dorn
