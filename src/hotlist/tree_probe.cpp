#include "hotlist/tree_probe.h"

#include "config/config.h"
#include "ui/background.h"
#include "ui/qt_widget.h"

#include <algorithm>

namespace dorn {

namespace {

// Few enough that one dead mount among the children leaves few of them without an answer, many
// enough that thousands of children are not thousands of threads.
constexpr std::size_t kBatch = 64;

struct Question {
    int64_t id;
    std::string path;
    DirectoryKind kind = DirectoryKind::Branch;
};
using Questions = std::vector<Question>;

void take_answer(const Question& question) {
    TreeItem* item = tree_item(question.id);
    if (item == nullptr) return;
    const bool sorted_child = item->parent() != nullptr && (gOptions & kOptionTreeSorted) != 0;
    if (question.kind == DirectoryKind::Missing && sorted_child)
        delete item;
    else
        item->set_kind(question.kind);
}

void ask(QTreeWidget* tree, Questions questions, const TreeItem::Wanted& wanted) {
    auto shared = std::make_shared<Questions>(std::move(questions));
    const int flags = tree_probe_flags();
    const auto is_wanted = [wanted] { return !wanted || *wanted; };
    ui_async(
        handle(tree),
        [shared, flags, is_wanted] {
            for (Question& question : *shared) {
                if (!is_wanted()) return;
                question.kind = directory_kind_here(question.path, flags);
            }
        },
        [shared, is_wanted] {
            if (!is_wanted()) return;
            for (const Question& question : *shared)
                take_answer(question);
        });
}

}  // namespace

int tree_probe_flags() {
    return ((gOptions & kOptionProbeFiles) != 0 ? 1 : 0) |
           ((gOptions & kOptionTreeDotEntries) != 0 ? 2 : 0);
}

void tree_probe(QTreeWidget* tree, const std::vector<TreeItem*>& items,
                const TreeItem::Wanted& wanted) {
    Questions batch;
    for (TreeItem* item : items) {
        const std::optional<std::string> path = tree_disk_path(item);
        if (!path) {
            item->set_kind(DirectoryKind::Missing);
            continue;
        }
        batch.push_back({item->id(), *path});
        // Hotlist entries may each lie on another mount, so they don't wait for one another.
        const bool full = item->parent() == nullptr || batch.size() == kBatch;
        if (full) ask(tree, std::exchange(batch, {}), wanted);
    }
    if (!batch.empty()) ask(tree, std::move(batch), wanted);
}

}  // namespace dorn
