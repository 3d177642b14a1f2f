#include "hotlist/tree_expand.h"

#include "config/config.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "hotlist/hotlist_tree.h"
#include "hotlist/tree_item.h"
#include "hotlist/tree_probe.h"
#include "platform/dirstream.h"
#include "ui/background.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"
#include "ui/timer.h"

#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <deque>

namespace dorn {

namespace {

constexpr uint32_t kProgressMs = 300;
constexpr int kWaitMs = 16;  // how long the stream is waited for before the event loop is served

struct Subdirectory {
    std::string shown;
    std::string disk;
    bool has_subdirectories;  // known from the link count; false: to be found out
};

Timer sWaitTimer;  // runs beside "status1" while a directory is read
bool sStopped = false;

void x_tree_expand_progress(Timer*, void*) {}

// Blocks "base" and runs the wait timer until the end of the scope.
class ExpandWait {
  public:
    ExpandWait() : block_(w_instance("base")) {
        wtimer_attach(&sWaitTimer, kProgressMs, x_tree_expand_progress, nullptr);
    }
    ~ExpandWait() {
        wtimer_trigger(&sWaitTimer);
        wtimer_detach(&sWaitTimer);
    }
    ExpandWait(const ExpandWait&) = delete;
    ExpandWait& operator=(const ExpandWait&) = delete;

  private:
    ScopedBlock block_;
};

// The subdirectory that `entry` is, if it is one to be listed.
std::optional<Subdirectory> as_subdirectory(const RawDirEntry* entry) {
    const char* name = reinterpret_cast<const char*>(entry) + kRawNameOffset;
    if (name[0] == '.' && (gOptions & kOptionTreeDotEntries) == 0) return std::nullopt;
    FileStatus status{};
    if (stat_optimize(entry, &status) != 0 || !is_directory(status)) return std::nullopt;
    return Subdirectory{fname_decode(name, nullptr), name, status.nlink > 2};
}

// Reads the subdirectories of `path` while `wanted` holds. Nothing when it can't be opened; what
// was read before an error counts.
std::optional<std::vector<Subdirectory>> read_subdirectories(const std::string& path,
                                                             const TreeItem::Wanted& wanted) {
    std::vector<Subdirectory> found;
    const DirStreamPtr stream = dirstream_open(path.c_str());
    int opened = 0;
    while ((opened = dirstream_opened(*stream, kWaitMs)) == 0 && *wanted && !sStopped)
        ui_background();
    if (opened != 1) return std::nullopt;
    while (*wanted && !sStopped) {
        const RawDirEntry* entry = nullptr;
        const StreamState state = dirstream_next(*stream, kWaitMs, &entry);
        if (state == StreamState::End || state == StreamState::Failed) break;
        if (state == StreamState::Entry) {
            if (std::optional<Subdirectory> one = as_subdirectory(entry))
                found.push_back(std::move(*one));
        }
        ui_background();
    }
    return found;
}

// By the bytes of the label; of two that show the same only the first is listed.
void sort_by_label(std::vector<Subdirectory>* found) {
    std::stable_sort(
        found->begin(), found->end(),
        [](const Subdirectory& a, const Subdirectory& b) { return a.shown < b.shown; });
    const auto same = [](const Subdirectory& a, const Subdirectory& b) {
        return a.shown == b.shown;
    };
    found->erase(std::unique(found->begin(), found->end(), same), found->end());
}

void add_children(QTreeWidget* tree, TreeItem* item, std::vector<Subdirectory> found,
                  const TreeItem::Wanted& wanted) {
    if ((gOptions & kOptionTreeSorted) != 0) sort_by_label(&found);
    QList<QTreeWidgetItem*> children;
    std::vector<TreeItem*> to_probe;
    for (Subdirectory& one : found) {
        auto* child = new TreeItem(std::move(one.shown), std::move(one.disk));
        children.append(child);
        if (one.has_subdirectories)
            child->set_kind(DirectoryKind::Branch);
        else
            to_probe.push_back(child);
    }
    item->addChildren(children);
    tree_probe(tree, to_probe, wanted);
}

// An item that was opened and shows nothing is closed again, so that it can be opened another time.
void close_empty(QTreeWidget* tree, TreeItem* item, bool opened) {
    if (opened)
        item->set_kind(DirectoryKind::Leaf);
    else
        tree_probe(tree, {item});
    item->setExpanded(false);
}

std::optional<std::string> path_to_expand(const TreeItem* item) {
    std::optional<std::string> path = tree_disk_path(item);
    if (!path) {
        wreport(w_instance("base"), "Error", "Unable to translate '%s' into '%s' encoding.",
                x_get_fullpath(item).c_str(), gConfig->alt_encoding);
    }
    return path;
}

struct Pending {
    QPointer<QTreeWidget> tree;
    int64_t id;
};
std::deque<Pending> sPending;

void expand_pending() {
    static bool busy = false;
    if (busy) return;
    busy = true;
    while (!sPending.empty()) {
        const Pending next = sPending.front();
        sPending.pop_front();
        TreeItem* item = tree_item(next.id);
        if (next.tree && item != nullptr && item->isExpanded()) x_tree_expand(next.tree, item);
    }
    busy = false;
}

}  // namespace

int x_tree_expand(QTreeWidget* tree, QTreeWidgetItem* opened_item) {
    const int64_t id = tree_item_id(opened_item);
    sStopped = false;
    const std::optional<std::string> path = path_to_expand(tree_item(opened_item));
    TreeItem* item = tree_item(id);
    if (item == nullptr) return 0;
    if (!path) {
        item->setExpanded(false);
        return 0;
    }
    qDeleteAll(item->takeChildren());
    const TreeItem::Wanted wanted = item->start_filling();
    std::optional<std::vector<Subdirectory>> found;
    if (path->size() < kPathSize) {
        const ExpandWait wait;
        found = read_subdirectories(*path, wanted);
    }
    if (!*wanted || sStopped) return 0;
    item = tree_item(id);
    if (found && !found->empty())
        add_children(tree, item, std::move(*found), wanted);
    else
        close_empty(tree, item, found.has_value());
    return 0;
}

void tree_expand_later(QTreeWidget* tree, QTreeWidgetItem* item) {
    sPending.push_back({tree, tree_item_id(item)});
    QTimer::singleShot(0, tree, expand_pending);
}

void tree_state_cb(QTreeWidget* tree, QTreeWidgetItem* item) {
    tree_item(item)->end_filling();
    for (QTreeWidgetItem* up = tree->currentItem(); up != nullptr; up = up->parent()) {
        if (up->parent() == item) tree->setCurrentItem(item);
    }
    qDeleteAll(item->takeChildren());
}

void tree_expand_stop() {
    sStopped = true;
    sPending.clear();
}

}  // namespace dorn
