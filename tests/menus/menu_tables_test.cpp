#include "menus/menu_tables.h"

#include "menus/accelerators.h"
#include "menus/commands.h"
#include "menus/menu_build.h"
#include "menus/menus.h"

#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace dorn {
namespace {

std::vector<const Menu*> all_tables() {
    std::vector<const Menu*> tables;
    for (const Menu& menu : menu_bar_tables())
        tables.push_back(&menu);
    tables.push_back(&view_menu_table());
    tables.push_back(&hotlist_context_table());
    return tables;
}

char mnemonic(const char* label) {
    const char* mark = std::strchr(label, '&');
    return mark == nullptr ? '\0' : static_cast<char>(std::tolower(mark[1]));
}

TEST(MenuTables, MnemonicsDifferWithinEachLevelOfAMenu) {
    std::string twins;
    for (const Menu* table : all_tables()) {
        std::map<std::pair<std::string, char>, std::string> seen;
        std::string submenu;
        for (const MenuItem& item : table->items) {
            if (item.label == nullptr) continue;
            const std::string level = item.level == 0 ? "" : submenu;
            if (item.kind == MenuKind::Submenu) submenu = item.label;
            if (mnemonic(item.label) == '\0') continue;
            const auto [at, fresh] =
                seen.emplace(std::pair(level, mnemonic(item.label)), item.label);
            if (!fresh) twins += at->second + " and " + item.label + ". ";
        }
    }
    // The two that share a letter: pressing it twice reaches the second.
    EXPECT_EQ(twins, "&Paste and &Preferences.... ");
}

TEST(MenuTables, AKeyBelongsToOneItemOfTheMenuBar) {
    std::map<QString, const char*> seen;
    for (const Menu& menu : menu_bar_tables()) {
        for (const MenuItem& item : menu.items) {
            for (const QKeySequence& key : accelerator_keys(item)) {
                ASSERT_FALSE(key.isEmpty()) << item.name;
                ASSERT_NE(key[0].key(), Qt::Key_unknown) << item.name;
                const auto [at, fresh] = seen.emplace(key.toString(), item.name);
                EXPECT_TRUE(fresh) << at->second << " and " << item.name;
            }
        }
    }
    EXPECT_EQ(seen.size(), 31u + 3u);  // Return is on two keys
}

TEST(MenuTables, AcceleratorTextsAndKeysBelongTogether) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"fm_open_another", "Ctrl-Ret", "Ctrl+Return"},
        {"fm_view", "Alt-V", "Alt+V"},
        {"em_delete", "Del", "Del"},
        {"gm_back", "Alt-<-", "Alt+Left"},
        {"gm_up", "Bksp", "Backspace"}};
    for (const auto& [name, text, key] : rows) {
        const MenuItem* item = find_menu_item(name);
        ASSERT_NE(item, nullptr) << name;
        EXPECT_EQ(accelerator_text(*item), QLatin1String(text));
        EXPECT_EQ(accelerator_keys(*item).front().toString(), QLatin1String(key));
    }
}

// What a menu holds, for comparing: labels in order, "-" for a separator, submenus in brackets.
std::string outline(const QMenu& menu) {
    std::string text;
    for (const QAction* action : menu.actions()) {
        if (!text.empty()) text += ' ';
        if (action->isSeparator())
            text += '-';
        else if (action->menu() != nullptr)
            text += action->text().toStdString() + "[" + outline(*action->menu()) + "]";
        else
            text += action->text().toStdString();
    }
    return text;
}

int do_nothing() {
    return 0;
}
void add_two(QMenu* menu) {
    menu->addSeparator();
    menu->addAction(QStringLiteral("g1"));
    menu->addAction(QStringLiteral("g2"));
}
void add_none(QMenu*) {}

constexpr MenuItem row(int level, MenuKind kind, const char* name) {
    return {level, kind, name, 0, nullptr, name};
}
const std::vector<MenuItem> kSample{
    row(0, MenuKind::Separator, nullptr), row(0, MenuKind::Submenu, "sub"),
    row(1, MenuKind::Command, "in1"),     row(1, MenuKind::Separator, nullptr),
    row(1, MenuKind::Command, "in2"),     row(0, MenuKind::Separator, nullptr),
    row(0, MenuKind::Command, "a"),       row(0, MenuKind::Separator, nullptr),
    row(0, MenuKind::Command, "b"),       row(0, MenuKind::Separator, nullptr),
    row(0, MenuKind::Generator, "gen"),   row(0, MenuKind::Separator, nullptr),
    row(0, MenuKind::Command, "c"),       row(0, MenuKind::Separator, nullptr)};

TEST(MenuBuild, WhatIsNotRegisteredLeavesNoTrace) {
    QMenu menu;
    menu_build(&menu, kSample, {});
    EXPECT_EQ(outline(menu), "");
    menus_register("c", do_nothing);
    menu_build(&menu, kSample, {});
    EXPECT_EQ(outline(menu), "c");
    menus_register("in2", do_nothing);
    menus_register("a", do_nothing);
    menu_build(&menu, kSample, {});
    EXPECT_EQ(outline(menu), "sub[in2] - a - c");
    menus_register("in1", do_nothing);
    menus_register("b", do_nothing);
    menus_register_generator("gen", add_two);
    menu_build(&menu, kSample, {});
    EXPECT_EQ(outline(menu), "sub[in1 - in2] - a - b - g1 g2 - c");
    menus_register_generator("gen", add_none);
    menu_build(&menu, kSample, {});
    EXPECT_EQ(outline(menu), "sub[in1 - in2] - a - b - c");
}

}  // namespace
}  // namespace dorn
