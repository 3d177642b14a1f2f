#include "dialogs/new_item.h"

#include "config/config.h"
#include "dialog_fixture.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {
namespace {

class NewItemTest : public DialogTest {
  protected:
    mode_t mode_of(const std::string& name) const {
        struct stat status {};
        return stat(sandbox_.file(name).c_str(), &status) == 0 ? status.st_mode : 0;
    }
    void TearDown() override {
        fname_set_translation(0, nullptr);
        DialogTest::TearDown();
    }
};

TEST_F(NewItemTest, TheNewEntryIsTheCurrentAndTheSelectedOne) {
    const mode_t before = umask(002);
    sandbox_.write("a");
    struct Row {
        int (*open)();
        const char* typed;
        const char* name;
        mode_t mode;
    };
    const std::string longest(254, 'n');
    const Row rows[] = {
        {fm_new_file, "b", "b", S_IFREG | 0664},
        {new_dir_setup, "*", "*", S_IFDIR | 0755},
        {fm_new_folder, "\n-\xE2\x80\xAE x\ny\n", "-\xE2\x80\xAE x y", S_IFDIR | 0755},
        {new_file_setup, " ", " ", S_IFREG | 0664},
        {fm_new_file, longest.c_str(), longest.c_str(), S_IFREG | 0664},
    };
    for (const Row& row : rows) {
        row.open();
        EXPECT_TRUE(gets_focus("new_name"));
        EXPECT_TRUE(ui_is_blocked(handle(window_)));
        enter("new_name", QString::fromUtf8(row.typed));
        EXPECT_EQ(
            alerts_of([] { QTest::keyClick(qt_instance<QLineEdit>("new_name"), Qt::Key_Return); }),
            "");
        EXPECT_FALSE(is_open("new_dlg"));
        EXPECT_EQ(mode_of(row.name), row.mode) << row.name;
        EXPECT_EQ(selected(), row.name);
        EXPECT_EQ(gDir->current, index_of(row.name));
    }
    umask(before);
}

TEST_F(NewItemTest, WhatCantBeMadeIsSaidAndTheDialogStays) {
    sandbox_.write("a", "content");
    sandbox_.link("nowhere", "dangling");
    struct Row {
        int (*open)();
        std::string typed;
        std::string said;
        bool stays = true;
    };
    const Row rows[] = {
        {fm_new_file, "", ""},
        {fm_new_file, "a", "Error: File or directory 'a' already exists"},
        {fm_new_folder, "a", "Error: File or directory 'a' already exists"},
        {fm_new_file, "dangling", "Error: File or directory 'dangling' already exists"},
        {fm_new_file, "..", "Error: File or directory '..' already exists"},
        {fm_new_file, std::string(255, 'n'), "Error: Name too long!"},
        {fm_new_folder, std::string(5000, 'n'), "Error: Name too long!"},
        {fm_new_folder, "no/b", "Error: Unable to create directory 'no/b'"},
        {fm_new_folder, "a%s/b", "Error: Unable to create directory 'a%s/b'"},
        {fm_new_file, "no/b", "Error: Unable to create file 'no/b'\n", false},
    };
    for (const Row& row : rows) {
        row.open();
        enter("new_name", QString::fromStdString(row.typed));
        EXPECT_EQ(alerts_after("new_create"), row.said);
        EXPECT_EQ(is_open("new_dlg"), row.stays) << row.typed;
        if (is_open("new_dlg")) push("new_cancel");
    }
    fl_refresh();
    EXPECT_EQ(gDir->count, 2);
    EXPECT_EQ(std::filesystem::file_size(sandbox_.file("a")), 7U);
}

TEST_F(NewItemTest, ANameThatTheEncodingCantHoldIsRefused) {
    strcpy(gConfig->alt_encoding, "ISO-8859-1");
    fname_set_translation(kEncodingAlternate, gConfig->alt_encoding);
    fm_new_file();
    enter("new_name", QStringLiteral("\u20AC"));
    EXPECT_EQ(alerts_after("new_create"),
              "Error: Unable to translate '\u20AC' into 'ISO-8859-1' encoding.");
    enter("new_name", QStringLiteral("\u00E9"));
    push("new_create");
    EXPECT_EQ(selected(), "\xE9");
}

TEST_F(NewItemTest, ADirectoryThatVanishedUnderTheDialogIsToldOf) {
    fm_new_folder();
    std::filesystem::remove(sandbox_.path());
    enter("new_name", QStringLiteral("b"));
    EXPECT_EQ(alerts_after("new_create"), "Error: Unable to create directory 'b'");
    push("new_cancel");
    mkdir(sandbox_.path(), 0755);
}

TEST_F(NewItemTest, ARefreshAskedForMeanwhileIsDoneWhenTheDialogCloses) {
    fm_new_file();
    sandbox_.write("late");
    fl_refresh();
    EXPECT_EQ(index_of("late"), -2);
    QTest::keyClick(qt_instance<QLineEdit>("new_name"), Qt::Key_Escape);
    EXPECT_FALSE(is_open("new_dlg"));
    EXPECT_TRUE(QTest::qWaitFor([] { return index_of("late") >= 0; }));
}

}  // namespace
}  // namespace dorn
