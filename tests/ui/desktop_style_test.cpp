#include "ui/desktop_style.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace dorn {
namespace {

class DesktopStyleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ui_setup_style();
    }
    void TearDown() override {
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        QApplication::setPalette(QPalette());
    }

    static QImage picture(QWidget* widget) {
        widget->resize(300, 40);
        return widget->grab().toImage();
    }
};

// By the formula of the accessibility guidelines, at its strongest.
double contrast(const QImage& image, QColor ground) {
    auto luminance = [](QColor color) {
        auto linear = [](double part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF()) + 0.05;
    };
    double most = 1;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            most = std::max(most, luminance(image.pixelColor(x, y)) / luminance(ground));
    return most;
}

TEST_F(DesktopStyleTest, ControlsAreSeenOnADarkGround) {
    for (const QColor ground : {QColor(Qt::black), QColor(40, 40, 45)}) {
        QPalette palette(ground, ground);
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(role, Qt::white);
        palette.setColor(QPalette::Base, ground);
        QApplication::setPalette(palette);
        QCheckBox box;
        QPushButton button;
        QProgressBar bar;
        for (QWidget* control : {static_cast<QWidget*>(&box), static_cast<QWidget*>(&button),
                                 static_cast<QWidget*>(&bar)})
            EXPECT_GE(contrast(picture(control), ground), 3.0)
                << control->metaObject()->className();
    }
}

// The same letters in the same order: moved to the other side, nothing else.
TEST_F(DesktopStyleTest, FromRightToLeftATextKeepsItsPunctuation) {
    for (const char* text : {"Path:", "(12 items)", "/tmp/files/", "Select..."}) {
        auto drawn = [text](Qt::LayoutDirection direction) {
            QGuiApplication::setLayoutDirection(direction);
            QPushButton button(QString::fromUtf8(text));
            return picture(&button);
        };
        EXPECT_EQ(drawn(Qt::LeftToRight), drawn(Qt::RightToLeft)) << text;
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        QLabel label(QString::fromUtf8(text));
        const QImage left_half = picture(&label).copy(0, 0, 150, 40);
        QImage empty = left_half;
        empty.fill(label.palette().color(QPalette::Window));
        EXPECT_EQ(left_half, empty) << text;
    }
}

}  // namespace
}  // namespace dorn
