// draw_icon SVG SIZE PNG: draws a picture at SIZE pixels, for themes and launchers that take no
// SVG.

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    QSvgRenderer picture(QString::fromLocal8Bit(argv[1]));
    const int size = std::atoi(argv[2]);
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    picture.render(&painter);
    painter.end();
    if (picture.isValid() && image.save(QString::fromLocal8Bit(argv[3]), "png")) return 0;
    std::fprintf(stderr, "draw_icon: can't draw %s\n", argv[1]);
    return 1;
}
