// The cut list against a clipboard that other programs change meanwhile.
#include "fileops/engine/cut_list.h"

#include "fileops/engine/file_clipboard.h"
#include "support/headless_clipboard.h"

#include <gtest/gtest.h>
#include <thread>

using namespace dorn;

namespace {

int sChanges = 0;

class CutList : public ::testing::Test {
  protected:
    void SetUp() override {
        file_clipboard_setup([] { ++sChanges; });
        clipboard_clear();
        puts_before_ = headless::clipboard_puts();
    }

    static std::map<std::string, std::string> gnome(const std::string& text) {
        return {{kTypeGnomeFiles, text}};
    }
    static std::string gnome_bytes() {
        return headless::clipboard_bytes(kTypeGnomeFiles);
    }
    int puts() const {
        return headless::clipboard_puts() - puts_before_;
    }

    int puts_before_ = 0;
};

TEST_F(CutList, ShrinksOnTheClipboardNameByNameUntilThereIsNone) {
    file_clipboard_put({"/d", {"a", "b", "c"}}, true);
    EXPECT_TRUE(file_is_cut("/d", "b"));
    EXPECT_FALSE(file_is_cut("/e", "b"));
    EXPECT_EQ(file_uncut("/d", "b"), 1);
    EXPECT_EQ(file_uncut("/d", "b"), 0);
    EXPECT_FALSE(file_is_cut("/d", "b"));
    EXPECT_EQ(gnome_bytes(), "cut\nfile:///d/a\nfile:///d/c");
    EXPECT_EQ(file_uncut("/d", "a") + file_uncut("/d", "c"), 2);
    EXPECT_FALSE(file_clipboard_has(nullptr));
    EXPECT_EQ(gnome_bytes(), "");
}

TEST_F(CutList, OfAnotherProgramIsTakenOverAndShrinksThen) {
    headless::clipboard_foreign(gnome("cut\nfile:///d/a\nfile:///e/b\nfile:///d/c\nfile:///d/a"));
    const int changes = sChanges;
    EXPECT_TRUE(file_clipboard_has(kTagCut));
    EXPECT_EQ(file_uncut("/d", "a") + file_uncut("/d", "c"), 2);
    file_get_cut_files();  // the operation is over: all is told by then
    EXPECT_EQ(gnome_bytes(), "cut\nfile:///e/b");
    const int told = puts();
    file_get_cut_files();
    EXPECT_EQ(puts(), told);
    EXPECT_EQ(sChanges, changes);
}

TEST_F(CutList, ANewerClipboardStaysAsItIs) {
    const std::map<std::string, std::string> newer[] = {
        gnome("copy\nfile:///d/a"), gnome("cut\nfile:///other/a"), {{"text/plain", "/d/a"}}, {}};
    for (const auto& items : newer) {
        file_clipboard_put({"/d", {"a", "b", "c"}}, true);
        EXPECT_EQ(file_uncut("/d", "c"), 1);
        headless::clipboard_foreign(items, true);
        const int before = puts();
        EXPECT_EQ(file_uncut("/d", "a"), 1);  // off the list that was there
        file_get_cut_files();
        headless::clipboard_read();
        EXPECT_EQ(file_uncut("/d", "b"), 0);
        file_get_cut_files();
        EXPECT_EQ(puts(), before);
        for (const auto& [type, bytes] : items)
            EXPECT_EQ(headless::clipboard_bytes(type), bytes);
    }
}

TEST_F(CutList, WhatWasDoneWhileAManagerTookTheListOverIsTakenOffThatToo) {
    file_clipboard_put({"/d", {"a", "b"}}, true);
    headless::clipboard_foreign(gnome(gnome_bytes()), true);
    EXPECT_EQ(file_uncut("/d", "a"), 1);
    headless::clipboard_read();
    EXPECT_FALSE(file_is_cut("/d", "a"));
    EXPECT_TRUE(file_is_cut("/d", "b"));
    file_get_cut_files();
    EXPECT_EQ(gnome_bytes(), "cut\nfile:///d/b");
}

TEST_F(CutList, OfAHundredThousandNamesIsAnnouncedAFewTimesOnly) {
    FileTransfer list{"/d", {}};
    for (int i = 0; i < 100000; ++i)
        list.names.push_back("name " + std::to_string(i));
    file_clipboard_put(list, true);
    const auto uncut_half = [&list](std::size_t first) {
        for (std::size_t i = first; i < list.names.size(); i += 2)
            EXPECT_EQ(file_uncut("/d", list.names[i].c_str()), 1);
    };
    std::thread worker(uncut_half, 1);
    uncut_half(0);
    worker.join();
    EXPECT_FALSE(file_any_cut());
    EXPECT_LT(puts(), 20);
}

TEST_F(CutList, ACopiedListIsNotCutAndATagTellsThemApart) {
    file_clipboard_put({"/d", {"a"}}, false);
    EXPECT_FALSE(file_is_cut("/d", "a"));
    EXPECT_EQ(file_uncut("/d", "a"), 0);
    EXPECT_TRUE(file_clipboard_has(kTagCopied));
    EXPECT_FALSE(file_clipboard_has(kTagCut));
    headless::clipboard_foreign({{kTypeUriList, "file:///d/a\r\n"}, {kTypeKdeCut, "1"}});
    EXPECT_TRUE(file_clipboard_has(kTagCut));
    EXPECT_TRUE(file_is_cut("/d", "a"));
}

}  // namespace
