// Cut, Copy, Paste and Delete by their keys, on a clipboard of the test's own process.
#include "config/config.h"
#include "dirmodel/dir_entry.h"
#include "filelist/navigation.h"
#include "filelist/pane.h"
#include "fileops/engine/cut_list.h"
#include "fileops/slots.h"
#include "fileops/transfer_mime.h"
#include "menus/commands.h"
#include "menus/menus.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QTest>

#include <gtest/gtest.h>

namespace dorn {
namespace {

class EditClipboard : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"to", "dir"})
            sandbox_.mkdir(name);
        for (const char* name : {"a", "b", "to/kept"})
            sandbox_.write(name);
        WindowTest::SetUp();
        fakes_.add("zap");
        QGuiApplication::clipboard()->clear();
    }
    void TearDown() override {
        EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000));
        FakePrograms::wait();
        WindowTest::TearDown();
    }

    // The names whose rows show them as cut.
    static std::string marked() {
        std::string names;
        for (const ListRow& row : gPane.rows) {
            if (row.image == kImageFileCut || row.image == kImageDirCut)
                names += gDir->entries[row.index]->name + std::string(" ");
        }
        return names;
    }

    // Which of the toolbar's buttons are enabled.
    static std::string enabled() {
        std::string names;
        for (const char* name : {"tb_cut", "tb_copy", "tb_paste", "tb_delete"}) {
            if (qt(w_instance(name))->isEnabled()) names += std::string(name + 3) + " ";
        }
        return names;
    }

    static void put(const char* type, const std::string& bytes) {
        auto* data = new QMimeData;
        data->setData(QLatin1String(type), QByteArray::fromStdString(bytes));
        QGuiApplication::clipboard()->setMimeData(data);
    }

    FakePrograms fakes_;
};

TEST_F(EditClipboard, MarksAndButtonsFollowTheClipboardAndTheSelection) {
    EXPECT_EQ(enabled(), "");
    select({"a", "dir"});
    EXPECT_EQ(enabled(), "cut copy delete ");
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(marked(), "a dir ");
    EXPECT_EQ(enabled(), "paste ");
    select({"b"});
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(marked(), "");
    EXPECT_EQ(selected(), "");
    const std::string uri = "file://" + std::string(sandbox_.path());
    put(kTypeGnomeFiles, "cut\n" + uri + "/b\n" + uri + "/to/kept");
    EXPECT_EQ(marked(), "b ");
    put(kTypeText, uri);
    EXPECT_EQ(marked(), "");
    EXPECT_EQ(enabled(), "");
    EXPECT_EQ(em_check_clipboard_for_type(-1, nullptr), 0);
}

TEST_F(EditClipboard, APasteCopiesOrMovesFromEachDirectoryAndTellsWhatItLeavesOut) {
    sandbox_.mkdir("other");
    sandbox_.write("other/x", "x");
    const std::string uri = "file://" + std::string(sandbox_.path());
    put(kTypeMateFiles, "cut\n" + uri + "/a\n" + uri + "/other/x\n" + uri + "/to/kept\nsftp://h/y");
    ASSERT_EQ(fl_newpath(nullptr, sandbox_.file("to").c_str()), 0);
    const std::string said = alerts_of([] { press(Qt::Key_V, Qt::ControlModifier); });
    EXPECT_EQ(said,
              "Paste: 1 entry of the clipboard is no local file and can't be pasted:\n"
              "sftp://h/y\n");
    EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000));
    EXPECT_EQ(sandbox_.read("to/x"), "x");
    EXPECT_EQ(access(sandbox_.file("other/x").c_str(), F_OK), -1);
    EXPECT_EQ(access(sandbox_.file("a").c_str(), F_OK), -1);
    EXPECT_TRUE(file_is_cut(sandbox_.file("to").c_str(), "kept"));  // it is where it was to go
    EXPECT_FALSE(file_is_cut(sandbox_.path(), "a"));

    std::string many = "cut";
    for (int i = 0; i < kMaxSlots + 2; ++i) {
        const std::string name = "many" + std::to_string(i);
        sandbox_.mkdir(name);
        sandbox_.write(name + "/" + name);
        many += "\n" + uri + "/" + name + "/" + name;
    }
    put(kTypeGnomeFiles, many);
    EXPECT_EQ(alerts_of([] { menus_run("em_paste"); }),
              "File Operation: The files of 2 more directories were left alone: as many operations "
              "as can run at once are running.");
    EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000));
    EXPECT_EQ(access(sandbox_.file("to/many49").c_str(), F_OK), 0);
    EXPECT_TRUE(file_is_cut(sandbox_.file("many50").c_str(), "many50"));
}

TEST_F(EditClipboard, DeleteAsksAsTheSettingsSayAndCancelKeepsAll) {
    const std::string one = "Delete: Do you wish to delete 'a'?\n";
    const std::string folder = "Delete: Do you wish to delete 'dir'?\n";
    const std::string two = "Delete: Do you wish to delete these 2 files?\n";
    const struct {
        std::vector<std::string> names;
        uint32_t flags;
        std::string question;  // empty: none, and the files go
    } rows[] = {
        {{"a"}, 0x104, one},      {{"dir"}, 0x104, folder}, {{"a", "b"}, 0x104, two},
        {{"a"}, 0x004, one},      {{"dir"}, 0x100, folder}, {{"a", "b"}, 0x100, two},
        {{"dir"}, 0x004, folder}, {{"a"}, 0x110, ""},       {{"dir", "b"}, 0x1014, ""},
    };
    for (const auto& row : rows) {
        select(row.names);
        gConfig->flags = row.flags;
        const std::string said = alerts_of([] { menus_run("em_delete"); });
        EXPECT_EQ(said, row.question) << row.flags;
        EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000));
        for (const std::string& name : row.names) {
            const bool is_there = access(sandbox_.file(name).c_str(), F_OK) == 0;
            EXPECT_EQ(is_there, !row.question.empty()) << name << row.flags;
        }
    }
}

}  // namespace
}  // namespace dorn
