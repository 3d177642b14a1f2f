// The Quick Reference: a window that lists the commands and keys there are.
#include "dialogs/dialog_window.h"
#include "menus/accelerators.h"
#include "menus/commands.h"
#include "menus/menu_build.h"
#include "ui/qt_widget.h"
#include "ui_quickref.h"

#include <QPointer>

#include <array>

namespace dorn {

namespace {

struct KeyLine {
    const char* what;
    const char* key;
};

struct KeyGroupLines {
    const char* title;
    std::span<const KeyLine> lines;
};

// Keys that are in no menu.
constexpr auto kListKeys = std::to_array<KeyLine>({
    {"Open the current entry", "Ret"},
    {"Find the first name that begins so", "letters"},
    {"Find forward, opening it with Ret", "/"},
    {"Find backward", "?"},
    {"Run a command with Ret", ":"},
    {"Give up what is being typed", "Esc"},
    {"Select a range", "Shift-click"},
    {"Select one more, or one less", "Ctrl-click"},
    {"Next part of the window", "Tab"},
    {"View menu", "menu button on the toolbar"},
});
constexpr auto kPathKeys = std::to_array<KeyLine>({
    {"Go to the path", "Ret"},
    {"Complete the directory's name", "Esc Esc"},
    {"Show the history", "Down"},
    {"Bring the shown path back", "F5"},
});
constexpr auto kFilterKeys = std::to_array<KeyLine>({
    {"Show only the names that match", "Ret"},
    {"Show the history", "Down"},
    {"Bring the filter in use back", "Esc"},
});
constexpr auto kKeyGroups = std::to_array<KeyGroupLines>({
    {"File list", kListKeys},
    {"Path field", kPathKeys},
    {"Filter field", kFilterKeys},
});

QTreeWidgetItem* add_group(QTreeWidget* list, const QString& title) {
    auto* group = new QTreeWidgetItem(list, {title});
    QFont bold = list->font();
    bold.setBold(true);
    group->setFont(0, bold);
    group->setFirstColumnSpanned(true);
    return group;
}

void add_menu(QTreeWidget* list, const Menu& menu) {
    QTreeWidgetItem* group = add_group(list, menu_plain_label(menu.title));
    QString submenu;
    for (const MenuItem& item : menu.items) {
        if (item.level == 0) submenu.clear();
        if (item.kind == MenuKind::Submenu)
            submenu = menu_plain_label(item.label) + QStringLiteral(" > ");
        if (item.kind != MenuKind::Command || !menu_item_present(item)) continue;
        new QTreeWidgetItem(group,
                            {submenu + menu_plain_label(item.label), accelerator_text(item)});
    }
    if (group->childCount() == 0) delete group;
}

void fill(QTreeWidget* list) {
    for (const Menu& menu : menu_bar_tables())
        add_menu(list, menu);
    for (const KeyGroupLines& keys : kKeyGroups) {
        QTreeWidgetItem* group = add_group(list, QString::fromUtf8(keys.title));
        for (const KeyLine& line : keys.lines)
            new QTreeWidgetItem(group, {QString::fromUtf8(line.what), QString::fromUtf8(line.key)});
    }
    list->expandAll();
    list->resizeColumnToContents(0);
}

}  // namespace

int help_quickref() {
    static QPointer<QDialog> window;
    if (dialog_to_front(window)) return 0;
    window = dialog_make();
    Ui::QuickReference layout;
    layout.setupUi(window);
    QObject::connect(layout.quickref_close, &QPushButton::clicked, window, &QDialog::close);
    fill(layout.quickref_list);
    ui_register_instances(window);
    window->show();
    return 0;
}

}  // namespace dorn
