// Our own pictures: SVG files in the resources, drawn at the size and in the colours of the moment.
#include "ui/qt_widget.h"

#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace dorn {

namespace {

constexpr QLatin1String kThemeName("dorn");
constexpr QByteArrayView kTextColor("currentColor");
constexpr QRgb kOpaque = 0xFF000000;
constexpr qreal kDisabledOpacity = 0.45;
// Few sizes and colours are alive at a time; more than these are left over from former palettes.
constexpr std::size_t kMostDrawings = 24;

// One look of a picture. The colour is the one that stands for the text's.
struct Look {
    QSize size;  // in device pixels
    qreal ratio;
    QRgb color;
    bool faded;
    bool operator==(const Look&) const = default;
};

struct Drawing {
    Look look;
    QPixmap pixmap;
};

// A picture and what was drawn of it, shared by all icons of its name.
struct Picture {
    QByteArray svg;
    bool follows_text = false;  // some of it has the colour of the text
    bool has_colors = false;    // some of it has colours of its own
    std::vector<Drawing> drawings;
};

using PicturePtr = std::shared_ptr<Picture>;

QHash<QByteArray, PicturePtr> sPictures;

QString picture_path(const char* name) {
    return QStringLiteral(":/pictures/%1.svg").arg(QLatin1String(name));
}

// Pixmaps must not outlive the application object.
void forget_pictures() {
    sPictures.clear();
}

PicturePtr find_picture(const char* name) {
    if (sPictures.isEmpty()) qAddPostRoutine(forget_pictures);
    PicturePtr& picture = sPictures[QByteArray(name)];
    if (picture != nullptr) return picture;
    picture = std::make_shared<Picture>();
    QFile file(picture_path(name));
    if (!file.open(QIODevice::ReadOnly)) return picture;
    picture->svg = file.readAll();
    picture->follows_text = picture->svg.contains(kTextColor);
    picture->has_colors = picture->svg.contains('#');
    return picture;
}

QRgb text_color(QIcon::Mode mode) {
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
        case QIcon::Disabled:
            return palette.color(QPalette::Disabled, QPalette::WindowText).rgba();
        case QIcon::Selected:
            return palette.color(QPalette::Active, QPalette::HighlightedText).rgba();
        default:
            return palette.color(QPalette::Active, QPalette::WindowText).rgba();
    }
}

// Thins out the picture as a whole: shapes that lie on each other stay one.
void fade(QPainter& painter, const QSize& size, qreal opacity) {
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(QRect(QPoint(0, 0), size), QColor::fromRgbF(0, 0, 0, float(opacity)));
}

QPixmap draw(const Picture& picture, const Look& look) {
    QByteArray svg = picture.svg;
    const QColor color = QColor::fromRgba(look.color);
    svg.replace(kTextColor, color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(svg);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QPixmap pixmap(look.size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(look.size)));
    // A palette's disabled colour may be translucent, which the colour's name does not tell.
    const qreal opacity = look.faded ? kDisabledOpacity : color.alphaF();
    if (opacity < 1) fade(painter, look.size, opacity);
    painter.end();
    pixmap.setDevicePixelRatio(look.ratio);
    return pixmap;
}

// The picture in that look, drawn only once.
QPixmap drawing_of(Picture& picture, const Look& look) {
    auto& drawings = picture.drawings;
    const auto found = std::find_if(drawings.begin(), drawings.end(),
                                    [&](const Drawing& drawing) { return drawing.look == look; });
    if (found != drawings.end()) return found->pixmap;
    if (drawings.size() >= kMostDrawings) drawings.clear();
    drawings.push_back({look, draw(picture, look)});
    return drawings.back().pixmap;
}

// Asks for the palette's colour each time it draws, so that a changed palette is followed.
class PictureEngine : public QIconEngine {
  public:
    explicit PictureEngine(PicturePtr picture) : picture_(std::move(picture)) {}

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal ratio) override {
        if (size.isEmpty() || isNull()) return {};
        Look look{size, ratio, kOpaque, false};
        if (picture_->follows_text) look.color = text_color(mode);
        look.faded = mode == QIcon::Disabled && picture_->has_colors;
        return drawing_of(*picture_, look);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1);
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const qreal ratio = painter->device()->devicePixelRatioF();
        const QSize size = (QSizeF(rect.size()) * ratio).toSize();
        const QPixmap drawn = scaledPixmap(size, mode, state, ratio);
        if (!drawn.isNull()) painter->drawPixmap(rect, drawn);
    }

    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override {
        const int side = std::min(size.width(), size.height());
        return {side, side};
    }

    QIconEngine* clone() const override {
        return new PictureEngine(picture_);
    }

    QString key() const override {
        return QStringLiteral("dorn_picture");
    }

    bool isNull() override {
        return picture_->svg.isEmpty();
    }

  private:
    PicturePtr picture_;
};

// A theme of the desktop's own; "hicolor" is what is set where there is none, and has no icons.
bool has_desktop_theme() {
    const QString name = QIcon::themeName();
    return !name.isEmpty() && name != QLatin1String("hicolor") && name != kThemeName;
}

bool is_dark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

// "Back" points to where one came from, which is on the right where text runs to the left.
const char* facing(const char* name) {
    if (name == nullptr || !QGuiApplication::isRightToLeft()) return name;
    constexpr const char* pairs[][2] = {{"back", "forward"}, {"go-previous", "go-next"}};
    for (const auto& pair : pairs) {
        if (std::strcmp(name, pair[0]) == 0) return pair[1];
        if (std::strcmp(name, pair[1]) == 0) return pair[0];
    }
    return name;
}

}  // namespace

void ui_setup_icon_theme() {
    QIcon::setFallbackThemeName(kThemeName);
}

QIcon ui_icon(const char* own_name, const char* theme_name) {
    theme_name = facing(theme_name);
    const PicturePtr picture = find_picture(facing(own_name));
    QIcon own(new PictureEngine(picture));
    if (theme_name == nullptr || !has_desktop_theme()) return own;
    // Themes have dark glyphs even where the palette is dark; ours follow it.
    if (!picture->has_colors && is_dark(QGuiApplication::palette())) return own;
    return QIcon::fromTheme(QLatin1String(theme_name), own);
}

}  // namespace dorn
