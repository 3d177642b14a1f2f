#include "dialogs/new_item.h"

#include "dirmodel/name_translation.h"
#include "support_gui/window_test.h"
#include "ui/dialogs.h"

#include <unistd.h>

namespace dorn {
namespace {

class NewItemTest : public WindowTest {};

TEST_F(NewItemTest, TheNewEntryIsTheCurrentAndTheSelectedOne) {
    const mode_t before = umask(002);
    sandbox_.write("a");
    const std::string longest(254, 'n');
    const std::tuple<int (*)(), std::string, std::string, mode_t> rows[] = {
        {fm_new_file, "b", "b", S_IFREG | 0664},
        {new_dir_setup, "*", "*", S_IFDIR | 0755},
        {fm_new_folder, "\n-\xE2\x80\xAE x\ny\n", "-\xE2\x80\xAE x y", S_IFDIR | 0755},
        {new_file_setup, " ", " ", S_IFREG | 0664},
        {fm_new_file, longest, longest, S_IFREG | 0664},
    };
    for (const auto& [open, typed, name, mode] : rows) {
        open();
        EXPECT_TRUE(gets_focus("new_name"));
        EXPECT_TRUE(ui_is_blocked(handle(window_)));
        enter("new_name", typed);
        EXPECT_EQ(alerts_of([] { press_in("new_name", Qt::Key_Return); }), "");
        EXPECT_FALSE(is_open("new_dlg"));
        EXPECT_EQ(mode_of(name), mode) << name;
        EXPECT_EQ(selected(), name);
        EXPECT_EQ(gDir->current, index_of(name));
    }
    umask(before);
}

TEST_F(NewItemTest, WhatCantBeMadeIsSaidAndTheDialogStays) {
    strcpy(gConfig->alt_encoding, "ISO-8859-1");
    fname_set_translation(kEncodingAlternate, gConfig->alt_encoding);
    sandbox_.write("a", "content");
    sandbox_.link("nowhere", "dangling");
    const std::tuple<int (*)(), std::string, std::string> rows[] = {
        {fm_new_file, "", ""},
        {fm_new_file, "a", "Error: File or directory 'a' already exists"},
        {fm_new_folder, "a", "Error: File or directory 'a' already exists"},
        {fm_new_file, "dangling", "Error: File or directory 'dangling' already exists"},
        {fm_new_file, std::string(255, 'n'), "Error: Name too long!"},
        {fm_new_folder, "a%s/b", "Error: Unable to create directory 'a%s/b'"},
        {fm_new_file, "\u20AC", "Error: Unable to translate '\u20AC' into 'ISO-8859-1' encoding."},
    };
    for (const auto& [open, typed, said] : rows) {
        open();
        enter("new_name", typed);
        EXPECT_EQ(alerts_of([] { push("new_create"); }), said);
        EXPECT_TRUE(is_open("new_dlg")) << typed;
        push("new_cancel");
    }
    fm_new_file();
    enter("new_name", "no/b");
    EXPECT_EQ(alerts_of([] { push("new_create"); }), "Error: Unable to create file 'no/b'\n");
    EXPECT_FALSE(is_open("new_dlg"));
    EXPECT_EQ(gDir->count, 2);
    EXPECT_EQ(sandbox_.read("a"), "content");
    fm_new_file();
    enter("new_name", "\u00E9");
    push("new_create");
    EXPECT_EQ(selected(), "\xE9");
}

TEST_F(NewItemTest, ARefreshAskedForMeanwhileIsDoneWhenTheDialogCloses) {
    fm_new_file();
    sandbox_.write("late");
    fl_refresh();
    EXPECT_EQ(index_of("late"), -2);
    press_in("new_name", Qt::Key_Escape);
    EXPECT_FALSE(is_open("new_dlg"));
    EXPECT_TRUE(QTest::qWaitFor([] { return index_of("late") >= 0; }));
}

}  // namespace
}  // namespace dorn
