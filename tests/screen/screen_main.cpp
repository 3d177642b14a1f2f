// The main function of the tests that screen.py runs on a screen of its own. Called with "offer
// URI" the program is a fake peer instead: a small window out of which that URI can be dragged.
#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QWidget>

#include <cstring>
#include <gtest/gtest.h>

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

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "offer") == 0) return offer(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
