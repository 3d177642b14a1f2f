#include "config/history.h"

#include "support/sandbox.h"

#include <gtest/gtest.h>
#include <random>

using namespace dorn;

namespace {

using Texts = std::vector<std::string>;

Texts texts_of(const HistoryList* list) {
    Texts texts;
    for (int n = 1; const char* text = cl_get(list, n); ++n)
        texts.emplace_back(text);
    return texts;
}

TEST(History, UsingAnEntryAgainMovesItToTheFrontInEveryStateOfTheRing) {
    std::mt19937 random(1);
    HistoryList list;
    Texts expected;
    for (int step = 0; step < 3000; ++step) {
        const std::string text = std::to_string(random() % 30);
        const bool is_newest = !expected.empty() && expected[0] == text;
        std::erase(expected, text);
        expected.insert(expected.begin(), text);
        if (expected.size() > 20) expected.pop_back();
        list.flags = 0;
        cl_add(&list, text.c_str());
        EXPECT_EQ(texts_of(&list), expected) << "step " << step;
        EXPECT_EQ(list.flags, is_newest ? 0U : kHistoryChanged);
    }
}

TEST(History, FileIsCutIntoLinesAsFgetsWould) {
    const std::string long_line(1021, 'x');
    const std::pair<std::string, Texts> rows[] = {
        {"", {}},
        {"a\n\nb", {"a", "", "b"}},
        {"a\na\n", {"a", "a"}},
        {long_line + "\nz\n", {long_line, "z"}},
        {long_line + "yz\n", {long_line + "y", "z"}},
        {long_line + "y\n", {long_line + "y", ""}},
        {std::string("a\0b\nc\n", 6), {"a", "c"}},
        {"\xFF\r\n", {"\xFF\r"}},
        {std::string(25, '\n'), Texts(20, "")},
    };
    for (const auto& [content, entries] : rows) {
        const auto list = cl_parse(content);
        EXPECT_EQ(texts_of(list.get()), entries) << testing::PrintToString(content);
        EXPECT_EQ(list->flags, kHistoryChanged);
    }
}

TEST(History, CompletionPassesOverWebPrefixes) {
    const auto list = cl_parse("gopher://host/\nfile:///usr/lib\n/usr/bin\nhttp:/x\n");
    const std::pair<const char*, const char*> rows[] = {
        {"/us", "/usr/lib"},     {"file:///us", "/usr/lib"},
        {"/usr/b", "/usr/bin"},  {"ftp://h", "host/"},
        {"/usr/lib/x", nullptr}, {"HTTP://h", nullptr},
        {"http:/", "http:/x"},   {"", "host/"},
    };
    for (const auto& [text, found] : rows)
        EXPECT_STREQ(cl_find_pattern(list.get(), text), found);
}

TEST(History, ListsLiveFromReadingToDestroyingThem) {
    const Sandbox sandbox;
    sandbox.write("goto.001", "/tmp\n/usr\n");
    sandbox.write("with.001", "vi\n");
    init_read_cboxs(sandbox.path());
    EXPECT_EQ(texts_of(gSpecList.get()), Texts{"*"});
    cl_add(gPathList.get(), "/line\nbreak");
    cl_add(gPathList.get(), ("/" + std::string(1021, 'x')).c_str());
    cl_add(gPathList.get(), "/usr");
    cl_add(gPatternList.get(), "*.c");
    cl_add(gWithList.get(), "ed");
    init_save_cboxs(sandbox.path());
    init_save_cboxs(nullptr);
    init_destroy_cboxs();
    init_read_cboxs(sandbox.path());
    EXPECT_EQ(texts_of(gPathList.get()), (Texts{"/usr", "/tmp"}));
    EXPECT_EQ(texts_of(gPatternList.get()), Texts{"*.c"});
    EXPECT_EQ(texts_of(gWithList.get()), Texts{"vi"}) << "never written";
    init_destroy_cboxs();
    init_save_cboxs(sandbox.path());
    EXPECT_EQ(sandbox.read("goto.001"), "/usr\n/tmp\n");
}

}  // namespace
