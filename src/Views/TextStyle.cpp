#include "Views/TextStyle.h"

#include "Views/Theme.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>
#include <QWidget>

#include <cmath>

namespace korvo {

namespace {

/// The desktop's fixed-pitch font, or any, where it has none or names one that isn't installed.
QFont monospacedFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (!QFontInfo(font).fixedPitch()) {
        font.setFamilies({QStringLiteral("monospace")});
        font.setStyleHint(QFont::Monospace, QFont::PreferMatch);
        font.setFixedPitch(true);
    }
    return font;
}

/// The size of a style where body text has 13 points. Source: Apple Human Interface Guidelines, Typography, macOS.
double sizeOf(SystemText style)
{
    switch (style) {
    case SystemText::caption:
        return 10;
    case SystemText::subheadline:
        return 11;
    case SystemText::callout:
        return 12;
    case SystemText::body:
        return 13;
    case SystemText::title3:
        return 15;
    case SystemText::title2:
        return 17;
    }
    return 13;
}

} // namespace

QFont makeFont(const TextStyle &style)
{
    QFont font = style.isMonospaced ? monospacedFont() : QGuiApplication::font();
    font.setPixelSize(style.size);
    font.setWeight(style.weight);
    if (style.tracking != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, style.tracking);
    return font;
}

QFont makeFont(SystemText style, QFont::Weight weight, bool isMonospaced)
{
    const double bodySize = QFontInfo(QGuiApplication::font()).pixelSize();
    QFont font = isMonospaced ? monospacedFont() : QGuiApplication::font();
    font.setPixelSize(int(std::lround(bodySize * sizeOf(style) / sizeOf(SystemText::body))));
    font.setWeight(weight);
    return font;
}

void setInk(QWidget &widget, const QColor &color)
{
    QPalette palette = widget.palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, theme::faded(color, theme::disabledOpacity));
    widget.setPalette(palette);
}

} // namespace korvo
