#include "ui/dialogs.h"

#include "ui/qt_widget.h"

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace dorn {
namespace {

// Runs `act` on the alert as soon as one is up.
void with_alert(std::function<void(QMessageBox*)> act) {
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, act = std::move(act)] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) return;
        timer->stop();
        timer->deleteLater();
        act(box);
    });
    timer->start(1);
}

struct AlertCase {
    const char* buttons;
    Qt::Key key;
    int pressed;
};

TEST(Alert, EnterTakesTheDefaultButtonAndEscapeTheEscapeButton) {
    for (const AlertCase& row :
         std::vector<AlertCase>{{"&Skip|@&Overwrite|Overwrite &All|#a&Bort", Qt::Key_Return, 2},
                                {"&Skip|@&Overwrite|Overwrite &All|#a&Bort", Qt::Key_Escape, 4},
                                {"&Yes|&No", Qt::Key_Return, 1},
                                {"&Yes|&No", Qt::Key_Escape, 2},
                                {"@&Delete|#&Cancel", Qt::Key_Escape, 2},
                                {"#&First|@&Second|&Third", Qt::Key_Escape, 1},
                                {"@#&Continue", Qt::Key_Escape, 1},
                                {"@#&Continue", Qt::Key_Return, 1}}) {
        with_alert([&row](QMessageBox* box) { QTest::keyClick(box, row.key); });
        EXPECT_EQ(ui_alert(nullptr, "Title", "Message", row.buttons), row.pressed) << row.buttons;
    }
}

TEST(Alert, ClosingItIsItsEscapeButton) {
    with_alert([](QMessageBox* box) { box->close(); });
    EXPECT_EQ(ui_alert(nullptr, "Title", "Message", "&One|#&Two|&Three"), 2);
}

TEST(Alert, ItsTextsAreShownAsTheyAre) {
    QString text, title, label;
    with_alert([&](QMessageBox* box) {
        EXPECT_EQ(box->textFormat(), Qt::PlainText);
        text = box->text();
        title = box->windowTitle();
        label = box->buttons().front()->text();
        box->close();
    });
    EXPECT_EQ(wask(nullptr, "T", "<b>%s</b>\n%d", "%s\t\xE2\x80\xAE", 7), 2);
    EXPECT_EQ(text, QString::fromUtf8("<b>%s\xE2\x87\xA5\xEF\xBF\xBD</b>\n7"));
    EXPECT_EQ(title, QStringLiteral("T"));
    EXPECT_EQ(label, QStringLiteral("&Yes"));
}

TEST(Alert, AReportIsCutAt255BytesBetweenCharacters) {
    QString text;
    with_alert([&](QMessageBox* box) {
        text = box->text();
        box->close();
    });
    const std::string long_name = std::string(254, 'a') + "\xC3\xBC and more";
    EXPECT_EQ(wreport(nullptr, "T", "%s", long_name.c_str()), 1);
    EXPECT_EQ(text, QString(254, u'a'));
}

TEST(Wprintf, PutsTheTextWhereTheWidgetShowsIt) {
    QWidget window;
    QGroupBox pane(&window);
    QLabel label(&window);
    QLineEdit field(&window);
    QPushButton button(&window);
    for (QWidget* widget : {&window, static_cast<QWidget*>(&pane), static_cast<QWidget*>(&label),
                            static_cast<QWidget*>(&field), static_cast<QWidget*>(&button)})
        EXPECT_EQ(wprintf(handle(widget), "%d of %s", 3, "\xC3\xBC"), 7);
    const QString expected = QString::fromUtf8("3 of \xC3\xBC");
    EXPECT_EQ(window.windowTitle(), expected);
    EXPECT_EQ(pane.title(), expected);
    EXPECT_EQ(label.text(), expected);
    EXPECT_EQ(field.text(), expected);
    EXPECT_EQ(button.text(), expected);
    EXPECT_EQ(wprintf(nullptr, "%d", 1), -1);
}

TEST(CentredArea, KeepsTheChildOnTheConsole) {
    const Area console{0, 0, 1000, 800};
    struct Row {
        Area parent, child;
        int x, y;
    };
    for (const Row& row : std::vector<Row>{
             {{100, 100, 400, 300}, {0, 0, 200, 100}, 200, 200},
             {{800, 300, 200, 200}, {0, 0, 300, 100}, 675, 350},  // past the right edge
             {{0, 0, 100, 100}, {0, 0, 300, 100}, 10, 0},         // left of the left edge
             {{300, 700, 200, 100}, {0, 0, 100, 200}, 350, 575},  // past the bottom
             {{0, 0, 1000, 800}, {0, 0, 1500, 900}, 10, 10},      // larger than the console
             {{100, 100, 101, 101}, {0, 0, 200, 200}, 51, 51},    // halves go toward zero
             {{40000, 0, 100, 100}, {0, 0, 10, 10}, 965, 45}}) {
        const Area at = centred_area(row.parent, row.child, console);
        EXPECT_EQ(at.x, row.x);
        EXPECT_EQ(at.y, row.y);
        EXPECT_EQ(at.width, row.child.width);
    }
    EXPECT_EQ(centred_area({0, 0, 100, 100}, {0, 0, 20, 20}, {50, 50, 500, 500}).x, 60);
}

class BlockTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QObject::connect(&button_, &QPushButton::clicked, [this] { ++clicks_; });
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }
    bool takes_input() {
        const int before = clicks_;
        QTest::mouseClick(&button_, Qt::LeftButton);
        QTest::keyClick(&button_, Qt::Key_Space);
        return clicks_ == before + 2;
    }

    QWidget window_;
    QPushButton button_{&window_};
    int clicks_ = 0;
};

TEST_F(BlockTest, ABlockedWindowAndItsChildrenTakeNoInput) {
    ASSERT_TRUE(takes_input());
    for (auto block : {wblock, misc_block}) {
        block(handle(&window_), 1);
        EXPECT_TRUE(ui_is_blocked(handle(&window_)));
        EXPECT_FALSE(takes_input());
        EXPECT_NE(window_.cursor().shape(), Qt::ArrowCursor);
        block(handle(&window_), 0);
        EXPECT_TRUE(takes_input());
        EXPECT_EQ(window_.cursor().shape(), Qt::ArrowCursor);
    }
    wblock(nullptr, 1);
    misc_block(nullptr, 1);
}

TEST_F(BlockTest, MiscBlockGreysOutWhatIsNoWindow) {
    misc_block(handle(&button_), 1);
    EXPECT_FALSE(button_.isEnabled());
    misc_block(handle(&button_), 0);
    EXPECT_TRUE(button_.isEnabled());
    misc_block(handle(&window_), 1);
    EXPECT_TRUE(window_.isEnabled());
    misc_block(handle(&window_), 0);
}

TEST_F(BlockTest, AnAcceleratorOfABlockedWindowDoesNotRun) {
    int runs = 0;
    QAction action;
    action.setShortcut(Qt::Key_F5);
    QObject::connect(&action, &QAction::triggered, [&] { ++runs; });
    window_.addAction(&action);
    window_.activateWindow();
    button_.setFocus();
    QTest::keyClick(window_.windowHandle(), Qt::Key_F5);
    EXPECT_EQ(runs, 1);
    {
        const ScopedBlock blocked(handle(&window_));
        { const ScopedBlock within(handle(&window_)); }
        QTest::keyClick(window_.windowHandle(), Qt::Key_F5);
    }
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(ui_is_blocked(handle(&window_)));
}

TEST(FindChildClass, LooksThroughTheWholeTree) {
    QWidget top;
    QWidget inner(&top);
    QLabel label(&top);
    QLineEdit field(&inner);
    EXPECT_EQ(wrecursive_find_child_class(handle(&top), "QLineEdit"), handle(&field));
    EXPECT_EQ(wrecursive_find_child_class(handle(&top), "QWidget"), handle(&top));
    EXPECT_EQ(wrecursive_find_child_class(handle(&top), "QComboBox"), nullptr);
    EXPECT_EQ(wrecursive_find_child_class(nullptr, "QLabel"), nullptr);
}

}  // namespace
}  // namespace dorn
