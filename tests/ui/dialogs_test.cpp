#include "ui/dialogs.h"

#include "ui/qt_widget.h"

#include <QApplication>
#include <QLabel>
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
    timer->callOnTimeout([timer, act = std::move(act)] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) return;
        timer->stop();
        timer->deleteLater();
        act(box);
    });
    timer->start(1);
}

TEST(Alert, EnterTakesTheDefaultButtonAndEscapeOrClosingTheEscapeButton) {
    constexpr int kClose = 0;
    const std::tuple<const char*, int, int> rows[] = {
        {"&Skip|@&Overwrite|Overwrite &All|#a&Bort", Qt::Key_Return, 2},
        {"&Skip|@&Overwrite|Overwrite &All|#a&Bort", Qt::Key_Escape, 4},
        {"&Yes|&No", Qt::Key_Return, 1},
        {"&Yes|&No", Qt::Key_Escape, 2},
        {"#&First|@&Second|&Third", Qt::Key_Escape, 1},
        {"&One|#&Two|&Three", kClose, 2},
        {"@#&Continue", Qt::Key_Escape, 1},
        {"@#&Continue", Qt::Key_Return, 1}};
    for (const auto& [buttons, key, pressed] : rows) {
        with_alert([key = key](QMessageBox* box) {
            key == kClose ? void(box->close()) : QTest::keyClick(box, static_cast<Qt::Key>(key));
        });
        EXPECT_EQ(ui_alert(nullptr, "Title", "Message", buttons), pressed) << buttons;
    }
}

TEST(Alert, ItsTextsAreShownAsTheyAreAndCutBetweenCharacters) {
    QString text, label;
    const auto look = [&](QMessageBox* box) {
        EXPECT_EQ(box->textFormat(), Qt::PlainText);
        text = box->text();
        label = box->buttons().front()->text();
        box->close();
    };
    with_alert(look);
    EXPECT_EQ(wask(nullptr, "T", "<b>%s</b>\n%d", "%s\t\xE2\x80\xAE", 7), 2);
    EXPECT_EQ(text, QString::fromUtf8("<b>%s\xE2\x87\xA5\xEF\xBF\xBD</b>\n7"));
    EXPECT_EQ(label, QStringLiteral("&Yes"));
    with_alert(look);
    EXPECT_EQ(wreport(nullptr, "T", "%s", (std::string(254, 'a') + "\xC3\xBC and more").c_str()),
              1);
    EXPECT_EQ(text, QString(254, u'a'));
}

TEST(CentredArea, KeepsTheChildOnTheConsole) {
    const Area console{0, 0, 1000, 800};
    const std::tuple<Area, Area, int, int> rows[] = {
        {{800, 300, 200, 200}, {0, 0, 300, 100}, 675, 350},  // past the right edge
        {{0, 0, 100, 100}, {0, 0, 300, 100}, 10, 0},         // left of the left edge
        {{300, 700, 200, 100}, {0, 0, 100, 200}, 350, 575},  // past the bottom
        {{0, 0, 1000, 800}, {0, 0, 1500, 900}, 10, 10},      // larger than the console
        {{100, 100, 101, 101}, {0, 0, 200, 200}, 51, 51}};   // halves go toward zero
    for (const auto& [parent, child, x, y] : rows) {
        const Area at = centred_area(parent, child, console);
        EXPECT_EQ(std::pair(at.x, at.y), std::pair(x, y));
        EXPECT_EQ(at.width, child.width);
    }
    EXPECT_EQ(centred_area({0, 0, 100, 100}, {0, 0, 20, 20}, {50, 50, 500, 500}).x, 60);
}

TEST(Block, ABlockedWindowItsChildrenAndItsAcceleratorsTakeNoInput) {
    QWidget window;
    QPushButton button(&window);
    int clicks = 0;
    QObject::connect(&button, &QPushButton::clicked, [&] { ++clicks; });
    QAction action;
    action.setShortcut(Qt::Key_F5);
    QObject::connect(&action, &QAction::triggered, [&] { ++clicks; });
    window.addAction(&action);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    window.activateWindow();
    const auto taken = [&] {
        clicks = 0;
        QTest::mouseClick(&button, Qt::LeftButton);
        QTest::keyClick(&button, Qt::Key_Space);
        QTest::keyClick(window.windowHandle(), Qt::Key_F5);
        return clicks;
    };
    EXPECT_EQ(taken(), 3);
    for (const auto block : {wblock, misc_block}) {
        block(handle(&window), 1);
        { const ScopedBlock within(handle(&window)); }
        EXPECT_TRUE(ui_is_blocked(handle(&window)));
        EXPECT_EQ(taken(), 0);
        block(handle(&window), 0);
        EXPECT_EQ(taken(), 3);
        block(nullptr, 1);
    }
    misc_block(handle(&button), 1);
    EXPECT_FALSE(button.isEnabled());
    misc_block(handle(&button), 0);
    EXPECT_TRUE(button.isEnabled());
}

}  // namespace
}  // namespace dorn
