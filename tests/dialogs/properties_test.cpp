#include "dialogs/properties.h"

#include "config/config.h"
#include "dialog_fixture.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "filelist/selection.h"

#include <QCheckBox>
#include <QLabel>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

class PropertiesTest : public DialogTest {
  protected:
    void make(const std::string& name, mode_t mode, const std::string& content = {}) {
        sandbox_.write(name, content);
        chmod(sandbox_.file(name).c_str(), mode);
    }
    void inspect(std::initializer_list<const char*> names) {
        show_sandbox();
        fl_unselect_all();
        for (const char* name : names)
            fl_select_index(index_of(name));
        fm_inspect();
    }
    mode_t mode_of(const std::string& name) const {
        struct stat status {};
        return lstat(sandbox_.file(name).c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }
    static bool greyed(const char* label) {
        return !qt(w_instance(label))->isEnabled();
    }
    // The toggles as octal digits.
    static std::string toggles() {
        constexpr std::array<const char*, 11> names = {
            "pr_setuserid", "pr_setgroupid", "pr_uread", "pr_uwrite", "pr_uexec", "pr_gread",
            "pr_gwrite",    "pr_gexec",      "pr_oread", "pr_owrite", "pr_oexec"};
        unsigned mode = 0;
        for (const char* name : names) {
            mode = mode * 2 + (qt_instance<QCheckBox>(name)->isChecked() ? 1 : 0);
            if (qstrcmp(name, "pr_setgroupid") == 0) mode *= 2;  // the sticky bit
        }
        return QString::number(mode, 8).toStdString();
    }
};

TEST_F(PropertiesTest, OneEntryIsShownWithItsDetails) {
    make("a<b>.tar.gz", 06754, std::string(1234567, 'x'));
    sandbox_.link("a<b>.tar.gz", "link");
    inspect({"a<b>.tar.gz"});
    EXPECT_TRUE(gets_focus("pr_name"));
    EXPECT_EQ(field_text("pr_name"), "a<b>.tar.gz");
    EXPECT_EQ(qt_instance<QLineEdit>("pr_name")->selectedText(), QStringLiteral("a<b>.tar"));
    EXPECT_EQ(text_of("pr_filetype"), "Executable");
    EXPECT_EQ(text_of("pr_size"), "1,234,567");
    EXPECT_EQ(text_of("pr_location"), sandbox_.path());
    EXPECT_EQ(toggles(), "6754");
    EXPECT_TRUE(greyed("pr_symbolic") && greyed("pr_symbolic_title"));
    EXPECT_FALSE(qt(w_instance("pr_comment"))->isVisible());
    push("pr_cancel");
    inspect({"link"});
    EXPECT_EQ(text_of("pr_symbolic"), "a<b>.tar.gz");
    EXPECT_FALSE(greyed("pr_symbolic"));
}

TEST_F(PropertiesTest, SeveralEntriesAreShownAsASummary) {
    const std::string longest(250, 'n');
    make("a", 0644);
    make("b", 0755);
    make("big", 0600, std::string(3000, 'x'));
    make(longest, 0600);
    sandbox_.mkdir("d");
    sandbox_.mkdir("e");
    sandbox_.link("nowhere", "z");
    struct Row {
        std::initializer_list<const char*> names;
        const char* name;
        const char* comment;
        const char* size;
        const char* toggles;
    };
    const Row rows[] = {
        {{"a", "b"}, "a, b", "(2 files)", "", "644"},
        {{"d", "e"}, "d, e", "(2 directories)", "", "755"},
        {{"d", "big"}, "big, d", "(2 items: 1 directory, 1 file)", "2.952KB", "600"},
        {{"d", "e", "a", "b"}, "a, b, d, e", "(4 items: 2 directories, 2 files)", "", "644"},
        {{"b", longest.c_str(), "z"}, "b", "(3 files)", "7 byte_count", "600"},
    };
    for (const Row& row : rows) {
        inspect(row.names);
        EXPECT_EQ(field_text("pr_name"), row.name);
        EXPECT_FALSE(qt(w_instance("pr_name"))->isEnabled());
        EXPECT_EQ(text_of("pr_comment"), row.comment);
        EXPECT_EQ(text_of("pr_size"), row.size) << row.comment;
        EXPECT_EQ(greyed("pr_size_title"), *row.size == '\0');
        EXPECT_TRUE(greyed("pr_filetype_title") && greyed("pr_modified_title"));
        EXPECT_EQ(toggles(), row.toggles) << row.name;
        push("pr_cancel");
    }
}

TEST_F(PropertiesTest, DoneChangesOnlyWhatWasChanged) {
    struct Row {
        mode_t before;
        const char* toggle;
        mode_t after;
    };
    const Row rows[] = {{0644, nullptr, 0644},    {01755, nullptr, 0755},
                        {0644, "pr_uexec", 0744}, {06755, "pr_setuserid", 02755},
                        {0644, "pr_oread", 0640}, {0, "pr_setgroupid", 02000}};
    for (const Row& row : rows) {
        make("a", row.before);
        inspect({"a"});
        if (row.toggle != nullptr) qt_instance<QCheckBox>(row.toggle)->click();
        EXPECT_EQ(alerts_after("pr_done"), "");
        EXPECT_FALSE(is_open("property_dlg"));
        EXPECT_EQ(mode_of("a"), row.after);
        EXPECT_EQ(gDir->current, index_of("a"));
    }
    make("a", 0644);
    make("b", 0755);
    sandbox_.link("nowhere", "dangling");
    inspect({"a", "b", "dangling"});
    EXPECT_EQ(alerts_after("pr_done"), "");
    EXPECT_EQ(mode_of("a"), mode_of("b"));
    EXPECT_EQ(mode_of("a"), 0644U);
}

TEST_F(PropertiesTest, ANameIsGivenWhenItsTextWasChanged) {
    struct Row {
        std::string before;
        const char* typed;  // null: left as it is
        std::string after;
    };
    const Row rows[] = {
        {"a", nullptr, "a"}, {"b\xFF\n", nullptr, "b\xFF\n"}, {"c", "", "c"},
        {"d", " *\n", " *"}, {"\xE2\x80\xAE", "e", "e"},      {"f", "-g%s", "-g%s"},
    };
    for (const Row& row : rows) {
        make(row.before, 0644, row.before);
        inspect({row.before.c_str()});
        if (row.typed != nullptr) enter("pr_name", QString::fromUtf8(row.typed));
        EXPECT_EQ(
            alerts_of([] { QTest::keyClick(qt_instance<QLineEdit>("pr_name"), Qt::Key_Return); }),
            "");
        EXPECT_EQ(gDir->current, index_of(row.after)) << row.after;
        EXPECT_EQ(access(sandbox_.file(row.after).c_str(), F_OK), 0);
    }
}

TEST_F(PropertiesTest, EveryFailureIsToldAndLeavesTheRest) {
    strcpy(gConfig->alt_encoding, "ISO-8859-1");
    fname_set_translation(kEncodingAlternate, gConfig->alt_encoding);
    make("taken", 0600, "taken");
    sandbox_.link("nowhere", "dangling");
    struct Row {
        const char* field;
        std::string text;
        bool vanishes;
        std::string said;
    };
    const std::string huge(5000, 'x');
    const Row rows[] = {
        {"pr_name", "taken", false, "File name 'taken' already exists"},
        {"pr_name", "dangling", false, "File name 'dangling' already exists"},
        {"pr_name", "no/where", false, "Unable to rename 'no/where'."},
        {"pr_name", "\u20AC", false, "Unable to translate '\u20AC' into 'ISO-8859-1' encoding."},
        {"pr_name", huge, false, ("Unable to translate '" + huge).substr(0, 255)},
        {"pr_name", "b", true, "Unable to rename 'b'."},
        {"pr_owner", "nobody at all", false, "Invalid owner_id 'nobody at all'"},
        {"pr_group", "99999999999", false, "Invalid group '99999999999'"},
        {"pr_owner", "12345", true, "Unable to change ownership of 'a'"},
    };
    for (const Row& row : rows) {
        make("a", 0644, "a");
        inspect({"a"});
        enter(row.field, QString::fromStdString(row.text));
        qt_instance<QCheckBox>("pr_oexec")->click();
        if (row.vanishes) unlink(sandbox_.file("a").c_str());
        EXPECT_EQ(alerts_after("pr_done"), "Error: " + row.said);
        EXPECT_FALSE(is_open("property_dlg"));
        EXPECT_EQ(mode_of("a"), row.vanishes ? 0U : 0644U) << row.said;
        EXPECT_EQ(std::filesystem::file_size(sandbox_.file("taken")), 5U);
    }
    fname_set_translation(0, nullptr);
}

TEST_F(PropertiesTest, AnErrorOnOneEntryDoesNotStopTheOthersUnlessTheUserSaysSo) {
    for (const char* button : {"&Continue", "a&Bort"}) {
        for (const char* name : {"a", "b", "c", "d"})
            make(name, 0644);
        inspect({"a", "b", "c", "d"});
        qt_instance<QCheckBox>("pr_uexec")->click();
        unlink(sandbox_.file("a").c_str());
        unlink(sandbox_.file("c").c_str());
        EXPECT_EQ(alerts_after("pr_done", button),
                  "Error: Unable to change permissions of 'a'"
                  "Error: Unable to change permissions of 'c'");
        EXPECT_EQ(mode_of("b"), 0744U);
        EXPECT_EQ(mode_of("d"), *button == '&' ? 0744U : 0644U);
    }
}

TEST_F(PropertiesTest, AVanishedDirectoryIsAnErrorOfTheEntry) {
    make("a", 0644);
    inspect({"a"});
    qt_instance<QCheckBox>("pr_uexec")->click();
    std::filesystem::remove_all(sandbox_.path());
    EXPECT_EQ(alerts_after("pr_done"), "Error: Unable to change permissions of 'a'");
    EXPECT_EQ(gDir->count, 0);
    mkdir(sandbox_.path(), 0755);
}

}  // namespace
}  // namespace dorn
