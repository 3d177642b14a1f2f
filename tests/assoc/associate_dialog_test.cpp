#include "app/base.h"
#include "assoc/assoc_dialogs.h"
#include "assoc/engine/association.h"
#include "config/config.h"
#include "support_gui/window_test.h"
#include "ui/qt_widget.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <array>
#include <functional>
#include <gtest/gtest.h>

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
        if (QWidget* list = shown_dialog("associate_dlg")) list->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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

    static QWidget* shown_dialog(const char* name) {
        QWidget* dialog = qt(w_instance(name));
        return dialog != nullptr && dialog->isVisible() ? dialog : nullptr;
    }
    static QTreeWidget* list() {
        return qt_instance<QTreeWidget>("as_list");
    }
    static void push(const char* button) {
        QTest::mouseClick(qt_instance<QPushButton>(button), Qt::LeftButton);
    }
    static bool usable(const char* button) {
        return qt(w_instance(button))->isEnabled();
    }
    static void select(int row) {
        list()->setCurrentItem(list()->topLevelItem(row - 1));
    }
    static int selected_row() {
        const QList<QTreeWidgetItem*> items = list()->selectedItems();
        return items.size() == 1 ? list()->indexOfTopLevelItem(items.front()) + 1 : 0;
    }
    static std::string patterns_shown() {
        std::string text;
        for (int i = 0; i < list()->topLevelItemCount(); ++i)
            text += list()->topLevelItem(i)->text(0).toStdString() + ' ';
        return text;
    }
    static void enter(const Row& row) {
        for (std::size_t i = 0; i < row.size(); ++i)
            qt_instance<QLineEdit>(kFields[i])->setText(QString::fromStdString(row[i]));
    }

    std::string directory_;
};

TEST_F(AssociateTest, AListMayBeEmptiedAndFilled) {
    em_edit_associations();
    ASSERT_TRUE(QTest::qWaitFor([] { return list()->hasFocus(); }));
    for (const std::string left : {"*.x\xEF\xBF\xBD * ", "* ", "", ""}) {
        QTest::keyClick(list(), Qt::Key_Delete);
        EXPECT_EQ(patterns_shown(), left);
        EXPECT_EQ(usable("as_remove"), !left.empty());
    }
    EXPECT_FALSE(usable("as_edit"));
    push("as_done");
    EXPECT_TRUE(apat.empty());
    EXPECT_EQ(file().size(), 80U) << "the header";

    em_edit_associations();
    push("as_add");
    enter({"*.x", "", "look", ""});
    push("at_done");
    EXPECT_TRUE(usable("as_remove"));
    push("as_done");
    EXPECT_EQ(table(), "*.x||look|\n");
}

TEST_F(AssociateTest, EditingARowKeepsItsPlaceAndItsOtherBytesAndSelectsTheFirst) {
    em_edit_associations();
    select(2);
    push("as_edit");
    qt_instance<QLineEdit>("at_view_cmd")->setText(QStringLiteral("look"));
    push("at_done");
    EXPECT_EQ(selected_row(), 1);
    push("as_add");
    enter({"*.new", "o", "", ""});
    push("at_done");
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
    push("as_add");
    for (const auto& [row, message] : rows) {
        enter(row);
        EXPECT_EQ(alerts_of([] { push("at_done"); }), "DORN: " + message);
        EXPECT_NE(shown_dialog("assoc_type_dlg"), nullptr) << message;
    }
    push("at_cancel");
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
        push("as_add");
        enter(entered);
        EXPECT_EQ(alerts_of([] { push("at_done"); }), "") << row[0];
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
                                          [] { QTest::keyClick(list(), Qt::Key_Escape); },
                                          [] {  // with the editor over it
                                              push("as_add");
                                              shown_dialog("associate_dlg")->close();
                                          }};
    for (const auto& end : ends) {
        em_edit_associations();
        EXPECT_EQ(patterns_shown(), "*.c *.x\xEF\xBF\xBD * ");
        push("as_remove");
        end();
        EXPECT_EQ(shown_dialog("associate_dlg"), nullptr);
        EXPECT_EQ(shown_dialog("assoc_type_dlg"), nullptr);
        EXPECT_EQ(table(), before);
        EXPECT_EQ(file(), "");
    }
}

TEST_F(AssociateTest, TheListTakesNoInputWhileTheEditorIsOpen) {
    em_edit_associations();
    push("as_edit");
    QWidget* editor = shown_dialog("assoc_type_dlg");
    push("as_remove");
    QTest::keyClick(list(), Qt::Key_Escape);
    em_edit_associations();
    signal_refresh();
    EXPECT_EQ(shown_dialog("assoc_type_dlg"), editor);
    EXPECT_EQ(list()->topLevelItemCount(), 3);
    QTest::keyClick(editor, Qt::Key_Escape);
    EXPECT_EQ(shown_dialog("assoc_type_dlg"), nullptr);
    push("as_remove");
    EXPECT_EQ(list()->topLevelItemCount(), 2);
}

TEST_F(AssociateTest, TheKeysOfTheListAndOfTheEditor) {
    const auto gets_focus = [](const char* name) {
        return QTest::qWaitFor([name] {
            return QApplication::focusWidget() != nullptr &&
                   QApplication::focusWidget() == qt(w_instance(name));
        });
    };
    em_edit_associations();
    ASSERT_TRUE(gets_focus("as_list"));
    QTest::keyClick(list(), Qt::Key_Down);
    QTest::keyClick(list(), Qt::Key_Return);
    ASSERT_TRUE(gets_focus("at_pattern"));
    auto* pattern = qt_instance<QLineEdit>("at_pattern");
    pattern->setText(QStringLiteral("*.key"));
    QTest::keyClick(pattern, Qt::Key_Return);
    ASSERT_TRUE(gets_focus("as_list"));
    QTest::keyClick(list(), Qt::Key_Delete);
    EXPECT_EQ(patterns_shown(), "*.key * ");
    const QPoint row = list()->visualItemRect(list()->topLevelItem(1)).center();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row);
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(qt_instance<QLineEdit>("at_pattern")->text(), QStringLiteral("*"));
}

}  // namespace
}  // namespace dorn
