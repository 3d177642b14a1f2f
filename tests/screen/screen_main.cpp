// The main function of the tests that need a real X server: a private one with a window manager,
// both ended with the tests, and a HOME of its own. Called with "offer URI" the program is a fake
// peer instead: a small window out of which that URI can be dragged.
#include "support/child.h"
#include "support/sandbox.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QWidget>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

class Peer : public QWidget {
  public:
    explicit Peer(const char* uri) : uri_(uri) {}

  protected:
    void mouseMoveEvent(QMouseEvent*) override {
        auto* list = new QMimeData;
        list->setData(QStringLiteral("text/uri-list"), uri_ + "\r\n");
        auto* drag = new QDrag(this);
        drag->setMimeData(list);
        drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
    }

  private:
    QByteArray uri_;
};

int offer(int argc, char** argv) {
    QApplication application(argc, argv);
    Peer peer(argv[2]);
    peer.setWindowTitle(QStringLiteral("peer"));
    peer.setGeometry(20, 580, 100, 60);
    peer.show();
    return application.exec();
}

class Screen {
  public:
    Screen() {
        directory_.mkdir(".or");
        const std::string number = directory_.file("number");
        const std::string log = directory_.file("log");
        server_ = dorn::start_child({"/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0",
                                     "1024x700x24", "-noreset", "-nolisten", "tcp"},
                                    {{}, {}, number, log, {}});
        if (!dorn::wait_until([&] { return dorn::read_file(number).ends_with('\n'); })) {
            std::fprintf(stderr, "No X server:\n%s", dorn::read_file(log).c_str());
            std::exit(1);
        }
        const std::string display = dorn::read_file(number);
        setenv("DISPLAY", (":" + display.substr(0, display.size() - 1)).c_str(), 1);
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        setenv("HOME", directory_.path(), 1);
        for (const char* name : {"WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER"})
            unsetenv(name);
        // A window that maps itself while the window manager starts would never be shown.
        const std::string started = directory_.file("started");
        manager_ =
            dorn::start_child({"/usr/bin/openbox", "--sm-disable", "--startup", "touch " + started},
                              {{}, {}, {}, log, {}});
        dorn::wait_until([&] { return access(started.c_str(), F_OK) == 0; });
    }
    ~Screen() {
        for (const pid_t pid : {manager_, server_}) {
            kill(pid, SIGTERM);
            dorn::end_of_child(pid);
        }
    }

  private:
    dorn::Sandbox directory_;
    pid_t server_ = 0;
    pid_t manager_ = 0;
};

int run_tests(char** argv) {
    const Screen screen;
    int qt_argc = 1;
    QApplication application(qt_argc, argv);
    return RUN_ALL_TESTS();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "offer") == 0) return offer(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return ::testing::GTEST_FLAG(list_tests) ? RUN_ALL_TESTS() : run_tests(argv);
}
