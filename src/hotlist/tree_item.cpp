#include "hotlist/tree_item.h"

#include "dirmodel/name_translation.h"
#include "hotlist/hotlist_tree.h"
#include "ui/qt_widget.h"

#include <QHash>
#include <QTreeWidget>

#include <array>

namespace dorn {

namespace {

constexpr int kRowMargin = 3;  // pixels above and below the text of a row
constexpr int kIconSize = 16;  // pixels

QHash<int64_t, TreeItem*>& items() {
    static auto* const table = new QHash<int64_t, TreeItem*>;  // outlives every item
    return *table;
}

std::array<QIcon, std::size_t(TreeImage::Count)>& pictures() {
    static auto* const icons = new std::array<QIcon, std::size_t(TreeImage::Count)>;
    return *icons;
}

bool is_display_text(const std::string& name) {
    return QByteArrayView(name.data(), qsizetype(name.size())).isValidUtf8();
}

// Always marked up, so that no name is taken for mark-up.
QString tool_tip(const std::string& path) {
    return QStringLiteral("<p style='white-space:pre'>%1</p>")
        .arg(ui_text(path.c_str()).toHtmlEscaped());
}

QSize row_size(const QTreeWidget* tree) {
    const int text = tree != nullptr ? tree->fontMetrics().height() : 0;
    return {0, qMax(text, kIconSize) + 2 * kRowMargin};
}

}  // namespace

TreeItem::TreeItem(std::string name, std::string disk_name)
    : name_(std::move(name)), disk_name_(std::move(disk_name)) {
    static int64_t last_id = 0;
    id_ = ++last_id;
    items().insert(id_, this);
    setChildIndicatorPolicy(ShowIndicator);
}

TreeItem::~TreeItem() {
    end_filling();
    items().remove(id_);
    if (gTree.context_item == static_cast<QTreeWidgetItem*>(this)) gTree.context_item = nullptr;
}

void TreeItem::set_kind(DirectoryKind kind) {
    const bool folder = kind == DirectoryKind::Branch || kind == DirectoryKind::Leaf;
    const TreeImage other =
        kind == DirectoryKind::Missing ? TreeImage::InvalidFolder : TreeImage::File;
    collapsed_image_ = folder ? TreeImage::ClosedFolder : other;
    expanded_image_ = folder ? TreeImage::OpenFolder : other;
    setChildIndicatorPolicy(kind == DirectoryKind::Branch ? ShowIndicator
                                                          : DontShowIndicatorWhenChildless);
    emitDataChanged();
}

TreeItem::Wanted TreeItem::start_filling() {
    end_filling();
    wanted_ = std::make_shared<std::atomic<bool>>(true);
    return wanted_;
}

void TreeItem::end_filling() {
    if (wanted_) *wanted_ = false;
    wanted_.reset();
}

// The label is display text, except where only the bytes lead back to the disk.
QString TreeItem::shown_name() const {
    if (is_display_text(name_)) return ui_text(name_.c_str());
    return ui_text(fname_decode(name_.c_str(), nullptr));
}

QVariant TreeItem::data(int column, int role) const {
    const TreeImage image = isExpanded() ? expanded_image_ : collapsed_image_;
    switch (role) {
        case Qt::DisplayRole:
            return shown_name();
        case Qt::DecorationRole:
            return pictures()[std::size_t(image)];
        case Qt::ToolTipRole:
            return tool_tip(x_get_fullpath(this));
        case Qt::SizeHintRole:
            return row_size(treeWidget());
        case kTreeNameRole:
            return QByteArray::fromStdString(name_);
        case kTreeImageRole:
            return int(image);
        default:
            return QTreeWidgetItem::data(column, role);
    }
}

TreeItem* tree_item(int64_t id) {
    return items().value(id);
}

TreeItem* tree_item(QTreeWidgetItem* item) {
    return static_cast<TreeItem*>(item);
}

const TreeItem* tree_item(const QTreeWidgetItem* item) {
    return static_cast<const TreeItem*>(item);
}

int64_t tree_item_id(const QTreeWidgetItem* item) {
    return item != nullptr ? tree_item(item)->id() : 0;
}

void tree_load_pictures() {
    pictures() = {ui_icon("closed_folder"), ui_icon("open_folder"), ui_icon("invalid_folder"),
                  ui_icon("file")};
}

std::optional<std::string> tree_disk_path(const TreeItem* item) {
    const QTreeWidgetItem* parent = item->parent();
    if (parent == nullptr) {
        if (!is_display_text(item->name())) return item->name();
        const char* path = fname_encode(item->name().c_str());
        return path != nullptr ? std::optional<std::string>(path) : std::nullopt;
    }
    std::optional<std::string> path = tree_disk_path(tree_item(parent));
    if (!path) return path;
    if (!path->ends_with('/')) path->push_back('/');
    return *path + item->disk_name();
}

}  // namespace dorn
