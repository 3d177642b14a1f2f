// One item of the hotlist tree, found again by a number.
//
// Answers about an item come from other threads, and the event loop is served while an item is
// filled; it may be gone by then. So what outlives a call keeps an item's id, never its pointer.
#pragma once

#include "hotlist/engine/directory_probe.h"

#include <QTreeWidgetItem>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace dorn {

// The tree's pictures, in the order in which tree_setup adds them.
enum class TreeImage { ClosedFolder, OpenFolder, InvalidFolder, File, Count };

// What data() gives beside the texts: the item's label as bytes (QByteArray) and the index of the
// picture it shows (int).
inline constexpr int kTreeNameRole = Qt::UserRole;
inline constexpr int kTreeImageRole = Qt::UserRole + 1;

class TreeItem : public QTreeWidgetItem {
  public:
    /// `name` is the label in display form; `disk_name` its bytes in the parent directory, empty
    /// when only the translation knows them. Shows as an expandable folder until its kind is set.
    explicit TreeItem(std::string name, std::string disk_name = {});
    ~TreeItem() override;

    int64_t id() const {
        return id_;
    }
    const std::string& name() const {
        return name_;
    }
    const std::string& disk_name() const {
        return disk_name_;
    }

    /// Gives the item the pictures and the expandable flag of that kind.
    void set_kind(DirectoryKind kind);

    /// True until the item is collapsed or gone: whether answers for its children are wanted.
    using Wanted = std::shared_ptr<std::atomic<bool>>;
    /// A fresh mark for one filling; the one before it becomes false.
    Wanted start_filling();
    void end_filling();

    QVariant data(int column, int role) const override;

  private:
    QString shown_name() const;

    int64_t id_;
    std::string name_;
    std::string disk_name_;
    TreeImage collapsed_image_ = TreeImage::ClosedFolder;
    TreeImage expanded_image_ = TreeImage::OpenFolder;
    Wanted wanted_;
};

/// The item of that id; null when it is gone.
TreeItem* tree_item(int64_t id);
/// Every item of the tree is one of ours.
TreeItem* tree_item(QTreeWidgetItem* item);
const TreeItem* tree_item(const QTreeWidgetItem* item);

/// The id of `item`, 0 (never an item's) for null.
int64_t tree_item_id(const QTreeWidgetItem* item);

/// Loads the pictures of the tree in the palette's colours.
void tree_load_pictures();

/// The full path of an item as bytes for the file system; nothing when it can't be translated.
std::optional<std::string> tree_disk_path(const TreeItem* item);

}  // namespace dorn
