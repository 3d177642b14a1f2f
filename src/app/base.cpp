// The main window's set-up: its panes wired together in a fixed order.
#include "app/base.h"

#include "config/history.h"
#include "dirmodel/dir_entry.h"
#include "filelist/columns.h"
#include "filelist/filelist.h"
#include "filelist/list_view.h"
#include "filelist/selection.h"
#include "fileops/engine/cut_list.h"
#include "fileops/engine/file_clipboard.h"
#include "hotlist/hotlist_tree.h"
#include "menus/commands.h"
#include "menus/menus.h"
#include "menus/path_bar.h"
#include "menus/toolbar.h"
#include "ui/actions.h"
#include "ui/clipboard.h"
#include "ui/combo.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QComboBox>

namespace dorn {

std::string gStartPath;
int base_window_closed = 0;

namespace {

// Whether the user is at work elsewhere than in the panes: in a text field of the main window, in a
// dialog, in another program.
bool is_elsewhere() {
    const QWidget* base = qt(w_instance("base"));
    if (base == nullptr || QApplication::activeWindow() != base) return true;
    return dynamic_cast<QComboBox*>(base->focusWidget()) != nullptr;
}

const char* config_directory() {
    return gConfigPath == nullptr ? nullptr : gConfigPath->c_str();
}

void set_minimum_size(const char* instance, int width, int height) {
    if (QWidget* panel = qt(w_instance(instance)); panel != nullptr)
        panel->setMinimumSize(width, height);
}

void hotlist_changed() {
    tb_update();
}

bool is_cut(const char* directory, const char* name) {
    return file_is_cut(directory, name) != 0;
}

void clipboard_changed() {
    static bool marks_shown = false;
    if (marks_shown || file_any_cut()) fl_update_cut();
    marks_shown = file_any_cut();
    tb_update_edit();
    em_clipboard_changed();
}

// What is copied or cut is there for other programs, this one's next run included, when it has
// ended.
void set_up_clipboard() {
    file_clipboard_setup(clipboard_changed);
    fl_set_cut_cb(is_cut, file_get_cut_files);
    fl_set_selected_cb(tb_update_edit);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, [] {
        file_get_cut_files();  // what was moved last is not to stay on the list
        clipboard_outlive();
    });
}

void before_realised() {
    cl_apply(gSpecList.get(), w_instance("tb_filespec"));
    if (auto* filter = qt_instance<QComboBox>("tb_filespec"); filter != nullptr)
        filter->setEditText(QStringLiteral("*"));
    fl_setspec("*");
    set_minimum_size("hotlist_panel", 96, 100);
    set_minimum_size("filelist_panel", 120, 100);
    tree_setup();
    tree_set_notify_cb(hotlist_changed);
    tree_set_menu_cb(menus_open_hotlist_menu);
    tree_load(config_directory(), "hotlist.001");
    cl_apply(gPathList.get(), w_instance("tb_curpath"));
    path_bar_setup();
    fl_setup();
    fl_set_menu_cb(menus_open_list_menu);
    fl_set_notify_cb(base_update);
    base_set_divider_metrics(gConfig);
    menus_register("fm_exit", fm_exit);
    menus_setup();
    init_actions();
    init_kb_defaults();
    init_link();
    set_up_clipboard();
}

}  // namespace

int base_setup(Widget*, int phase) {
    if (phase == 1)
        before_realised();
    else if (fl_setpath(gStartPath.c_str()) == -1)
        fl_setpath("/");  // names need a shown directory to be relative to
    show_sort_method(w_instance("fh_filename"));
    return 0;
}

int base_opening() {
    base_set_window_metrics(gConfig);
    return 0;
}

void base_update() {
    status_bar_update();
    // A re-read that another process asked for leaves a half-typed path, and the keyboard, alone.
    if (!fl_is_refreshed_quietly() || !is_elsewhere()) {
        tb_curpath_set_text(gDir->path.c_str());
        misc_give_focus(w_instance("filelist"));
    }
    tb_update();
}

void signal_refresh() {
    if (base_window_closed == 0) fl_refresh_quietly();
}

void init_link() {
    ac_link_widget(w_instance("filelist"), "filelist");
}

}  // namespace dorn
