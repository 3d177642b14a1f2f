// Our own pictures: all there, told apart, and in the colours of the palette.
#include "ui/qt_widget.h"

#include <QGuiApplication>
#include <QImage>
#include <QPalette>

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace dorn {
namespace {

// Every name that the lists, the tree, the headers and the tool bars ask for.
constexpr const char* kPictures =
    "closed_folder file exec linked_folder linked_file linked_exec parent image_broken_link "
    "image_file_cut image_dir_cut open_folder invalid_folder image_sort_up image_sort_down "
    "back forward up home refresh bookmark_add bookmark_remove hotlist_pane close_pane "
    "cut copy paste delete stop properties new_file new_folder terminal dorn";

std::vector<std::string> words(const char* text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

QImage drawn(const QIcon& icon, int side, QIcon::Mode mode = QIcon::Normal) {
    return icon.pixmap(QSize(side, side), 1.0, mode)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

std::vector<QRgb> pixels(const QImage& image) {
    std::vector<QRgb> out;
    for (int y = 0; y < image.height(); y++)
        for (int x = 0; x < image.width(); x++)
            out.push_back(image.pixel(x, y));
    return out;
}

long opaque_pixels(const QImage& image) {
    const auto all = pixels(image);
    return std::count_if(all.begin(), all.end(), [](QRgb pixel) { return qAlpha(pixel) > 200; });
}

// The colours of the pixels that are wholly covered.
std::set<QRgb> full_colors(const QImage& image) {
    std::set<QRgb> out;
    for (const QRgb pixel : pixels(image))
        if (qAlpha(pixel) == 255) out.insert(pixel);
    return out;
}

class IconTest : public ::testing::Test {
  protected:
    void TearDown() override {
        QGuiApplication::setPalette(before_);
    }

    static void set_color(QPalette::ColorGroup group, QPalette::ColorRole role, QColor color) {
        QPalette palette = QGuiApplication::palette();
        palette.setColor(group, role, color);
        QGuiApplication::setPalette(palette);
    }

  private:
    QPalette before_ = QGuiApplication::palette();
};

TEST_F(IconTest, EveryPictureFillsItsSquareAtOneAndTwoPixelsAPoint) {
    for (const std::string& name : words(kPictures)) {
        const QIcon icon = ui_icon(name.c_str());
        ASSERT_FALSE(icon.isNull()) << name;
        EXPECT_GT(opaque_pixels(drawn(icon, 16)), 16) << name;
        const QPixmap fine = icon.pixmap(QSize(16, 16), 2.0);
        EXPECT_EQ(fine.size(), QSize(32, 32)) << name;
        EXPECT_GT(opaque_pixels(fine.toImage()), 80) << name;
    }
}

TEST_F(IconTest, AGlyphThatIsAlreadyShownFollowsThePalette) {
    const QIcon glyph = ui_icon("back");
    for (const QRgb color : {qRgb(0, 0, 0), qRgb(240, 230, 220), qRgb(10, 120, 30)}) {
        set_color(QPalette::Active, QPalette::WindowText, color);
        EXPECT_EQ(full_colors(drawn(glyph, 16)), std::set<QRgb>{color});
    }
    set_color(QPalette::Disabled, QPalette::WindowText, qRgb(90, 91, 92));
    EXPECT_EQ(full_colors(drawn(glyph, 16, QIcon::Disabled)), std::set<QRgb>{qRgb(90, 91, 92)});
    set_color(QPalette::Active, QPalette::HighlightedText, qRgb(250, 251, 252));
    EXPECT_EQ(full_colors(drawn(glyph, 16, QIcon::Selected)), std::set<QRgb>{qRgb(250, 251, 252)});
}

}  // namespace
}  // namespace dorn
