#include "dirmodel/name_translation.h"

#include "config/config.h"

#include <gtest/gtest.h>
#include <thread>

using namespace dorn;

namespace {

constexpr uint32_t kTry = kEncodingTryUtf8;
constexpr uint32_t kSet = kEncodingAlternate;
constexpr const char* kLatin = "ISO-8859-1";

class NameTranslation : public testing::Test {
  protected:
    ~NameTranslation() override {
        fname_set_translation(0, nullptr);
    }
};

TEST_F(NameTranslation, ANameIsShownInItsSetAndRepairedWhereItIsBad) {
    std::string accents;
    while (accents.size() < 2000)
        accents += "\xC3\xA9";
    const std::tuple<uint32_t, const char*, std::string, std::string, int> rows[] = {
        {0, "", "/usr//lib/", "/usr//lib/", 0},
        {0, "", accents, accents, 0},
        {0, "", "abc\xFF", "?abc?", 1},
        {0, "", "\xC3", "\?\?", 1},
        {0, "", "\xC0\xAFx", "\?\?\?x", 2},
        {0, "", "\xED\xA0\x80", "\?\?\?\?", 3},
        {0, "", "caf\xE9/\xC3\xA9/x\xFF", "?caf?/\xC3\xA9/?x?", 2},
        {0, "", "/\xFF/", "/\?\?/", 1},
        {0, "", std::string(1999, 'n') + "\xFF", "?" + std::string(1022, 'n'), 1},
        {0, "", "\xFF" + accents, "\?\?" + accents.substr(0, 1020) + "?", 2},  // cut in a letter
        {kTry, kLatin, "\xC3\xA9/caf\xE9", "\xC3\xA9/caf\xC3\xA9", 0},
        {kTry, "", "abc\xFF", "abc\xFF", 0},
        {kSet, kLatin, "\xC3\xA9", "\xC3\x83\xC2\xA9", 0},
        {kSet, kLatin, "/usr/caf\xE9/", "/usr/caf\xC3\xA9/", 0},
        {kSet, "US-ASCII", "dir/a\xE9z", "dir/?a?z", 1},
        {kSet, nullptr, "abc\xFF", "abc\xFF", 0},
    };
    for (const auto& [mode, set, name, shown, bad] : rows) {
        ASSERT_EQ(fname_set_translation(mode, set), 0);
        int count = -1;
        EXPECT_EQ(fname_decode(name.c_str(), &count), shown) << testing::PrintToString(name);
        EXPECT_EQ(count, bad) << testing::PrintToString(name);
    }
}

TEST_F(NameTranslation, WhatIsTypedBecomesANameOfTheSetOrNone) {
    const std::string longest(1023, 'n');
    const std::string longer = longest + "n";
    const std::tuple<uint32_t, const char*, const char*> rows[] = {
        {0, "x\xFF", "x\xFF"},
        {kTry, "caf\xC3\xA9", "caf\xC3\xA9"},
        {kSet, "", ""},
        {kSet, "/a//caf\xC3\xA9/", "/a//caf\xE9/"},
        {kSet, "/a/\xE2\x82\xAC", nullptr},
        {kSet, "bad\xFF", nullptr},
        {kSet, longest.c_str(), longest.c_str()},
        {kSet, longer.c_str(), nullptr},
    };
    for (const auto& [mode, typed, name] : rows) {
        ASSERT_EQ(fname_set_translation(mode, kLatin), 0);
        EXPECT_STREQ(fname_encode(typed), name) << typed;
    }
    EXPECT_EQ(fname_set_translation(kSet, "no such set"), -1);
    EXPECT_STREQ(fname_encode("\xE2\x82\xAC"), "\xE2\x82\xAC");
}

TEST_F(NameTranslation, EveryThreadHasItsOwnResultWhileTheSetChanges) {
    ASSERT_EQ(fname_set_translation(kSet, kLatin), 0);
    const char* mine = fname_decode("caf\xE9", nullptr);
    std::thread other([] {
        for (int round = 0; round < 2000; ++round) {
            EXPECT_STREQ(fname_decode("na\xEFve", nullptr), "na\xC3\xAFve");
            EXPECT_STREQ(fname_encode("na\xC3\xAFve"), "na\xEFve");
        }
    });
    for (int round = 0; round < 50; ++round)
        fname_set_translation(kSet, round % 2 == 0 ? "windows-1252" : kLatin);
    other.join();
    EXPECT_STREQ(mine, "caf\xC3\xA9");
}

}  // namespace
