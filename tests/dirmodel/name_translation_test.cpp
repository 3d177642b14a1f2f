#include "dirmodel/name_translation.h"

#include "config/config.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

using namespace dorn;

namespace {

class NameTranslation : public testing::Test {
  protected:
    ~NameTranslation() override {
        fname_set_translation(0, nullptr);
    }
};

void expect_decoded(const std::string& name, const std::string& shown, int bad) {
    int count = -1;
    EXPECT_EQ(fname_decode(name.c_str(), &count), shown) << testing::PrintToString(name);
    EXPECT_EQ(count, bad) << testing::PrintToString(name);
}

void expect_unchanged(const std::string& name) {
    expect_decoded(name, name, 0);
    EXPECT_EQ(fname_decode(name.c_str(), nullptr), name.c_str());
}

TEST_F(NameTranslation, Utf8IsShownAsItIsAndRepairedWhereItIsBad) {
    std::string accents;
    while (accents.size() < 2000)
        accents += "\xC3\xA9";
    for (const std::string& name : {std::string(), std::string("/usr//lib/"), accents})
        expect_unchanged(name);
    const std::tuple<std::string, std::string, int> rows[] = {
        {"abc\xFF", "?abc?", 1},
        {"\xFF\xFE", "???", 2},
        {"\xC3", "??", 1},
        {"\xC0\xAFx", "???x", 2},
        {"\xED\xA0\x80", "????", 3},
        {"caf\xE9/\xC3\xA9/x\xFF", "?caf?/\xC3\xA9/?x?", 2},
        {"/\xFF/",
         "/?"
         "?/",
         1},
        {std::string(1999, 'n') + "\xFF", "?" + std::string(1022, 'n'), 1},
        {"\xFF" + accents,
         "?"
         "?" +
             accents.substr(0, 1020) + "?",
         2},  // through a character
    };
    for (const auto& [name, shown, bad] : rows)
        expect_decoded(name, shown, bad);
    const std::string typed = "x\xFF";
    EXPECT_EQ(fname_encode(typed.c_str()), typed.c_str());
}

TEST_F(NameTranslation, NamesThatAreNoUtf8AreReadInTheAlternateSet) {
    ASSERT_EQ(fname_set_translation(kEncodingTryUtf8, "ISO-8859-1"), 0);
    expect_unchanged("caf\xC3\xA9");
    expect_decoded("\xC3\xA9/caf\xE9", "\xC3\xA9/caf\xC3\xA9", 0);
    EXPECT_STREQ(fname_encode("caf\xC3\xA9"), "caf\xC3\xA9");
}

TEST_F(NameTranslation, AlternateSetIsAssumedForEveryName) {
    ASSERT_EQ(fname_set_translation(kEncodingAlternate, "ISO-8859-1"), 0);
    expect_decoded("\xC3\xA9", "\xC3\x83\xC2\xA9", 0);
    expect_decoded("/usr/caf\xE9/", "/usr/caf\xC3\xA9/", 0);
    const std::string longest(1023, 'n');
    const std::string longer = longest + "n";
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {"/a//caf\xC3\xA9/", "/a//caf\xE9/"},
        {"/a/\xE2\x82\xAC", nullptr},
        {"bad\xFF", nullptr},
        {longest.c_str(), longest.c_str()},
        {longer.c_str(), nullptr},
    };
    for (const auto& [shown, disk] : rows)
        EXPECT_STREQ(fname_encode(shown), disk) << shown;
    ASSERT_EQ(fname_set_translation(kEncodingAlternate, "US-ASCII"), 0);
    expect_decoded("dir/a\xE9z", "dir/?a?z", 1);
}

TEST_F(NameTranslation, WithoutASetNamesStayAsTheyAre) {
    EXPECT_EQ(fname_set_translation(kEncodingTryUtf8, ""), 0);
    expect_unchanged("abc\xFF");
    EXPECT_EQ(fname_set_translation(kEncodingAlternate, nullptr), 0);
    expect_unchanged("abc\xFF");
    EXPECT_EQ(fname_set_translation(kEncodingAlternate, "no such set"), -1);
    expect_unchanged("abc\xFF");
    EXPECT_STREQ(fname_encode("\xE2\x82\xAC"), "\xE2\x82\xAC");
}

TEST_F(NameTranslation, EveryThreadHasItsOwnResultWhileTheSetChanges) {
    ASSERT_EQ(fname_set_translation(kEncodingAlternate, "ISO-8859-1"), 0);
    const char* mine = fname_decode("caf\xE9", nullptr);
    std::thread other([] {
        for (int round = 0; round < 2000; ++round) {
            EXPECT_STREQ(fname_decode("na\xEFve", nullptr), "na\xC3\xAFve");
            EXPECT_STREQ(fname_encode("na\xC3\xAFve"), "na\xEFve");
        }
    });
    for (int round = 0; round < 50; ++round)
        fname_set_translation(kEncodingAlternate, round % 2 == 0 ? "windows-1252" : "ISO-8859-1");
    other.join();
    EXPECT_STREQ(mine, "caf\xC3\xA9");
}

}  // namespace
