#include "destmenus/dest_menu.h"

#include "config/config.h"
#include "destmenus/dest_commands.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "hotlist/engine/hotlist.h"

#include <QTimer>

namespace dorn {

namespace {

constexpr const char* kSeparatorName = "mgen_separator";

void clear_tree(DestMenu* cascade) {
    cascade->dtm_clear();
    delete cascade->findChild<QAction*>(QLatin1String(kSeparatorName), Qt::FindDirectChildrenOnly);
}

void add_cascade(QMenu* menu, const char* name, const QString& label, DestAction action) {
    const uint32_t flags = gConfig->flags & kHideDotFiles;
    auto* cascade = new DestMenu(menu, std::string(), flags, action);
    cascade->setTitle(label);
    cascade->menuAction()->setObjectName(QLatin1String(name));
    QObject::connect(cascade->addAction(QStringLiteral("&Other...")), &QAction::triggered, cascade,
                     [action] { re_route(action); });
    QObject::connect(cascade, &QMenu::aboutToShow, [cascade] { mgen_add_tree(cascade); });
    // The item that was chosen, if one was, has its turn before it goes.
    QObject::connect(menu, &QMenu::aboutToHide, cascade, [cascade] {
        cascade->dtm_stop();
        QTimer::singleShot(0, cascade, [cascade] { clear_tree(cascade); });
    });
    menu->addMenu(cascade);
}

}  // namespace

void mgen_work_insert(QMenu* menu) {
    if (gDir == nullptr || gDir->n_selected <= 0) return;
    add_cascade(menu, "mgen_copy_to", QStringLiteral("&Copy To"), x_copy_to_dest);
    add_cascade(menu, "mgen_move_to", QStringLiteral("&Move To"), x_move_to_dest);
}

void mgen_add_tree(DestMenu* menu) {
    if (!menu->entries().empty()) return;
    std::vector<DestEntry> roots;
    for (const std::string& root : gTree.entries) {
        const char* path = fname_encode(root.c_str());
        if (path != nullptr && path[0] != '\0') roots.push_back({path, root});
    }
    if (roots.empty()) return;
    menu->addSeparator()->setObjectName(QLatin1String(kSeparatorName));
    menu->dtm_add_roots(std::move(roots));
}

}  // namespace dorn
