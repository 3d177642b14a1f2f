// The list's model: texts are made from the entries when a row is shown.
#pragma once

#include "filelist/pane.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <array>

namespace dorn {

class ListModel : public QAbstractTableModel {
  public:
    explicit ListModel(QObject* parent);

    /// Replaces all rows by what `make_rows` puts into gPane.rows; one model reset.
    void rebuild(void (*make_rows)());

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// The picture of a row.
    const QIcon& icon(RowImage image) const {
        return icons_[image];
    }

  private:
    std::array<QIcon, kRowImages> icons_;
};

}  // namespace dorn
