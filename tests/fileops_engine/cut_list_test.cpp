// The cut list against a clipboard that other programs change meanwhile.
#include "fileops/engine/cut_list.h"

#include "fileops/engine/file_clipboard.h"
#include "support/headless_clipboard.h"

#include <gtest/gtest.h>
#include <thread>

using namespace dorn;
using namespace headless;

namespace {

using Items = std::map<std::string, std::string>;

int sChanges = 0;

class CutList : public ::testing::Test {
  protected:
    CutList() {
        file_clipboard_setup([] { ++sChanges; });
        clipboard_clear();
    }
    static void cut(const std::vector<std::string>& names) {
        file_clipboard_put({"/d", names}, true);
    }
};

TEST_F(CutList, ShrinksOnTheClipboardNameByNameUntilThereIsNone) {
    cut({"a", "b", "c"});
    EXPECT_TRUE(file_is_cut("/d", "b"));
    EXPECT_FALSE(file_is_cut("/e", "b"));
    EXPECT_EQ(file_uncut("/d", "b"), 1);
    EXPECT_EQ(file_uncut("/d", "b"), 0);
    EXPECT_FALSE(file_is_cut("/d", "b"));
    EXPECT_EQ(clipboard_bytes(kTypeGnomeFiles), "cut\nfile:///d/a\nfile:///d/c");
    EXPECT_EQ(file_uncut("/d", "a") + file_uncut("/d", "c"), 2);
    EXPECT_FALSE(file_clipboard_has(nullptr));
    EXPECT_EQ(clipboard_bytes(kTypeGnomeFiles), "");
}

TEST_F(CutList, OfAnotherProgramIsTakenOverAndShrinksThen) {
    clipboard_foreign({{kTypeGnomeFiles, "cut\nfile:///d/a\nfile:///e/b\nfile:///d/c"}});
    const int changes = sChanges;
    EXPECT_TRUE(file_clipboard_has(kTagCut));
    EXPECT_EQ(file_uncut("/d", "a") + file_uncut("/d", "c"), 2);
    file_get_cut_files();  // the operation is over: all is told by then
    EXPECT_EQ(clipboard_bytes(kTypeGnomeFiles), "cut\nfile:///e/b");
    EXPECT_EQ(sChanges, changes);
}

TEST_F(CutList, ANewerClipboardStaysAsItIs) {
    for (const Items& items : {Items{{kTypeGnomeFiles, "copy\nfile:///d/a"}},
                               {{kTypeGnomeFiles, "cut\nfile:///other/a"}},
                               {{"text/plain", "/d/a"}},
                               {}}) {
        cut({"a", "b", "c"});
        EXPECT_EQ(file_uncut("/d", "c"), 1);
        clipboard_foreign(items, true);
        const int before = clipboard_puts();
        EXPECT_EQ(file_uncut("/d", "a"), 1);  // off the list that was there
        file_get_cut_files();
        clipboard_read();
        EXPECT_EQ(file_uncut("/d", "b"), 0);
        file_get_cut_files();
        EXPECT_EQ(clipboard_puts(), before);
    }
}

TEST_F(CutList, WhatWasDoneWhileAManagerTookTheListOverIsTakenOffThatToo) {
    cut({"a", "b"});
    clipboard_foreign({{kTypeGnomeFiles, clipboard_bytes(kTypeGnomeFiles)}}, true);
    EXPECT_EQ(file_uncut("/d", "a"), 1);
    clipboard_read();
    EXPECT_FALSE(file_is_cut("/d", "a"));
    EXPECT_TRUE(file_is_cut("/d", "b"));
    file_get_cut_files();
    EXPECT_EQ(clipboard_bytes(kTypeGnomeFiles), "cut\nfile:///d/b");
}

TEST_F(CutList, OfAHundredThousandNamesIsAnnouncedAFewTimesOnly) {
    std::vector<std::string> names;
    for (int i = 0; i < 100000; ++i)
        names.push_back("name " + std::to_string(i));
    const int before = clipboard_puts();
    cut(names);
    const auto uncut_half = [&names](std::size_t first) {
        for (std::size_t i = first; i < names.size(); i += 2)
            EXPECT_EQ(file_uncut("/d", names[i].c_str()), 1);
    };
    std::thread worker(uncut_half, 1);
    uncut_half(0);
    worker.join();
    EXPECT_FALSE(file_any_cut());
    EXPECT_LT(clipboard_puts() - before, 20);
}

TEST_F(CutList, ACopiedListIsNotCutAndATagTellsThemApart) {
    file_clipboard_put({"/d", {"a"}}, false);
    EXPECT_FALSE(file_is_cut("/d", "a"));
    EXPECT_EQ(file_uncut("/d", "a"), 0);
    EXPECT_TRUE(file_clipboard_has(kTagCopied));
    EXPECT_FALSE(file_clipboard_has(kTagCut));
    clipboard_foreign({{kTypeUriList, "file:///d/a\r\n"}, {kTypeKdeCut, "1"}});
    EXPECT_TRUE(file_clipboard_has(kTagCut));
    EXPECT_TRUE(file_is_cut("/d", "a"));
}

}  // namespace
