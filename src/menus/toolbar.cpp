#include "menus/toolbar.h"

#include "dirmodel/dir_entry.h"
#include "filelist/navigation.h"
#include "hotlist/engine/hotlist.h"
#include "menus/accelerators.h"
#include "menus/commands.h"
#include "menus/menus.h"
#include "menus/path_bar.h"
#include "ui/qt_widget.h"

#include <QToolButton>

#include <array>
#include <string_view>

namespace dorn {

namespace {

constexpr int kIconSize = 16;  // pixels

struct ToolbarButton {
    const char* instance;
    const char* command;
    const char* picture;
    const char* theme_icon;  // preferred where the desktop has it; null: our own picture always
};

constexpr auto kButtons = std::to_array<ToolbarButton>({
    {"tb_back", "gm_back", "back", "go-previous"},
    {"tb_forward", "gm_forward", "forward", "go-next"},
    {"tb_up", "gm_up", "up", "go-up"},
    {"tb_home", "gm_home", "home", "go-home"},
    {"tb_cut", "em_cut", "cut", "edit-cut"},
    {"tb_copy", "em_copy", "copy", "edit-copy"},
    {"tb_paste", "em_paste", "paste", "edit-paste"},
    {"tb_delete", "em_delete", "delete", "edit-delete"},
    {"tb_refresh", "fm_refresh", "refresh", "view-refresh"},
    {"tb_add", "hm_add", "bookmark_add", "bookmark-new"},
    {"tb_hotlist", "vm_hotlist", "hotlist_pane", nullptr},
    {"hl_close", "vm_hotlist", "close_pane", nullptr},
});

void set_up_button(const ToolbarButton& row) {
    auto* button = qt_instance<QToolButton>(row.instance);
    if (button == nullptr) return;
    button->setIcon(ui_icon(row.picture, row.theme_icon));
    button->setIconSize(QSize(kIconSize, kIconSize));
    const MenuItem* item = find_menu_item(row.command);
    const QString key = item == nullptr ? QString() : accelerator_text(*item);
    if (!key.isEmpty())
        button->setToolTip(QStringLiteral("%1 (%2)").arg(button->accessibleName(), key));
    QObject::connect(button, &QToolButton::clicked,
                     [command = row.command] { menus_run(command); });
}

void open_view_menu_from(const char* instance) {
    QWidget* area = qt(w_instance(instance));
    if (area == nullptr) return;
    area->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(area, &QWidget::customContextMenuRequested, [area](const QPoint& at) {
        const QPoint global = area->mapToGlobal(at);
        menus_open_view_menu(global.x(), global.y());
    });
}

void set_enabled(const char* instance, bool enabled) {
    if (QWidget* widget = qt(w_instance(instance))) widget->setEnabled(enabled);
}

}  // namespace

void toolbar_setup() {
    for (const ToolbarButton& row : kButtons)
        set_up_button(row);
    open_view_menu_from("main_tbg");
    open_view_menu_from("path_tbg");
}

void tb_update_edit() {
    MenuStates states;
    em_setup(states);
    for (const ToolbarButton& row : kButtons) {
        if (std::string_view(row.command).starts_with("em_"))
            set_enabled(row.instance, states.enabled(row.command));
    }
}

void tb_update() {
    tb_update_edit();
    if (gDir == nullptr) return;
    const char* home = home_directory();
    set_enabled("tb_back", fl_get_back_count() > 0);
    set_enabled("tb_forward", fl_get_forward_count() > 0);
    set_enabled("tb_up", gDir->path != "/");
    set_enabled("tb_home", home != nullptr && gDir->path != home);
    set_enabled("tb_add", tree_lookup(gDir->path.c_str()) == 0);
}

}  // namespace dorn
