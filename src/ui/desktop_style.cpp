#include "ui/desktop_style.h"

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>

#include <algorithm>

namespace dorn {

namespace {

constexpr QLatin1String kFusion("fusion");
constexpr int kOutlineShare = 40;  // percent of the text's colour
constexpr int kRadius = 2;         // pixels, of a field's and a button's corner

bool is_dark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

QColor outline_color(const QPalette& palette) {
    const QColor ground = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    auto mixed = [](int from, int to) { return from + (to - from) * kOutlineShare / 100; };
    return {mixed(ground.red(), text.red()), mixed(ground.green(), text.green()),
            mixed(ground.blue(), text.blue())};
}

void draw_outline(QPainter* painter, const QStyleOption& option, const QRect& area, int radius) {
    if (!is_dark(option.palette) || area.isEmpty()) return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(outline_color(option.palette));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter->restore();
}

bool is_default(const QStyleOption& option) {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    return (option.state & QStyle::State_HasFocus) != 0 ||
           (button != nullptr && (button->features & QStyleOptionButton::DefaultButton) != 0);
}

// The text as it reads by itself, wherever it is shown: a path from left to right, another text in
// the direction of its first letter.
QString isolated(const QString& text) {
    constexpr QChar kLeftToRight(u'\u2066'), kOfFirstLetter(u'\u2068'), kEnd(u'\u2069');
    if (text.isEmpty()) return text;
    return (text.startsWith(u'/') ? kLeftToRight : kOfFirstLetter) + text + kEnd;
}

// An entry's label and, behind a tab, its key.
QString isolated_entry(const QString& text) {
    const qsizetype tab = text.indexOf(u'\t');
    if (tab < 0) return isolated(text);
    return isolated(text.left(tab)) + u'\t' + isolated(text.mid(tab + 1));
}

class DesktopStyle : public QProxyStyle {
  public:
    explicit DesktopStyle(const QString& base) : QProxyStyle(base), fusion_(base == kFusion) {}

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;
    void drawItemText(QPainter* painter, const QRect& area, int flags, const QPalette& palette,
                      bool enabled, const QString& text, QPalette::ColorRole role) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;

  private:
    // Of a group's title, which is above its frame.
    int title_height(const QStyleOption& option) const {
        constexpr int kGap = 3;
        return std::max(pixelMetric(PM_IndicatorHeight), option.fontMetrics.height()) + kGap;
    }
    void draw_reversed(ControlElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const;

    const bool fusion_;
};

// A label goes by the direction of its text, which is English: to the left.
void DesktopStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    auto* label = dynamic_cast<QLabel*>(widget);
    if (label == nullptr || !label->isRightToLeft()) return;
    const Qt::Alignment alignment = label->alignment();
    if ((alignment & Qt::AlignAbsolute) == 0)
        label->setAlignment(visualAlignment(Qt::RightToLeft, alignment) | Qt::AlignAbsolute);
}

int DesktopStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                            QStyleHintReturn* data) const {
    if (fusion_ && hint == SH_EtchDisabledText) return 0;
    if (fusion_ && hint == SH_Menu_Scrollable) return 1;
    return QProxyStyle::styleHint(hint, option, widget, data);
}

void DesktopStyle::drawItemText(QPainter* painter, const QRect& area, int flags,
                                const QPalette& palette, bool enabled, const QString& text,
                                QPalette::ColorRole role) const {
    const bool reversed = QGuiApplication::isRightToLeft();
    QProxyStyle::drawItemText(painter, area, flags, palette, enabled,
                              reversed ? isolated(text) : text, role);
}

void DesktopStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (!fusion_) return;
    const QRect area = option->rect;
    const bool has_focus = (option->state & State_HasFocus) != 0;  // Fusion's own mark
    switch (element) {
        case PE_IndicatorRadioButton:
            draw_outline(painter, *option, area, std::max(area.width(), area.height()) / 2);
            break;
        case PE_IndicatorCheckBox:
        case PE_IndicatorItemViewItemCheck:
        case PE_Frame:
        case PE_FrameMenu:
            draw_outline(painter, *option, area, 0);
            break;
        case PE_FrameGroupBox:
            draw_outline(painter, *option, area.adjusted(0, title_height(*option), 0, 0), 0);
            break;
        case PE_PanelButtonCommand:
            if (!is_default(*option)) draw_outline(painter, *option, area, kRadius);
            break;
        case PE_FrameLineEdit:
            if (!has_focus) draw_outline(painter, *option, area, kRadius);
            break;
        default:
            break;
    }
}

void DesktopStyle::drawControl(ControlElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
    if (option->direction == Qt::RightToLeft)
        draw_reversed(element, option, painter, widget);
    else
        QProxyStyle::drawControl(element, option, painter, widget);
    if (!fusion_) return;
    if (element == CE_ProgressBarGroove) draw_outline(painter, *option, option->rect, kRadius);
    const auto* entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element == CE_MenuItem && entry->menuItemType == QStyleOptionMenuItem::Separator) {
        const QPoint left(entry->rect.left() + kRadius, entry->rect.center().y());
        draw_outline(painter, *option, {left, QSize(entry->rect.width() - 2 * kRadius, 1)}, 0);
    }
}

void DesktopStyle::draw_reversed(ControlElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const {
    if (const auto* entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        element == CE_MenuItem && entry != nullptr) {
        QStyleOptionMenuItem own = *entry;
        own.text = isolated_entry(entry->text);
        QProxyStyle::drawControl(element, &own, painter, widget);
    } else if (const auto* item = qstyleoption_cast<const QStyleOptionViewItem*>(option);
               element == CE_ItemViewItem && item != nullptr) {
        QStyleOptionViewItem own = *item;
        own.text = isolated(item->text);
        QProxyStyle::drawControl(element, &own, painter, widget);
    } else if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
               element == CE_ProgressBarLabel && bar != nullptr && fusion_) {
        // Fusion counts the filled part from the left, but colours it as what it is.
        QStyleOptionProgressBar own = *bar;
        own.progress = bar->minimum + bar->maximum - bar->progress;
        QProxyStyle::drawControl(element, &own, painter, widget);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void DesktopStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (fusion_ && control == CC_ComboBox && (option->state & State_HasFocus) == 0)
        draw_outline(painter, *option, option->rect, kRadius);
}

// What a style is below the settings that a desktop's own wrapping adds to it.
QString name_below(const QStyle* style) {
    const auto* proxy = dynamic_cast<const QProxyStyle*>(style);
    const QStyle* base = proxy == nullptr ? style : proxy->baseStyle();
    return base->inherits("QFusionStyle") ? QString(kFusion) : style->name();
}

}  // namespace

void ui_setup_style() {
    QString name = name_below(QApplication::style());
    if (name == QLatin1String("windows")) name = kFusion;
    const bool known = QStyleFactory::keys().contains(name, Qt::CaseInsensitive);
    if (known && (name == kFusion || QGuiApplication::isRightToLeft()))
        QApplication::setStyle(new DesktopStyle(name));
}

}  // namespace dorn
