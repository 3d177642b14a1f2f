#include "platform/charset.h"

#include <array>
#include <gtest/gtest.h>
#include <set>
#include <thread>

using namespace dorn;
using namespace std::string_literals;

namespace {

using Conversion = CharsetResult (*)(const Charset&, std::string_view, char*, std::size_t);

// What it gives: the text, before it "bad:" where something was replaced, "failed" alone.
std::string convert(Conversion conversion, const Charset& charset, std::string_view text,
                    std::size_t room = 100) {
    std::array<char, 100> out;
    const CharsetResult result = conversion(charset, text, out.data(), room);
    if (result.status == CharsetStatus::Failed) return "failed";
    return (result.status == CharsetStatus::Replaced ? "bad:" : "") +
           std::string(out.data(), result.written);
}

TEST(CharsetTest, NamesBecomeUtf8AsFarAsTheSetKnowsTheirBytes) {
    const std::tuple<const char*, const char*, std::size_t, const char*> rows[] = {
        {"latin1", "", 100, ""},
        {"KOI8-R", "\xc6\xc1\xca\xcc", 100, "\u0444\u0430\u0439\u043b"},
        {"Shift_JIS", "\x83\x5c.txt", 100, "\u30bd.txt"},
        {"EUC-JP", "a\xff.b", 100, "bad:a/.b"},
        {"EUC-JP", "a\xa4", 100, "bad:a/"},
        {"US-ASCII", "\xe9\xe8", 100, "bad://"},
        {"UTF-8", "a\xff", 100, "bad:a/"},
        {"GB18030", "a\x94\x39\xda\x33", 100, "a\U0001F4A9"},
        {"GB18030", "a\x94\x39\xda\x33", 4, "bad:a"},
        {"KOI8-R", "\xc6", 0, "bad:"},
    };
    for (const auto& [set, bytes, room, expected] : rows) {
        const CharsetPtr charset = charset_open(set);
        ASSERT_NE(charset, nullptr) << set;
        charset_set_replacement(*charset, '/');
        EXPECT_EQ(convert(charset_to_utf8, *charset, bytes, room), expected) << set;
    }
    const CharsetPtr strict = charset_open("US-ASCII");
    charset_set_replacement(*strict, '\0');
    EXPECT_EQ(convert(charset_to_utf8, *strict, "a\xe9"), "failed");
}

TEST(CharsetTest, ANameGoesBackExactlyOrNotAtAll) {
    const std::tuple<const char*, std::string, std::size_t, const char*> rows[] = {
        {"ISO-8859-1", "caf\u00e9", 4, "caf\xe9"}, {"ISO-8859-1", "caf\u00e9", 3, "failed"},
        {"ISO-8859-1", "\u20ac", 100, "failed"},   {"ISO-8859-1", "\uff21", 100, "failed"},
        {"ISO-8859-1", "a\u200b", 100, "failed"},  {"Shift_JIS", "\u30bd", 100, "\x83\x5c"},
        {"ISO-8859-1", "a\xff", 100, "failed"},    {"ISO-8859-1", "a\0b"s, 100, "failed"},
        {"UTF-8", "\xed\xa0\x80", 100, "failed"},  {"US-ASCII", "", 0, ""},
    };
    for (const auto& [set, text, room, expected] : rows)
        EXPECT_EQ(convert(charset_from_utf8, *charset_open(set), text, room), expected) << text;
}

TEST(CharsetTest, SetsInWhichAPathWouldBeAnotherPathAreRefusedAndNotListed) {
    const std::vector<std::string> list = charset_names();
    const std::set<std::string> names(list.begin(), list.end());
    EXPECT_EQ(names.size(), list.size());
    for (const char* name : {"UTF-16", "UTF-32BE", "UTF-7", "IMAP-mailbox-name", "IBM037", "SCSU",
                             "BOCU-1", "HZ-GB-2312", "ISO-2022-JP", "LMBCS-1", "no such set", ""})
        EXPECT_EQ(charset_open(name), nullptr) << name;
    for (const char* name : {"ISO-8859-1", "KOI8-R", "Shift_JIS", "EUC-JP", "GB18030", "Big5"})
        EXPECT_TRUE(names.contains(name)) << name;
    for (const std::string& name : list)
        EXPECT_NE(charset_open(name.c_str()), nullptr) << name;
}

TEST(CharsetTest, SeveralThreadsMayUseOneSet) {
    const CharsetPtr charset = charset_open("EUC-JP");
    const auto work = [&charset] {
        for (int i = 0; i < 2000; ++i)
            ASSERT_EQ(convert(charset_to_utf8, *charset, "\xa4\xa2\xff"), "bad:\u3042?");
    };
    std::thread other(work);
    work();
    other.join();
}

TEST(Utf8Test, OnlyWholeAndShortestSequencesAreValid) {
    for (const auto& valid : {"a"s, "\xc2\x80"s, "\xe0\xa0\x80"s, "\xed\x9f\xbf"s, "\xef\xbf\xbf"s,
                              "\xf0\x90\x80\x80"s, "\xf4\x8f\xbf\xbf"s})
        EXPECT_EQ(utf8_sequence_length(valid + "zz"), valid.size()) << valid;
    for (const auto& bad :
         {""s, "\0"s, "\x80"s, "\xc1\xbf"s, "\xc2"s, "\xc2\x41"s, "\xe0\x9f\xbf"s, "\xe2\x82"s,
          "\xed\xa0\x80"s, "\xf0\x8f\xbf\xbf"s, "\xf4\x90\x80\x80"s, "\xf5\x80\x80\x80"s, "\xff"s})
        EXPECT_EQ(utf8_sequence_length(bad), 0U) << testing::PrintToString(bad);
}

}  // namespace
