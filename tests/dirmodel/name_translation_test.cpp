#include "dirmodel/name_translation.h"

#include "config/config.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace dorn {
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
    int count = -1;
    EXPECT_EQ(fname_decode(name.c_str(), &count), name.c_str()) << testing::PrintToString(name);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(fname_decode(name.c_str(), nullptr), name.c_str());
}

TEST_F(NameTranslation, Utf8IsShownAsItIsAndRepairedWhereItIsBad) {
    std::string accents;
    while (accents.size() < 2000)
        accents += "\xC3\xA9";
    for (const std::string& name : {std::string(), std::string("abc"), std::string("/usr//lib/"),
                                    std::string(2000, 'n'), accents})
        expect_unchanged(name);

    const std::string cut = "??" + accents.substr(0, 1020) + "?";  // through a character
    expect_decoded("abc\xFF", "?abc?", 1);
    expect_decoded("\xFF\xFE", "???", 2);
    expect_decoded("\xC3", "??", 1);
    expect_decoded("\xC0\xAFx", "???x", 2);
    expect_decoded("\xED\xA0\x80", "????", 3);
    expect_decoded("caf\xE9/\xC3\xA9/x\xFF", "?caf?/\xC3\xA9/?x?", 2);
    expect_decoded("/\xFF/", std::string("/?") + "?/", 1);
    expect_decoded(std::string(1999, 'n') + "\xFF", "?" + std::string(1022, 'n'), 1);
    expect_decoded("\xFF" + accents, cut, 2);
    const std::string typed = "x\xFF";
    EXPECT_EQ(fname_encode(typed.c_str()), typed.c_str());
}

TEST_F(NameTranslation, NamesThatAreNoUtf8AreReadInTheAlternateSet) {
    ASSERT_EQ(fname_set_translation(kEncodingTryUtf8, "ISO-8859-1"), 0);
    expect_unchanged("");
    expect_unchanged("caf\xC3\xA9");
    expect_decoded("caf\xE9", "caf\xC3\xA9", 0);
    expect_decoded("\xC3\xA9/caf\xE9", "\xC3\xA9/caf\xC3\xA9", 0);
    const std::string typed = "caf\xC3\xA9";
    EXPECT_EQ(fname_encode(typed.c_str()), typed.c_str());
}

TEST_F(NameTranslation, AlternateSetIsAssumedForEveryName) {
    ASSERT_EQ(fname_set_translation(kEncodingAlternate, "ISO-8859-1"), 0);
    expect_decoded("caf\xE9", "caf\xC3\xA9", 0);
    expect_decoded("\xC3\xA9", "\xC3\x83\xC2\xA9", 0);
    expect_decoded("/usr/caf\xE9/", "/usr/caf\xC3\xA9/", 0);
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {"caf\xC3\xA9", "caf\xE9"},
        {"/a//caf\xC3\xA9/", "/a//caf\xE9/"},
        {"\xE2\x82\xAC", nullptr},
        {"/a/\xE2\x82\xAC", nullptr},
        {"bad\xFF", nullptr},
    };
    for (const auto& [shown, disk] : rows)
        EXPECT_STREQ(fname_encode(shown), disk) << shown;
    EXPECT_NE(fname_encode(std::string(1023, 'n').c_str()), nullptr);
    EXPECT_EQ(fname_encode(std::string(1024, 'n').c_str()), nullptr);
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
}  // namespace dorn
