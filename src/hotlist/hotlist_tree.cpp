#include "hotlist/hotlist_tree.h"

#include "config/config.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "filelist/navigation.h"
#include "hotlist/tree_expand.h"
#include "hotlist/tree_item.h"
#include "hotlist/tree_probe.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QTreeWidget>

#include <cerrno>

namespace dorn {

namespace {

void (*sNotify)() = nullptr;
void (*sOpenMenu)(int x, int y) = nullptr;
bool sFileUnread = false;  // the file is there, and what it holds is not known

QTreeWidget* tree_widget() {
    return qt_instance<QTreeWidget>("tree");
}

bool is_parent_label(const TreeItem* item) {
    return item != nullptr && item->name() == "..";
}

// A label ".." stands first; every other item goes behind the last one.
int position_for(const QTreeWidget* tree, const std::string& name) {
    if (name != "..") return tree->topLevelItemCount();
    return is_parent_label(tree_item(tree->topLevelItem(0))) ? 1 : 0;
}

TreeItem* x_add_item(QTreeWidget* tree, const char* name) {
    auto* item = new TreeItem(name);
    tree->insertTopLevelItem(position_for(tree, name), item);
    return item;
}

TreeItem* top_level_item(const QTreeWidget* tree, const std::string& name) {
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        TreeItem* item = tree_item(tree->topLevelItem(i));
        if (item->name() == name) return item;
    }
    return nullptr;
}

// The current directory as the hotlist keeps it: display text, or the bytes where no text would
// lead back to them.
std::string current_directory_entry() {
    const std::string path = gDir->path;
    const std::string text = fname_decode(path.c_str(), nullptr);
    const char* back = fname_encode(text.c_str());
    const bool valid = QByteArrayView(path.data(), qsizetype(path.size())).isValidUtf8();
    return !valid && (back == nullptr || path != back) ? path : text;
}

}  // namespace

void tree_setup() {
    QTreeWidget* tree = tree_widget();
    tree_load_pictures();
    tree->setFont(ui_font(gConfig->hotlist_font));
    QObject::connect(tree, &QTreeWidget::itemExpanded, tree,
                     [tree](QTreeWidgetItem* item) { tree_expand_later(tree, item); });
    QObject::connect(tree, &QTreeWidget::itemCollapsed, tree,
                     [tree](QTreeWidgetItem* item) { tree_state_cb(tree, item); });
    QObject::connect(tree, &QTreeWidget::itemClicked, tree,
                     [tree](QTreeWidgetItem* item) { tree_selection_cb(tree, item); });
}

void tree_load(const char* directory, const char* file_name) {
    bool ok = false;
    std::vector<std::string> paths = hotlist_read(directory, file_name, &ok);
    sFileUnread = !ok && errno != ENOENT;
    if (!ok) paths = {"/"};
    QTreeWidget* tree = tree_widget();
    std::vector<TreeItem*> added;
    for (const std::string& path : paths) {
        if (hotlist_append(&gTree, path.c_str()) == 0)
            added.push_back(x_add_item(tree, path.c_str()));
    }
    tree_probe(tree, added);
}

int tree_save(const char* directory, const char* file_name) {
    if (sFileUnread && gTree.entries == std::vector<std::string>{"/"}) return -1;
    return hotlist_write(gTree, directory, file_name);
}

int tree_add(HotlistTree* list, const char* path) {
    if (!hotlist_can_keep(path)) {
        wreport(w_instance("base"), "Error",
                "A bookmark can't hold this path: it has a line break or is too long.");
        return -1;
    }
    if (hotlist_append(list, path) != 0) return -1;
    if (QTreeWidget* tree = tree_widget()) tree_probe(tree, {x_add_item(tree, path)});
    return 0;
}

void tree_remove(HotlistTree* list, const char* path) {
    const std::string name = path;  // it may be the label of the item that goes
    hotlist_erase(list, name.c_str());
    if (const QTreeWidget* tree = tree_widget()) delete top_level_item(tree, name);
}

int tree_add_cb() {
    if (gDir != nullptr && !gDir->path.empty()) tree_add(&gTree, current_directory_entry().c_str());
    tree_notify();
    return 0;
}

int tree_delete_cb() {
    const auto* item = static_cast<QTreeWidgetItem*>(gTree.context_item);
    if (item != nullptr && item->parent() == nullptr)
        tree_remove(&gTree, tree_item(item)->name().c_str());
    gTree.context_item = nullptr;
    tree_notify();
    return 0;
}

void tree_translation_changed() {
    QTreeWidget* tree = tree_widget();
    std::vector<TreeItem*> top_level;
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        TreeItem* item = tree_item(tree->topLevelItem(i));
        top_level.push_back(item);
        if (item->isExpanded()) tree_expand_later(tree, item);
    }
    tree_probe(tree, top_level);
}

void tree_selection_cb(QTreeWidget* tree, QTreeWidgetItem* item) {
    tree->scrollToItem(item);
    const std::optional<std::string> path = tree_disk_path(tree_item(item));
    tree->clearSelection();
    if (path && gDir != nullptr && *path != gDir->path) fl_newpath(nullptr, path->c_str());
}

void tree_set_notify_cb(void (*notify)()) {
    sNotify = notify;
}

void tree_notify() {
    if (sNotify != nullptr) sNotify();
}

void tree_set_menu_cb(void (*open_menu)(int x, int y)) {
    sOpenMenu = open_menu;
}

void tree_open_menu(QTreeWidgetItem* item, int x, int y) {
    gTree.context_item = item;
    if (sOpenMenu != nullptr) sOpenMenu(x, y);
}

std::string x_get_fullpath(const QTreeWidgetItem* item) {
    if (item == nullptr) return {};
    const std::string& name = tree_item(item)->name();
    if (item->parent() == nullptr) return name;
    std::string path = x_get_fullpath(item->parent());
    if (name == "..") {
        es_remove_subdirectory(&path);
        return path;
    }
    if (!path.ends_with('/')) path.push_back('/');
    return path + name;
}

}  // namespace dorn
