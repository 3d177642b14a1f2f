#include "dialogs/properties.h"

#include "dirmodel/name_translation.h"
#include "support_gui/window_test.h"

#include <QCheckBox>
#include <QLineEdit>

#include <filesystem>
#include <unistd.h>

namespace dorn {
namespace {

class PropertiesTest : public WindowTest {
  protected:
    void make(const std::string& name, mode_t mode, const std::string& content = {}) {
        sandbox_.write(name, content);
        chmod(sandbox_.file(name).c_str(), mode);
    }
    void inspect(const std::vector<std::string>& names) {
        show_sandbox();
        select(names);
        fm_inspect();
    }
    static std::string finish(const char* button = "") {
        return alerts_of([] { push("pr_done"); }, button);
    }
    mode_t bits_of(const std::string& name) const {
        return mode_of(name) & 07777;
    }
    static bool greyed(const char* label) {
        return !qt(w_instance(label))->isEnabled();
    }
    static unsigned toggles() {
        constexpr std::array<const char*, 12> names = {
            "pr_oexec", "pr_owrite", "pr_oread", "pr_gexec",  "pr_gwrite",     "pr_gread",
            "pr_uexec", "pr_uwrite", "pr_uread", "no sticky", "pr_setgroupid", "pr_setuserid"};
        unsigned mode = 0;
        for (unsigned i = 0; i < names.size(); ++i) {
            const auto* toggle = qt_instance<QCheckBox>(names[i]);
            if (toggle != nullptr && toggle->isChecked()) mode |= 1U << i;
        }
        return mode;
    }
};

TEST_F(PropertiesTest, OneEntryIsShownWithItsDetails) {
    make("a<b>.tar.gz", 06754, std::string(1234567, 'x'));
    sandbox_.link("a<b>.tar.gz", "link");
    inspect({"a<b>.tar.gz"});
    EXPECT_TRUE(gets_focus("pr_name"));
    EXPECT_EQ(qt_instance<QLineEdit>("pr_name")->selectedText(), QStringLiteral("a<b>.tar"));
    EXPECT_EQ(text_of("pr_size"), "1,234,567");
    EXPECT_EQ(text_of("pr_location"), sandbox_.path());
    EXPECT_EQ(toggles(), 06754U);
    EXPECT_TRUE(greyed("pr_symbolic"));
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
    sandbox_.link("nowhere", "z");
    const std::tuple<std::vector<std::string>, const char*, const char*, const char*, unsigned>
        rows[] = {
            {{"d", "big"}, "big, d", "(2 items: 1 directory, 1 file)", "2.952KB", 0600},
            {{"b", longest, "z"}, "b", "(3 files)", "7 byte_count", 0600},
        };
    for (const auto& [names, shown, comment, size, mode] : rows) {
        inspect(names);
        EXPECT_EQ(text_of("pr_name"), shown);
        EXPECT_TRUE(greyed("pr_name"));
        EXPECT_EQ(text_of("pr_comment"), comment);
        EXPECT_EQ(text_of("pr_size"), size) << comment;
        EXPECT_EQ(toggles(), mode) << shown;
        push("pr_cancel");
    }
}

TEST_F(PropertiesTest, DoneChangesOnlyTheModeAndTheNameThatWereChanged) {
    const std::tuple<mode_t, const char*, mode_t> modes[] = {{0644, nullptr, 0644},
                                                             {01755, nullptr, 0755},
                                                             {0644, "pr_uexec", 0744},
                                                             {06755, "pr_setuserid", 02755},
                                                             {0, "pr_setgroupid", 02000}};
    for (const auto& [before, toggle, after] : modes) {
        make("a", before);
        inspect({"a"});
        if (toggle != nullptr) qt_instance<QCheckBox>(toggle)->click();
        EXPECT_EQ(finish(), "");
        EXPECT_FALSE(is_open("property_dlg"));
        EXPECT_EQ(bits_of("a"), after);
    }
    make("a", 0644);
    make("b", 0755);
    sandbox_.link("nowhere", "dangling");
    inspect({"a", "b", "dangling"});
    EXPECT_EQ(finish(), "");
    EXPECT_EQ(bits_of("b"), 0644U) << "what the toggles show is for all";

    const std::tuple<std::string, const char*, std::string> names[] = {
        {"b\xFF\n", nullptr, "b\xFF\n"},  // left as it is
        {"c", "", "c"},
        {"d", " *\n", " *"},
        {"\xE2\x80\xAE", "-g%s", "-g%s"}};
    for (const auto& [before, typed, after] : names) {
        make(before, 0644, before);
        inspect({before});
        if (typed != nullptr) enter("pr_name", typed);
        EXPECT_EQ(alerts_of([] { press_in("pr_name", Qt::Key_Return); }), "");
        EXPECT_EQ(gDir->current, index_of(after)) << after;
        EXPECT_EQ(sandbox_.read(after), before);
    }
}

TEST_F(PropertiesTest, EveryFailureIsToldAndLeavesTheRest) {
    strcpy(gConfig->alt_encoding, "ISO-8859-1");
    fname_set_translation(kEncodingAlternate, gConfig->alt_encoding);
    make("taken", 0600, "taken");
    sandbox_.link("nowhere", "dangling");
    const std::string huge(5000, 'x');
    const std::tuple<const char*, std::string, bool, std::string> rows[] = {
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
    for (const auto& [field, text, vanishes, said] : rows) {
        make("a", 0644, "a");
        inspect({"a"});
        enter(field, text);
        qt_instance<QCheckBox>("pr_oexec")->click();
        if (vanishes) unlink(sandbox_.file("a").c_str());
        EXPECT_EQ(finish(), "Error: " + said);
        EXPECT_FALSE(is_open("property_dlg"));
        EXPECT_EQ(bits_of("a"), vanishes ? 0U : 0644U) << said;
        EXPECT_EQ(sandbox_.read("taken"), "taken");
    }
    inspect({"taken"});
    qt_instance<QCheckBox>("pr_uexec")->click();
    std::filesystem::remove_all(sandbox_.path());
    EXPECT_EQ(finish(), "Error: Unable to change permissions of 'taken'");
    mkdir(sandbox_.path(), 0755);
}

TEST_F(PropertiesTest, AnErrorOnOneEntryDoesNotStopTheOthersUnlessTheUserSaysSo) {
    for (const char* button : {"&Continue", "a&Bort"}) {
        for (const char* name : {"a", "b", "c", "d"})
            make(name, 0644);
        inspect({"a", "b", "c", "d"});
        qt_instance<QCheckBox>("pr_uexec")->click();
        unlink(sandbox_.file("a").c_str());
        unlink(sandbox_.file("c").c_str());
        EXPECT_EQ(finish(button),
                  "Error: Unable to change permissions of 'a'\n"
                  "Error: Unable to change permissions of 'c'");
        EXPECT_EQ(bits_of("b"), 0744U);
        EXPECT_EQ(bits_of("d"), *button == '&' ? 0744U : 0644U);
    }
}

}  // namespace
}  // namespace dorn
