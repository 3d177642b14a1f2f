#include "filelist/list_model.h"

#include "filelist/columns.h"
#include "ui/qt_widget.h"

namespace dorn {

namespace {

constexpr std::array<const char*, kRowImages> kImageNames = {
    "closed_folder",  "file",         "exec",   "linked_folder",
    "linked_file",    "linked_exec",  "parent", "image_broken_link",
    "image_file_cut", "image_dir_cut"};

// What the pictures say, for those who don't see them.
constexpr std::array<const char*, kRowImages> kKinds = {"folder",         "file",
                                                        "program",        "link to a folder",
                                                        "link to a file", "link to a program",
                                                        "parent folder",  "broken link",
                                                        "cut file",       "cut folder"};

constexpr int kSizeColumn = 2;

QString description(const ListRow& row) {
    return QLatin1String(kKinds[row.image]);
}

}  // namespace

ListModel::ListModel(QObject* parent) : QAbstractTableModel(parent) {
    for (std::size_t i = 0; i < kImageNames.size(); ++i)
        icons_[i] = ui_icon(kImageNames[i]);
}

void ListModel::rebuild(void (*make_rows)()) {
    beginResetModel();
    make_rows();
    endResetModel();
}

int ListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(gPane.rows.size());
}

int ListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumns;
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    const ListRow& row = gPane.rows[static_cast<std::size_t>(index.row())];
    const int column = index.column() + 1;
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return ui_text(fl_column_text(row.index, column).c_str());
        case Qt::AccessibleDescriptionRole:
            return column == 1 ? description(row) : QString();
        case Qt::DecorationRole:
            return column == 1 ? QVariant(icons_[row.image]) : QVariant();
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(Qt::AlignVCenter |
                                       (column == kSizeColumn ? Qt::AlignRight : Qt::AlignLeft));
        default:
            return {};
    }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static constexpr std::array<const char*, kColumns> labels = {
        "Filename", "Size", "Date", "Owner", "Group", "Permissions", "Link"};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= kColumns)
        return {};
    return QString::fromLatin1(labels[static_cast<std::size_t>(section)]);
}

}  // namespace dorn
