#include "menus/view_toggles.h"

#include "config/config.h"
#include "menus/menus.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QAbstractButton>
#include <QEvent>

#include <array>

namespace dorn {

namespace {

bool is_shown(const char* instance) {
    const QWidget* widget = qt(w_instance(instance));
    return widget != nullptr && !widget->isHidden();
}

struct Toggle {
    const char* name;
    MenuCommand command;
    bool (*is_on)();
};

constexpr auto kToggles = std::to_array<Toggle>({
    {"vm_nav_tb", vm_nav_tb_toggle, [] { return is_shown("nav_tb"); }},
    {"vm_clip_tb", vm_clip_tb_toggle, [] { return is_shown("clip_tb"); }},
    {"vm_misc_tb", vm_misc_tb_toggle, [] { return is_shown("misc_tb"); }},
    {"vm_hotlist_tb", vm_hotlist_tb_toggle, [] { return is_shown("hotlist_tb"); }},
    {"vm_path_tb", vm_path_tb_toggle, [] { return is_shown("path_tb"); }},
    {"vm_filter_tb", vm_filter_tb_toggle, [] { return is_shown("filter_tb"); }},
    {"vm_icon", vm_icon_toggle, [] { return is_shown("filelist_panel"); }},
    {"vm_hotlist", vm_hotlist_toggle, [] { return is_shown("hotlist_panel"); }},
    {"vm_status", vm_status_toggle, [] { return is_shown("status_pane"); }},
});

}  // namespace

int vm_hotlist_toggle() {
    QWidget* panel = qt(w_instance("hotlist_panel"));
    if (panel == nullptr) return 0;
    const bool show = panel->isHidden();
    if (!show && panel->isAncestorOf(panel->window()->focusWidget()))
        misc_give_focus(w_instance("filelist"));
    panel->setVisible(show);
    gConfig->show_hotlist = show ? 1 : 0;
    if (auto* button = qt_instance<QAbstractButton>("tb_hotlist")) button->setChecked(show);
    return 0;
}

int vm_clip_tb_toggle() {
    if (QWidget* toolbar = qt(w_instance("clip_tb"))) toolbar->setVisible(toolbar->isHidden());
    return 0;
}

int vm_nav_tb_toggle() {
    return 0;
}
int vm_misc_tb_toggle() {
    return 0;
}
int vm_hotlist_tb_toggle() {
    return 0;
}
int vm_path_tb_toggle() {
    return 0;
}
int vm_filter_tb_toggle() {
    return 0;
}
int vm_icon_toggle() {
    return 0;
}
int vm_status_toggle() {
    return 0;
}
int vm_text_and_images() {
    return 0;
}
int vm_text_only() {
    return 0;
}
int vm_images_only() {
    return 0;
}

void view_toggles_register() {
    for (const Toggle& toggle : kToggles)
        menus_register_toggle(toggle.name, toggle.command, toggle.is_on);
    menus_register("vm_text_and_images", vm_text_and_images);
    menus_register("vm_text_only", vm_text_only);
    menus_register("vm_images_only", vm_images_only);
}

int adjust_menu_tbg() {
    return 0;
}
int adjust_main_tbg() {
    return 0;
}
int adjust_workspace() {
    return 0;
}

int adjust_bottom_tbg() {
    QWidget* workspace = qt(w_instance("workspace"));
    QWidget* line = qt(w_instance("bottom_tbg"));
    if (workspace == nullptr || line == nullptr) return 0;
    auto area = [workspace](const char* instance) {
        const QWidget* widget = qt(w_instance(instance));
        if (widget == nullptr) return QRect();
        return QRect(widget->mapTo(workspace, QPoint(0, 0)), widget->size());
    };
    const QRect left = area("left_tbg");
    const int overlap = left.width() == 2 ? 2 : 1;
    const int x = left.x() + left.width() - overlap;
    const int y = area("status_pane").y() - line->height();
    line->setGeometry(x, y, area("right_tbg").x() + 1 - x, line->height());
    return 0;
}

namespace {

// Adjusts the areas whenever the toolkit has laid the workspace out.
class LayoutWatcher : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
            case QEvent::LayoutRequest:
            case QEvent::Resize:
            case QEvent::Move:
            case QEvent::Show:
                adjust_menu_tbg();
                adjust_main_tbg();
                adjust_workspace();
                adjust_bottom_tbg();
                break;
            default:
                break;
        }
        return QObject::eventFilter(watched, event);
    }
};

}  // namespace

void view_layout_setup() {
    QWidget* workspace = qt(w_instance("workspace"));
    if (workspace == nullptr) return;
    auto* watcher = new LayoutWatcher(workspace);
    workspace->installEventFilter(watcher);
    if (QWidget* status = qt(w_instance("status_pane"))) status->installEventFilter(watcher);
}

}  // namespace dorn
