// The ways in which the program ends.
#include "app/base.h"
#include "config/history.h"
#include "dirmodel/dir_read.h"
#include "fileops/slots.h"
#include "fileops/slots_window.h"
#include "hotlist/hotlist_tree.h"
#include "ui/qt_widget.h"

#include <QWidget>

namespace dorn {

namespace {

void save_all(const char* directory) {
    if (gConfig->save_on_exit != 0) {
        base_get_window_metrics(gConfig);
        base_get_divider_metrics(gConfig);
        init_save_config(gConfig, directory, "config.003");
    }
    init_save_cboxs(directory);
    init_destroy_cboxs();
    tree_save(directory, "hotlist.001");
}

}  // namespace

int base_closing() {
    if (base_window_closed != 0) return 0;
    base_window_closed = 1;
    if (gConfigPath != nullptr) save_all(gConfigPath->c_str());
    dir_read_stop();
    tree_expand_stop();
    return 0;
}

int fm_exit() {
    QWidget* base = qt(w_instance("base"));
    if (base_window_closed != 0 || base == nullptr) return 0;
    if (n_slots == 0) {
        base->close();
        return 0;
    }
    base_closing();
    base->hide();
    if (slots_window_is_hidden()) slots_show();
    return 0;
}

void signal_terminate() {
    base_closing();
    if (QWidget* base = qt(w_instance("base")); base != nullptr) base->hide();
    slot_terminate_all(n_slots);
}

}  // namespace dorn
