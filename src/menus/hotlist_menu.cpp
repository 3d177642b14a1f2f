// The Bookmarks menu: the hotlist as a menu.
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/navigation.h"
#include "hotlist/hotlist_tree.h"
#include "menus/commands.h"
#include "menus/path_bar.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QMenu>

#include <string>

namespace dorn {

namespace {

// A path as an item; a long one is cut in the middle, so that it leaves the screen its room.
QString item_label(const QMenu* menu, const std::string& path) {
    constexpr int kWidestEms = 60;
    const QFontMetrics metrics = menu->fontMetrics();
    return metrics
        .elidedText(ui_text(path.c_str()), Qt::ElideMiddle, kWidestEms * metrics.averageCharWidth())
        .replace(u'&', QStringLiteral("&&"));
}

}  // namespace

int hm_add() {
    tree_add_cb();
    tb_update();
    return 0;
}

int hm_remove() {
    tree_remove(&gTree, gDir->path.c_str());
    tb_update();
    return 0;
}

void hm_setup(MenuStates& states) {
    if (gDir == nullptr) return;
    states.disable(tree_lookup(gDir->path.c_str()) != 0 ? "hm_add" : "hm_remove");
}

void hm_populate(QMenu* menu) {
    if (gTree.entries.empty()) return;
    menu->addSeparator();
    for (const std::string& entry : gTree.entries) {
        const char* encoded = fname_encode(entry.c_str());
        const std::string path = encoded != nullptr ? encoded : entry;
        QAction* action = menu->addAction(item_label(menu, path));
        QObject::connect(action, &QAction::triggered, [path] {
            if (!ui_is_blocked(w_instance("base"))) _new_path(path.c_str());
        });
    }
}

}  // namespace dorn
