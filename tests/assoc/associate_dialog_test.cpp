#include "app/base.h"
#include "assoc/assoc_dialogs.h"
#include "assoc/engine/association.h"
#include "config/config.h"
#include "support_gui/window_test.h"

#include <QTreeWidget>

#include <array>
#include <functional>

namespace dorn {
namespace {

constexpr std::array<const char*, 4> kFields = {"at_pattern", "at_command", "at_view_cmd",
                                                "at_edit_cmd"};

// Pattern, open, view and edit, as in the file.
using Row = std::array<std::string, 4>;

class AssociateTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        directory_ = sandbox_.path();
        gConfigPath = &directory_;
        set_table(
            {{"*.c", "ored", "ored -r", ""}, {"*.x\xFF", "<b>x</b>", "", "e"}, {"*", "", "v", ""}});
    }
    void TearDown() override {
        gConfigPath = nullptr;
        WindowTest::TearDown();
    }

    static void set_table(const std::vector<Row>& rows) {
        apat.clear();
        for (const Row& row : rows)
            apat.push_back({row[0], row[1], row[3], row[2]});
    }
    static std::string table() {
        std::string text;
        for (const Association& row : apat)
            text += row.pattern + '|' + row.open + '|' + row.view + '|' + row.edit + '\n';
        return text;
    }
    std::string file() const {
        return sandbox_.read("associate.003");
    }

    static QTreeWidget* list() {
        return qt_instance<QTreeWidget>("as_list");
    }
    static bool usable(const char* button) {
        return qt(w_instance(button))->isEnabled();
    }
    static void select(int row) {
        list()->setCurrentItem(list()->topLevelItem(row - 1));
    }
    static int selected_row() {
        const QList<QTreeWidgetItem*> items = list()->selectedItems();
        return items.empty() ? 0 : list()->indexOfTopLevelItem(items.front()) + 1;
    }
    static std::string patterns_shown() {
        std::string text;
        for (int i = 0; i < list()->topLevelItemCount(); ++i)
            text += list()->topLevelItem(i)->text(0).toStdString() + ' ';
        return text;
    }
    static void enter_row(const Row& row) {
        for (std::size_t i = 0; i < row.size(); ++i)
            enter(kFields[i], row[i]);
    }
    /// Adds a row, or what "OK" says.
    static std::string add(const Row& row) {
        push("as_add");
        enter_row(row);
        return alerts_of([] { push("at_done"); });
    }

    std::string directory_;
};

TEST_F(AssociateTest, AListMayBeEmptiedAndFilled) {
    em_edit_associations();
    ASSERT_TRUE(gets_focus("as_list"));
    for (const std::string left : {"*.x\xEF\xBF\xBD * ", "* ", "", ""}) {
        press_in("as_list", Qt::Key_Delete);
        EXPECT_EQ(patterns_shown(), left);
        EXPECT_EQ(usable("as_remove"), !left.empty());
    }
    EXPECT_FALSE(usable("as_edit"));
    push("as_done");
    EXPECT_TRUE(apat.empty());
    EXPECT_EQ(file().size(), 80U) << "the header";

    em_edit_associations();
    add({"*.x", "", "look", ""});
    EXPECT_TRUE(usable("as_remove"));
    push("as_done");
    EXPECT_EQ(table(), "*.x||look|\n");
}

TEST_F(AssociateTest, EditingARowKeepsItsPlaceAndItsOtherBytesAndSelectsTheFirst) {
    em_edit_associations();
    select(2);
    push("as_edit");
    enter("at_view_cmd", "look");
    push("at_done");
    EXPECT_EQ(selected_row(), 1);
    add({"*.new", "o", "", ""});
    push("as_done");
    EXPECT_EQ(table(), "*.c|ored|ored -r|\n*.x\xFF|<b>x</b>|look|e\n*||v|\n*.new|o||\n");
    EXPECT_EQ(file(), assoc_format(apat));
}

const std::string kTooLong = "Pattern and commands together cannot be over 1019 bytes";

TEST_F(AssociateTest, WhatTheFileCouldNotHoldIsRefusedInTheEditor) {
    const std::pair<Row, std::string> rows[] = {
        {{"", "o", "", ""}, "Pattern cannot have TABs"},
        {{"*.\tx", "o", "", ""}, "Pattern cannot have TABs"},
        {{"a\nb", "o", "", ""}, "Pattern cannot have line breaks"},
        {{"#x", "o", "", ""}, "Pattern cannot begin with \"#\". \"[#]\" stands for the same."},
        {{"*.x", " ", "\t ", ""}, "No actions added for Open, View or Edit"},
        {{"*.x", "o\tp", "", ""}, "Commands cannot have TABs or line breaks"},
        {{"*.x", "o", "v\nw", ""}, "Commands cannot have TABs or line breaks"},
        {{"*.x", "o", "", std::string("e\0f", 3)}, "Commands cannot have TABs or line breaks"},
        {{"*.x", std::string(500, 'o'), std::string(500, 'v'), std::string(17, 'e')}, kTooLong}};
    em_edit_associations();
    const std::string kept = patterns_shown();
    for (const auto& [row, message] : rows) {
        EXPECT_EQ(add(row), "DORN: " + message);
        EXPECT_TRUE(is_open("assoc_type_dlg")) << message;
        push("at_cancel");
    }
    EXPECT_EQ(patterns_shown(), kept);
}

TEST_F(AssociateTest, WhatIsTakenComesBackFromTheFile) {
    const std::string all_room(500, 'o');
    const Row longest = {"^*.\xC3\xBC", all_room, all_room, std::string(13, 'e')};
    const std::pair<Row, Row> rows[] = {{{"[#]x", " ", "\t", "e"}, {"[#]x", "", "", "e"}},
                                        {{" a b ", "c @ ", "", ""}, {" a b ", "c @ ", "", ""}},
                                        {{"*.y\n", "c @\r\n", "", ""}, {"*.y", "c @", "", ""}},
                                        {longest, longest}};
    for (const auto& [entered, row] : rows) {
        set_table({});
        em_edit_associations();
        EXPECT_EQ(add(entered), "") << row[0];
        push("as_done");
        std::vector<Association> read;
        ASSERT_EQ(assoc_parse(file(), &read), 0);
        ASSERT_EQ(read.size(), 1U);
        EXPECT_EQ((Row{read[0].pattern, read[0].open, read[0].view, read[0].edit}), row);
    }
}

TEST_F(AssociateTest, ARowThatTheNextStartCouldNotReadKeepsTheDialogOpen) {
    apat[1].open = std::string(1023 - 3 - 4 - 1, 'o');  // as the piece of a longer line comes in
    const std::string before = table();
    em_edit_associations();
    EXPECT_EQ(alerts_of([] { push("as_done"); }), "DORN: " + kTooLong);
    EXPECT_EQ(selected_row(), 2);
    EXPECT_EQ(table(), before);
    push("as_remove");
    push("as_done");
    EXPECT_EQ(apat.size(), 2U);
    EXPECT_EQ(file(), assoc_format(apat));
}

TEST_F(AssociateTest, CancelEscapeAndClosingChangeNothing) {
    const std::string before = table();
    const std::function<void()> ends[] = {[] { push("as_cancel"); },
                                          [] { press_in("as_list", Qt::Key_Escape); },
                                          [] {  // with the editor over it
                                              push("as_add");
                                              qt(w_instance("associate_dlg"))->close();
                                          }};
    for (const auto& end : ends) {
        em_edit_associations();
        EXPECT_EQ(patterns_shown(), "*.c *.x\xEF\xBF\xBD * ");
        push("as_remove");
        end();
        EXPECT_FALSE(is_open("associate_dlg"));
        EXPECT_FALSE(is_open("assoc_type_dlg"));
        EXPECT_EQ(table(), before);
        EXPECT_EQ(file(), "");
    }
}

TEST_F(AssociateTest, TheListTakesNoInputWhileTheEditorIsOpen) {
    em_edit_associations();
    push("as_edit");
    push("as_remove");
    press_in("as_list", Qt::Key_Escape);
    em_edit_associations();
    signal_refresh();
    EXPECT_TRUE(is_open("assoc_type_dlg"));
    EXPECT_EQ(list()->topLevelItemCount(), 3);
    press_in("assoc_type_dlg", Qt::Key_Escape);
    EXPECT_FALSE(is_open("assoc_type_dlg"));
    push("as_remove");
    EXPECT_EQ(list()->topLevelItemCount(), 2);
}

TEST_F(AssociateTest, TheKeysOfTheListAndOfTheEditor) {
    em_edit_associations();
    ASSERT_TRUE(gets_focus("as_list"));
    press_in("as_list", Qt::Key_Down);
    press_in("as_list", Qt::Key_Return);
    ASSERT_TRUE(gets_focus("at_pattern"));
    enter("at_pattern", "*.key");
    press_in("at_pattern", Qt::Key_Return);
    ASSERT_TRUE(gets_focus("as_list"));
    press_in("as_list", Qt::Key_Delete);
    EXPECT_EQ(patterns_shown(), "*.key * ");
    const QPoint row = list()->visualItemRect(list()->topLevelItem(1)).center();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row);
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(text_of("at_pattern"), "*");
}

}  // namespace
}  // namespace dorn
