#include "menus/menus.h"

#include "assoc/assoc_dialogs.h"
#include "destmenus/dest_menu.h"
#include "dialogs/about.h"
#include "dialogs/new_item.h"
#include "dialogs/open_with.h"
#include "dialogs/pattern.h"
#include "dialogs/preferences.h"
#include "dialogs/properties.h"
#include "dialogs/symlink.h"
#include "filelist/filelist.h"
#include "hotlist/hotlist_tree.h"
#include "menus/accelerators.h"
#include "menus/commands.h"
#include "menus/list_menu.h"
#include "menus/menu_accessible.h"
#include "menus/menu_build.h"
#include "menus/toolbar.h"
#include "menus/view_toggles.h"
#include "ui/qt_widget.h"

#include <QEvent>
#include <QMainWindow>
#include <QMenuBar>

#include <array>

namespace dorn {

namespace {

struct OwnCommand {
    const char* name;
    MenuCommand command;
};

constexpr auto kOwnCommands = std::to_array<OwnCommand>({
    {"fm_new_file", fm_new_file},
    {"fm_new_folder", fm_new_folder},
    {"lcm_new_file", new_file_setup},
    {"lcm_new_folder", new_dir_setup},
    {"fm_open", fm_open},
    {"fm_open_another", fm_open_another},
    {"fm_new_window", fm_new_window},
    {"fm_view", fm_view},
    {"fm_edit", fm_edit},
    {"fm_open_with", fm_open_with},
    {"fm_open_orterm", fm_open_orterm},
    {"fm_print", fm_print},
    {"fm_print_directory", fm_print_directory},
    {"fm_refresh", fm_refresh},
    {"em_cut", em_cut},
    {"em_copy", em_copy},
    {"em_paste", em_paste},
    {"em_delete", em_delete},
    {"fm_inspect", fm_inspect},
    {"em_rename", em_rename},
    {"fm_symlink", fm_symlink},
    {"em_select_all", em_select_all},
    {"em_unselect_all", em_unselect_all},
    {"em_select_pattern", em_select_pattern},
    {"em_unselect_pattern", em_unselect_pattern},
    {"em_invert", em_invert_selection},
    {"em_preferences", em_edit_preferences},
    {"em_associations", em_edit_associations},
    {"gm_back", gm_back},
    {"gm_forward", gm_forward},
    {"gm_up", gm_up},
    {"gm_home", gm_home},
    {"hm_add", hm_add},
    {"hm_remove", hm_remove},
    {"hcm_add", tree_add_cb},
    {"hcm_delete", tree_delete_cb},
    {"help_quickref", help_quickref},
    {"help_about", help_about},
});

void complete_list_menu_facts(ListMenuFacts* facts) {
    lcm_look_at_associations(facts);
    facts->can_paste = em_check_clipboard_for_type(-1, nullptr) != 0;
}

// While a menu is open the list is not re-read, which would take the selection from under it.
class RefreshHold : public QObject {
  public:
    explicit RefreshHold(QMenu* menu) : QObject(menu) {
        menu->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show) hold(true);
        if (event->type() == QEvent::Hide) hold(false);
        return QObject::eventFilter(watched, event);
    }

  private:
    void hold(bool on) {
        if (holding_ != on) fl_hold_refresh(on);
        holding_ = on;
    }

    bool holding_ = false;
};

void register_own_commands() {
    for (const OwnCommand& own : kOwnCommands)
        menus_register(own.name, own.command);
    menus_register_generator("hm_populate", hm_populate);
    menus_register_generator("em_populate", em_populate);
    menus_register_generator("mgen_work_insert", mgen_work_insert);
    lcm_set_facts_cb(complete_list_menu_facts);
    view_toggles_register();
}

// The menu of that instance name that pops up by itself, made when first asked for.
QMenu* popup_menu(const char* name) {
    QWidget* base = qt(w_instance("base"));
    if (base == nullptr) return nullptr;
    if (auto* menu = base->findChild<QMenu*>(QLatin1String(name), Qt::FindDirectChildrenOnly))
        return menu;
    auto* menu = new QMenu(base);
    menu->setObjectName(QLatin1String(name));
    new RefreshHold(menu);
    return menu;
}

void open_at(QMenu* menu, int x, int y) {
    if (!menu->isEmpty()) menu->popup(QPoint(x, y));
}

void open_table_at(const Menu& table, int x, int y) {
    QMenu* menu = popup_menu(table.name);
    if (menu == nullptr) return;
    menu_build(menu, table);
    open_at(menu, x, y);
}

}  // namespace

void menus_setup() {
    menu_accessible_install();
    register_own_commands();
    auto* bar = qt_instance<QMenuBar>("menu_bar");
    for (const Menu& table : menu_bar_tables()) {
        for (const MenuItem& item : table.items) {
            if (item.kind == MenuKind::Command && menu_item_present(item))
                accelerator_install(item);
        }
        QMenu* menu = bar->addMenu(QString::fromUtf8(table.title));
        menu->setObjectName(QLatin1String(table.name));
        new RefreshHold(menu);
        menu_build(menu, table);  // screen readers look into menus that are not open
        QObject::connect(menu, &QMenu::aboutToShow, [menu, &table] { menu_build(menu, table); });
    }
    toolbar_setup();
    view_layout_setup();
}

void menus_open_list_menu(int x, int y) {
    QMenu* menu = popup_menu("list_context_menu");
    if (menu == nullptr) return;
    lcm_setup(menu);
    open_at(menu, x, y);
}

void menus_open_hotlist_menu(int x, int y) {
    open_table_at(hotlist_context_table(), x, y);
}

void menus_open_view_menu(int x, int y) {
    open_table_at(view_menu_table(), x, y);
}

}  // namespace dorn
