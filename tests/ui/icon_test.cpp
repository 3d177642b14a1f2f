// Our own pictures: all there, and in the colours of the palette.
#include "ui/qt_widget.h"

#include <QGuiApplication>
#include <QImage>
#include <QPalette>

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace dorn {
namespace {

// Every name that the lists, the tree, the headers and the tool bars ask for.
constexpr const char* kPictures =
    "closed_folder file exec linked_folder linked_file linked_exec parent image_broken_link "
    "image_file_cut image_dir_cut open_folder invalid_folder image_sort_up image_sort_down "
    "back forward up home refresh bookmark_add bookmark_remove hotlist_pane close_pane "
    "cut copy paste delete stop properties new_file new_folder terminal dorn";

// The colours of the pixels that are wholly covered, and how many these are.
std::multiset<QRgb> colors(const QIcon& icon, qreal ratio = 1, QIcon::Mode mode = QIcon::Normal) {
    const QImage image = icon.pixmap(QSize(16, 16), ratio, mode).toImage();
    std::multiset<QRgb> colors;
    for (int y = 0; y < image.height(); y++)
        for (int x = 0; x < image.width(); x++)
            if (qAlpha(image.pixel(x, y)) == 255) colors.insert(image.pixel(x, y));
    return colors;
}

TEST(Icons, EveryPictureFillsItsSquareAtOneAndTwoPixelsAPoint) {
    for (const QString& name : QString::fromLatin1(kPictures).split(u' ')) {
        const QIcon icon = ui_icon(name.toLatin1().constData());
        EXPECT_GT(colors(icon).size(), 8U) << name.toStdString();
        EXPECT_GT(colors(icon, 2).size(), 60U) << name.toStdString();
    }
}

TEST(Icons, AGlyphThatIsAlreadyShownFollowsThePalette) {
    const QPalette before = QGuiApplication::palette();
    const QIcon glyph = ui_icon("back");
    const std::tuple<QPalette::ColorGroup, QPalette::ColorRole, QIcon::Mode, QRgb> rows[] = {
        {QPalette::Active, QPalette::WindowText, QIcon::Normal, qRgb(240, 230, 220)},
        {QPalette::Active, QPalette::WindowText, QIcon::Normal, qRgb(10, 120, 30)},
        {QPalette::Disabled, QPalette::WindowText, QIcon::Disabled, qRgb(90, 91, 92)},
        {QPalette::Active, QPalette::HighlightedText, QIcon::Selected, qRgb(250, 251, 252)}};
    for (const auto& [group, role, mode, color] : rows) {
        QPalette palette = before;
        palette.setColor(group, role, color);
        QGuiApplication::setPalette(palette);
        const std::multiset<QRgb> drawn = colors(glyph, 1, mode);
        EXPECT_GT(drawn.count(color), 0U);
        EXPECT_EQ(drawn.count(color), drawn.size());
    }
    QGuiApplication::setPalette(before);
}

}  // namespace
}  // namespace dorn
