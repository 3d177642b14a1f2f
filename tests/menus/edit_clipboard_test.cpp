// Cut, Copy, Paste and Delete by their keys, on a clipboard of the test's own process.
#include "filelist/pane.h"
#include "fileops/engine/cut_list.h"
#include "fileops/slots.h"
#include "fileops/transfer_mime.h"
#include "menus/commands.h"
#include "menus/menus.h"
#include "support/fake_programs.h"
#include "support_gui/window_test.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace dorn {
namespace {

class EditClipboard : public WindowTest {
  protected:
    void SetUp() override {
        for (const char* name : {"to", "dir"})
            sandbox_.mkdir(name);
        for (const char* name : {"a", "b", "to/kept"})
            sandbox_.write(name, name);
        WindowTest::SetUp();
        fakes_.add("zap");
        QGuiApplication::clipboard()->clear();
    }
    void TearDown() override {
        await_operations();
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

    const std::string uri_ = "file://" + std::string(sandbox_.path());
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
    EXPECT_EQ(marked() + selected(), "");
    put(kTypeGnomeFiles, "cut\n" + uri_ + "/b\n" + uri_ + "/to/kept");
    EXPECT_EQ(marked(), "b ");
    put(kTypeText, uri_);
    EXPECT_EQ(marked() + enabled(), "");
}

TEST_F(EditClipboard, APasteCopiesOrMovesFromEachDirectoryAndTellsWhatItLeavesOut) {
    sandbox_.mkdir("other");
    sandbox_.write("other/x", "x");
    put(kTypeMateFiles,
        "cut\n" + uri_ + "/a\n" + uri_ + "/other/x\n" + uri_ + "/to/kept\nsftp://h/y");
    ASSERT_EQ(fl_newpath(nullptr, sandbox_.file("to").c_str()), 0);
    EXPECT_EQ(alerts_of([] { press(Qt::Key_V, Qt::ControlModifier); }),
              "Paste: 1 entry of the clipboard is no local file and can't be pasted:\n"
              "sftp://h/y\n");
    await_operations();
    EXPECT_EQ(sandbox_.read("to/x") + sandbox_.read("to/a"), "xa");
    EXPECT_EQ(mode_of("other/x") + mode_of("a"), 0U);
    EXPECT_TRUE(file_is_cut(sandbox_.file("to").c_str(), "kept"));  // it is where it was to go
    EXPECT_FALSE(file_is_cut(sandbox_.path(), "a"));

    std::string many = "cut";
    for (int i = 0; i < kMaxSlots + 2; ++i) {
        const std::string name = "many" + std::to_string(i);
        sandbox_.mkdir(name);
        sandbox_.write(name + "/" + name);
        many += "\n" + uri_ + "/" + name + "/" + name;
    }
    put(kTypeGnomeFiles, many);
    EXPECT_EQ(alerts_of([] { menus_run("em_paste"); }),
              "File Operation: The files of 2 more directories were left alone: as many operations "
              "as can run at once are running.");
    await_operations();
    EXPECT_NE(mode_of("to/many49"), 0U);
    EXPECT_TRUE(file_is_cut(sandbox_.file("many50").c_str(), "many50"));
}

TEST_F(EditClipboard, DeleteAsksAsTheSettingsSayAndCancelKeepsAll) {
    const std::string one = "Delete: Do you wish to delete 'a'?\n";
    const std::string folder = "Delete: Do you wish to delete 'dir'?\n";
    const std::string two = "Delete: Do you wish to delete these 2 files?\n";
    const std::tuple<std::vector<std::string>, uint32_t, std::string> rows[] = {
        {{"a"}, 0x004, one},        {{"dir"}, 0x100, folder}, {{"dir"}, 0x004, folder},
        {{"a", "b"}, 0x100, two},   {{"a"}, 0x110, ""},  // no question: the files go
        {{"dir", "b"}, 0x1014, ""},
    };
    for (const auto& [names, flags, question] : rows) {
        select(names);
        gConfig->flags = flags;
        EXPECT_EQ(alerts_of([] { menus_run("em_delete"); }), question) << flags;
        await_operations();
        for (const std::string& name : names)
            EXPECT_EQ(mode_of(name) != 0, !question.empty()) << name << flags;
    }
}

}  // namespace
}  // namespace dorn
