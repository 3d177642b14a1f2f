#include "dirmodel/name_match.h"

#include <clocale>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace dorn {
namespace {

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

TEST(NameMatch, ShortCutsGiveWhatFnmatchGives) {
    const std::string pieces[] = {"*", ".",  "a",        "b",    "?", "[",
                                  "]", "\\", "\xC3\xA9", "\xFF", "*."};
    std::mt19937 random(1);
    const auto text = [&](std::size_t first) {
        std::string made;
        for (auto n = random() % 5; n > 0; --n)
            made += pieces[first + random() % (std::size(pieces) - first)];
        return made;
    };
    for (const char* locale : {"C", "C.UTF-8"}) {
        ASSERT_NE(std::setlocale(LC_CTYPE, locale), nullptr);
        for (int round = 0; round < 20000; ++round) {
            const std::string pattern = text(0);
            const std::string name = text(1);
            EXPECT_EQ(es_strcmp(name.c_str(), pattern.c_str()) == 0,
                      fnmatch(pattern.c_str(), name.c_str(), 0) == 0)
                << testing::PrintToString(name) << " against " << testing::PrintToString(pattern);
        }
    }
    std::setlocale(LC_CTYPE, "C");
}

}  // namespace
}  // namespace dorn
