#include "dirmodel/name_match.h"

#include <gtest/gtest.h>

using namespace dorn;

TEST(NameMatch, PatternsAreTriedFromTheLeft) {
    const std::string long_name(700, 'x');
    const std::string long_pattern = "^a|" + std::string(699, 'X') + "?";
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"index.htm", "*.html|*.htm", true},
        {"index.HTM", "*.html|*.htm", false},
        {"index.HTM", "^*.html|*.htm", true},
        {"readme", "^x|*D*", true},
        {".profile", "*", true},
        {"a/b", "a*b", true},
        {"a", "", false},
        {"", "a|", true},
        {"a", "||a", true},
        {"^a", "^^A", true},
        {"[", "[", true},
        {"a*", "a\\*", true},
        {"ab", "a\\*", false},
        {"name\xFF.c", "*.c", true},
        {long_name.c_str(), long_pattern.c_str(), true},
    };
    for (const auto& [name, patterns, matches] : rows)
        EXPECT_EQ(es_strcmp(name, patterns) == 0, matches) << name << " against " << patterns;
}
