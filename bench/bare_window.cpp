// What any program of this kind has to do before it shows something: a Qt Widgets window with an
// empty tree view. Prints "painted" and ends when it is painted for the first time and the event
// loop is idle.
#include <QApplication>
#include <QMainWindow>
#include <QStandardItemModel>
#include <QTimer>
#include <QTreeView>
#include <QWindow>

#include <cstdio>
#include <unistd.h>

namespace {

void tell_when_exposed(QWidget* window) {
    if (window->windowHandle() == nullptr || !window->windowHandle()->isExposed()) {
        QTimer::singleShot(0, window, [window] { tell_when_exposed(window); });
        return;
    }
    window->repaint();
    std::puts("painted");
    std::fflush(stdout);
    _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    QStandardItemModel model(0, 7);
    auto* tree = new QTreeView;
    tree->setModel(&model);
    window.setCentralWidget(tree);
    window.resize(600, 410);
    window.show();
    QTimer::singleShot(0, &window, [&window] { tell_when_exposed(&window); });
    return QApplication::exec();
}
