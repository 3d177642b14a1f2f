#include "dialogs/symlink.h"

#include "config/config.h"
#include "dialog_fixture.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/selection.h"

#include <array>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

class SymlinkTest : public DialogTest {
  protected:
    void open_for(const char* name) {
        show_sandbox();
        fl_unselect_all();
        fl_select_index(index_of(name));
        fm_symlink();
    }
    std::string target_of(const std::string& name) const {
        std::array<char, 2000> target{};
        const ssize_t length = readlink(sandbox_.file(name).c_str(), target.data(), target.size());
        return length < 0 ? "" : std::string(target.data(), static_cast<std::size_t>(length));
    }
};

TEST_F(SymlinkTest, TheLinkHoldsTheWholePathOfTheEntrysRealName) {
    for (const char* name : {"plain", "b\xFF\n", "-<i>%s"}) {
        sandbox_.write(name);
        open_for(name);
        EXPECT_TRUE(gets_focus("symlink_dst_txt"));
        EXPECT_FALSE(qt(w_instance("symlink_proclink_tgl"))->isVisible());
        enter("symlink_dst_txt", QStringLiteral("to %1\n").arg(qstrlen(name)));
        EXPECT_EQ(alerts_of([] {
                      QTest::keyClick(qt_instance<QLineEdit>("symlink_dst_txt"), Qt::Key_Return);
                  }),
                  "");
        EXPECT_FALSE(is_open("symlink_dlg"));
        const std::string link = "to " + std::to_string(qstrlen(name));
        EXPECT_EQ(target_of(link), sandbox_.file(name));
        EXPECT_GE(index_of(link), 0);
    }
    fl_unselect_all();
    fm_symlink();
    EXPECT_EQ(text_of("symlink_src_lbl"), "-<i>%s") << "without a selection the first entry";
}

TEST_F(SymlinkTest, EveryRefusalIsToldAndTheDialogStays) {
    std::strcpy(gConfig->alt_encoding, "ISO-8859-1");
    fname_set_translation(kEncodingAlternate, gConfig->alt_encoding);
    sandbox_.write("a");
    sandbox_.write("file", "content");
    sandbox_.mkdir("dir");
    sandbox_.link("old", "link");
    struct Row {
        std::string typed;
        const char* answer;
        std::string said;
    };
    const std::string none = "Input Error: Symlink destination name must be entered!";
    const std::string asked =
        "Symlink Exists: The destination symlink exists.\nDo you want to overwrite it ?";
    const std::string too_long(300, 'x');
    const Row rows[] = {
        {"", "Close", none},
        {"\n", "Close", none},
        {"\u20AC", "Close", none},
        {"file", "Close", "Symlink Error: 'file' exists and is not a symlink.\n"},
        {"dir", "Close", "Symlink Error: 'dir' exists and is not a symlink.\n"},
        {"link", "&Cancel", asked},
        {"link", "", asked},
        {"no/x", "Close",
         "Symlink Error: no/x: unable to create symlink\nError: No such file or directory\n"},
        {too_long, "Close",
         "Symlink Error: " + too_long + ": unable to create symlink\nError: File name too long\n"},
    };
    open_for("a");
    for (const Row& row : rows) {
        enter("symlink_dst_txt", QString::fromStdString(row.typed));
        EXPECT_EQ(alerts_after("symlink_ok_btn", row.answer), row.said);
        EXPECT_TRUE(is_open("symlink_dlg"));
    }
    EXPECT_EQ(target_of("link"), "old");
    EXPECT_EQ(std::filesystem::file_size(sandbox_.file("file")), 7U);
    enter("symlink_dst_txt", QStringLiteral("link"));
    EXPECT_EQ(alerts_after("symlink_ok_btn", "&Ok"), asked);
    EXPECT_EQ(target_of("link"), sandbox_.file("a"));
    EXPECT_EQ(gDir->count, 4) << "nothing is left beside the link";
    fname_set_translation(0, nullptr);
}

TEST_F(SymlinkTest, WithoutAnEntryOkDoesNothing) {
    fm_symlink();
    enter("symlink_dst_txt", QStringLiteral("x"));
    EXPECT_EQ(alerts_after("symlink_ok_btn"), "");
    EXPECT_TRUE(is_open("symlink_dlg"));
    EXPECT_EQ(target_of("x"), "");
}

}  // namespace
}  // namespace dorn
