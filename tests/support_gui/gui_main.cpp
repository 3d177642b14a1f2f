// The main function of every test binary that needs a screen: Qt's offscreen platform, our own
// pictures, and a HOME of its own, so that nothing of the user's is touched.
#include <QApplication>
#include <QIcon>
#include <QTemporaryDir>

#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QTemporaryDir home;
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QIcon::setThemeName(QStringLiteral("dorn"));
    int qt_argc = 1;
    QApplication application(qt_argc, argv);
    return RUN_ALL_TESTS();
}
