#include "dialogs/symlink.h"

#include "dirmodel/name_translation.h"
#include "support_gui/window_test.h"

#include <filesystem>

namespace dorn {
namespace {

class SymlinkTest : public WindowTest {
  protected:
    std::string target_of(const std::string& name) const {
        return std::filesystem::read_symlink(sandbox_.file(name)).string();
    }
};

TEST_F(SymlinkTest, TheLinkHoldsTheWholePathOfTheEntrysRealName) {
    fm_symlink();
    enter("symlink_dst_txt", "x");
    EXPECT_EQ(alerts_of([] { push("symlink_ok_btn"); }), "");
    EXPECT_EQ(mode_of("x"), 0U) << "there is no entry yet to make a link to";
    push("symlink_cancel_btn");
    int number = 0;
    for (const char* name : {"-<i>%s", "plain", "b\xFF\n"}) {
        sandbox_.write(name);
        show_sandbox();
        if (number > 0) select({name});  // without a selection it is the first entry
        fm_symlink();
        EXPECT_TRUE(gets_focus("symlink_dst_txt"));
        const std::string link = "to " + std::to_string(++number);
        enter("symlink_dst_txt", link + "\n");
        EXPECT_EQ(alerts_of([] { press_in("symlink_dst_txt", Qt::Key_Return); }), "");
        EXPECT_FALSE(is_open("symlink_dlg"));
        EXPECT_EQ(target_of(link), sandbox_.file(name));
        EXPECT_GE(index_of(link), 0);
    }
}

TEST_F(SymlinkTest, EveryRefusalIsToldAndTheDialogStays) {
    std::strcpy(gConfig->alt_encoding, "ISO-8859-1");
    fname_set_translation(kEncodingAlternate, gConfig->alt_encoding);
    sandbox_.write("a");
    sandbox_.write("file", "content");
    sandbox_.mkdir("dir");
    sandbox_.link("old", "link");
    const std::string none = "Input Error: Symlink destination name must be entered!";
    const std::string asked =
        "Symlink Exists: The destination symlink exists.\nDo you want to overwrite it ?";
    const std::string too_long(300, 'x'), failed = ": unable to create symlink\nError: ";
    const std::tuple<std::string, const char*, std::string> rows[] = {
        {"\n", "Close", none},
        {"\u20AC", "Close", none},
        {"file", "Close", "Symlink Error: 'file' exists and is not a symlink.\n"},
        {"dir", "Close", "Symlink Error: 'dir' exists and is not a symlink.\n"},
        {"link", "&Cancel", asked},
        {"link", "", asked},
        {"no/x", "Close", "Symlink Error: no/x" + failed + "No such file or directory\n"},
        {too_long, "Close", "Symlink Error: " + too_long + failed + "File name too long\n"},
    };
    show_sandbox();
    select({"a"});
    fm_symlink();
    for (const auto& [typed, answer, said] : rows) {
        enter("symlink_dst_txt", typed);
        EXPECT_EQ(alerts_of([] { push("symlink_ok_btn"); }, answer), said);
        EXPECT_TRUE(is_open("symlink_dlg"));
    }
    EXPECT_EQ(target_of("link"), "old");
    EXPECT_EQ(sandbox_.read("file"), "content");
    enter("symlink_dst_txt", "link");
    EXPECT_EQ(alerts_of([] { push("symlink_ok_btn"); }, "&Ok"), asked);
    EXPECT_EQ(target_of("link"), sandbox_.file("a"));
    EXPECT_EQ(gDir->count, 4) << "nothing is left beside the link";
}

}  // namespace
}  // namespace dorn
