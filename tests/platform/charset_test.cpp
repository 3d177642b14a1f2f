#include "platform/charset.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <thread>

namespace dorn {
namespace {

using namespace std::string_literals;

struct Converted {
    CharsetStatus status;
    std::string text;

    bool operator==(const Converted&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Converted& converted) {
    return out << static_cast<int>(converted.status) << " \"" << converted.text << '"';
}

using Conversion = CharsetResult (*)(const Charset&, std::string_view, char*, std::size_t);

Converted convert(Conversion conversion, const Charset& charset, std::string_view text,
                  std::size_t capacity) {
    std::array<char, 256> out;
    const CharsetResult result = conversion(charset, text, out.data(), capacity);
    return {result.status, {out.data(), result.written}};
}

TEST(CharsetTest, NamesBecomeUtf8AsFarAsTheSetKnowsTheirBytes) {
    const auto ok = [](const char* text) { return Converted{CharsetStatus::Ok, text}; };
    const auto replaced = [](const char* text) { return Converted{CharsetStatus::Replaced, text}; };
    const std::tuple<const char*, std::string, std::size_t, Converted> rows[] = {
        {"latin1", "", 100, ok("")},
        {"KOI8-R", "\xc6\xc1\xca\xcc", 100, ok("\u0444\u0430\u0439\u043b")},
        {"Shift_JIS", "\x83\x5c.txt", 100, ok("\u30bd.txt")},
        {"EUC-JP", "a\xff.b", 100, replaced("a/.b")},
        {"EUC-JP", "a\xa4", 100, replaced("a/")},
        {"US-ASCII", "\xe9\xe8", 100, replaced("//")},
        {"UTF-8", "a\xff", 100, replaced("a/")},
        {"GB18030", "\x94\x39\xda\x33", 100, ok("\U0001F4A9")},
        {"GB18030", "a\x94\x39\xda\x33", 4, replaced("a")},
        {"KOI8-R", "\xc6\xc1", 3, replaced("\u0444")},
        {"KOI8-R", "\xc6", 0, replaced("")},
    };
    for (const auto& [set, bytes, capacity, expected] : rows) {
        const CharsetPtr charset = charset_open(set);
        ASSERT_NE(charset, nullptr) << set;
        charset_set_replacement(*charset, '/');
        EXPECT_EQ(convert(charset_to_utf8, *charset, bytes, capacity), expected) << set;
    }
    const CharsetPtr strict = charset_open("US-ASCII");
    charset_set_replacement(*strict, '\0');
    EXPECT_EQ(convert(charset_to_utf8, *strict, "a\xe9", 100).status, CharsetStatus::Failed);
}

TEST(CharsetTest, ANameGoesBackExactlyOrNotAtAll) {
    const Converted failed{CharsetStatus::Failed, ""};
    const auto ok = [](const char* bytes) { return Converted{CharsetStatus::Ok, bytes}; };
    const std::tuple<const char*, std::string, std::size_t, Converted> rows[] = {
        {"ISO-8859-1", "caf\u00e9", 4, ok("caf\xe9")},
        {"ISO-8859-1", "caf\u00e9", 3, failed},
        {"ISO-8859-1", "\u20ac", 100, failed},
        {"ISO-8859-1", "\uff21", 100, failed},   // a wide A is no A
        {"ISO-8859-1", "a\u200b", 100, failed},  // has no width, but is there
        {"Shift_JIS", "\u30bd", 100, ok("\x83\x5c")},
        {"ISO-8859-1", "a\xff", 100, failed},
        {"ISO-8859-1", "a\0b"s, 100, failed},
        {"UTF-8", "\xed\xa0\x80", 100, failed},
        {"US-ASCII", "", 0, ok("")},
    };
    for (const auto& [set, text, capacity, expected] : rows) {
        const CharsetPtr charset = charset_open(set);
        ASSERT_NE(charset, nullptr) << set;
        EXPECT_EQ(convert(charset_from_utf8, *charset, text, capacity), expected) << set << text;
    }
}

TEST(CharsetTest, SetsInWhichAPathWouldBeAnotherPathAreRefused) {
    for (const char* name : {"UTF-16", "UTF-32BE", "UTF-7", "IMAP-mailbox-name", "IBM037", "SCSU",
                             "BOCU-1", "HZ-GB-2312", "ISO-2022-JP", "LMBCS-1", "no such set", ""})
        EXPECT_EQ(charset_open(name), nullptr) << name;
}

TEST(CharsetTest, TheListHoldsWhatCanBeOpenedOnceAndInOrder) {
    const std::vector<std::string> names = charset_names();
    for (const char* name : {"ISO-8859-1", "KOI8-R", "Shift_JIS", "EUC-JP", "GB18030", "Big5",
                             "windows-1252", "IBM437"})
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
    for (const std::string& name : names)
        EXPECT_NE(charset_open(name.c_str()), nullptr) << name;
    for (std::size_t i = 1; i < names.size(); ++i)
        EXPECT_LT(strcasecmp(names[i - 1].c_str(), names[i].c_str()), 0) << names[i];
}

TEST(CharsetTest, SeveralThreadsMayUseOneSet) {
    const CharsetPtr charset = charset_open("EUC-JP");
    const auto work = [&charset] {
        const Converted expected{CharsetStatus::Replaced, "\u3042?"};
        for (int i = 0; i < 2000; ++i)
            ASSERT_EQ(convert(charset_to_utf8, *charset, "\xa4\xa2\xff", 100), expected);
    };
    std::thread other(work);
    work();
    other.join();
}

TEST(Utf8Test, OnlyWholeAndShortestSequencesAreValid) {
    for (const auto& valid : {"a"s, "\x7f"s, "\xc2\x80"s, "\xe0\xa0\x80"s, "\xed\x9f\xbf"s,
                              "\xef\xbf\xbf"s, "\xf0\x90\x80\x80"s, "\xf4\x8f\xbf\xbf"s})
        EXPECT_EQ(utf8_sequence_length(valid + "zz"), valid.size()) << valid;
    for (const auto& bad :
         {""s, "\0"s, "\x80"s, "\xc1\xbf"s, "\xc2"s, "\xc2\x41"s, "\xe0\x9f\xbf"s, "\xe2\x82"s,
          "\xed\xa0\x80"s, "\xf0\x8f\xbf\xbf"s, "\xf4\x90\x80\x80"s, "\xf5\x80\x80\x80"s, "\xff"s})
        EXPECT_EQ(utf8_sequence_length(bad), 0U) << testing::PrintToString(bad);
}

}  // namespace
}  // namespace dorn
