#include "assoc/engine/association_index.h"
#include "support/headless_screen.h"
#include "support/sandbox.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace dorn {
namespace {

constexpr const char* kFile = "associate.003";
const std::string kHeader =
    "# <pattern[|pattern[..]]> \\t <open_command> \\t <view_command> \\t <edit command>\n";

std::string text_of(const std::vector<Association>& rows) {
    std::string text;
    for (const Association& row : rows)
        text += row.pattern + "/" + row.open + "/" + row.edit + "/" + row.view + ";";
    return text;
}

class AssociationTest : public testing::Test {
  protected:
    ~AssociationTest() override {
        apat.clear();
        gScreen = {};
    }
    Sandbox sandbox_;
};

TEST_F(AssociationTest, LinesAreReadInPiecesAndSplitAtTabs) {
    const std::string full(1021, 'x');  // with its TAB and its newline the longest line
    const std::string head(1000, 'p');
    const std::tuple<std::string, int, std::string> table[] = {
        {"", 0, ""},
        {"# only\n#a comment", 0, ""},
        {"*.x\tcmd", 0, "*.x/cmd//;"},
        {"a\topen\tview\tedit\tmore\t\n", 0, "a/open/edit/view;"},
        {"\t\t\t\n#c\n \tb\n", 0, "///; /b//;"},
        {"#c\n#c\na\tb\nbad\n", 2, "a/b//;"},
        {"a\tb\n\nc\td\n", 2, "a/b//;"},
        {"a\tb\r\n", 0, "a/b\r//;"},
        {std::string("a\tb\0rest\tc\n", 11), 0, "a/b//;"},
        {full + "\t\n", 0, full + "///;"},
        {full + "x\t\n", 2, full + "x///;"},
        {head + "\t" + std::string(22, 'o') + "1\t2\n", 0,
         head + "/" + std::string(22, 'o') + "//;1/2//;"},
        {head + "\t" + std::string(22, 'o') + "#\t2\n", 0,
         head + "/" + std::string(22, 'o') + "//;"},
    };
    for (const auto& [content, bad, expected] : table) {
        std::vector<Association> rows;
        EXPECT_EQ(assoc_parse(content, &rows), bad) << content;
        EXPECT_EQ(text_of(rows), expected) << content;
    }
}

TEST_F(AssociationTest, TheTableIsWrittenAndReadBackByteForByte) {
    std::vector<Association> rows;
    for (int i = 0; i < 25; ++i)
        rows.push_back({"*." + std::to_string(i), "open \xff", i % 2 == 0 ? "" : "edit @", "view"});
    for (const char* directory : {static_cast<const char*>(nullptr), "/nowhere", sandbox_.path()})
        assoc_replace(rows, directory, kFile);
    EXPECT_EQ(text_of(apat), text_of(rows));
    EXPECT_TRUE(sandbox_.read(kFile).starts_with(kHeader + "*.0\topen \xff\tview\t\n"));
    apat.clear();
    init_read_associations(sandbox_.path(), kFile);
    EXPECT_EQ(text_of(apat), text_of(rows));
    assoc_replace({}, sandbox_.path(), kFile);
    EXPECT_EQ(sandbox_.read(kFile), kHeader);
    init_read_associations(sandbox_.path(), kFile);
    EXPECT_TRUE(apat.empty());  // and not the defaults
}

TEST_F(AssociationTest, WithoutAFileTheDefaultsHold) {
    init_read_associations(nullptr, kFile);
    EXPECT_EQ(apat.size(), 10u);
    init_read_associations(sandbox_.path(), kFile);
    EXPECT_EQ(assoc_format(apat).substr(80, 57),
              "*.[ch]\tored\tored -r\tored\n[Mm]akefile\torterm -z make -f @\t");
    EXPECT_EQ(access(sandbox_.file(kFile).c_str(), F_OK), -1);
    EXPECT_EQ(_get_pat_idx("notes.TXT"), -1);
    EXPECT_STREQ(_get_pat_cmd("notes.TXT", AssocAction::Open), nullptr);
    EXPECT_STREQ(_get_pat_cmd("photo.JPG", AssocAction::Open), "orv");
    EXPECT_STREQ(_get_pat_cmd("photo.JPG", AssocAction::View), nullptr);
    EXPECT_STREQ(_get_pat_cmd("font.ttf", AssocAction::Open), "cp $PWD/@ /usr/orrin/font");
}

TEST_F(AssociationTest, ABlankCommandOfTheFirstMatchIsNotLookedForFurther) {
    apat = {{"*.c|*.h", "one", "", " \t\v"}, {"*", "two", "edit", "view"}};
    EXPECT_EQ(_get_pat_cmd("a.h", AssocAction::View), nullptr);
    EXPECT_EQ(_get_pat_cmd("a.h", AssocAction::Edit), nullptr);
    EXPECT_STREQ(_get_pat_cmd("a.x", AssocAction::Edit), "edit");
}

TEST_F(AssociationTest, TheIndexFindsWhatTheTableFinds) {
    const std::string patterns[] = {"*.c|*.h",
                                    "^*.TAR.g[zX]|readme",
                                    "Makefile|*.[a-b]|[.]c|*.[!c]|*[.",
                                    "^x|^y",
                                    "a*|",
                                    "[b-d]?|*.t\\*|*\\[ab]",
                                    "*.tar.gz",
                                    "^*\xC3\x84*|*.\xff",
                                    "*"};
    const char* const names[] = {
        "a.c",      "x.tar.gz", "X.TAR.GZ", "README", "Makefile", "end.",   ".c",    "^y",
        "X",        "",         "b1",       "e.t*",   "[ab]",     "\\a",    "e.txt", "\xC3\x84",
        "\xC3\xA4", "q.\xff",   "no match", "a.b.c",  "..h",      ".tar.gz"};
    for (std::size_t skipped = 0; skipped < std::size(patterns); ++skipped) {
        apat.clear();
        for (const std::string& pattern : patterns)
            if (pattern != patterns[skipped]) apat.push_back({pattern, "", "", ""});
        for (int turn = 0; turn < 2; ++turn, std::reverse(apat.begin(), apat.end())) {
            const AssociationIndex index;
            for (const char* name : names)
                EXPECT_EQ(index.find(name), _get_pat_idx(name)) << name << ", without " << skipped;
        }
    }
}

// What is alerted goes to the shown screen, so the alerts are told on standard error for the test.
[[noreturn]] void read_and_tell(const char* directory) {
    std::atexit([] {
        for (const headless::Alert& alert : gScreen.alerts)
            std::fprintf(stderr, "[%s|%s]\n", alert.title.c_str(), alert.message.c_str());
    });
    init_read_associations(directory, kFile);
    std::exit(0);
}

TEST_F(AssociationTest, ADamagedFileIsToldAndEndsTheProgram) {
    sandbox_.write(kFile, "# one\n# two\n*.c\tored\n*.x\n*.h\tored\n");
    EXPECT_EXIT(read_and_tell(sandbox_.path()), testing::ExitedWithCode(1),
                "^DORN error: Invalid association at line 2\n"
                "\\[Error\\|Invalid association at line 2\\]\n$");
}

}  // namespace
}  // namespace dorn
