#include "menus/menu_tables.h"

#include "menus/accelerators.h"

#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace dorn {
namespace {

char mnemonic(const char* label) {
    const char* mark = std::strchr(label, '&');
    return mark == nullptr ? '\0' : static_cast<char>(std::tolower(mark[1]));
}

TEST(MenuTables, MnemonicsDifferWithinEachLevelOfAMenu) {
    const std::span<const Menu> bar = menu_bar_tables();
    std::vector<const Menu*> tables = {&view_menu_table(), &hotlist_context_table()};
    for (const Menu& menu : bar)
        tables.push_back(&menu);
    std::string twins;
    for (const Menu* table : tables) {
        std::map<std::pair<std::string, char>, std::string> seen;
        std::string submenu;
        for (const MenuItem& item : table->items) {
            if (item.label == nullptr) continue;
            const std::pair key(item.level == 0 ? "" : submenu, mnemonic(item.label));
            if (item.kind == MenuKind::Submenu) submenu = item.label;
            if (key.second == '\0') continue;
            const auto [at, fresh] = seen.emplace(key, item.label);
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

}  // namespace
}  // namespace dorn
