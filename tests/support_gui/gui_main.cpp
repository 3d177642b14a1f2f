// The main function of every test binary that needs a screen: Qt's offscreen platform, our own
// pictures, and a HOME of its own, so that nothing of the user's is touched.
#include <QApplication>
#include <QIcon>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

// What the program starts as another window of itself is, in a test, the test: it tells how it was
// started instead.
int tell_start(const char* log, int argc, char** argv) {
    FILE* file = std::fopen(log, "a");
    if (file == nullptr) return 1;
    std::string line;
    for (int i = 0; i < argc; ++i)
        line += (i > 0 ? " " : "") + std::string(argv[i]);
    std::fprintf(file, "%s\n", line.c_str());
    return std::fclose(file);
}

}  // namespace

int main(int argc, char** argv) {
    if (const char* log = std::getenv("DORN_TEST_STARTED")) return tell_start(log, argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    QTemporaryDir home;
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QIcon::setThemeName(QStringLiteral("dorn"));
    int qt_argc = 1;
    QApplication application(qt_argc, argv);
    return RUN_ALL_TESTS();
}
