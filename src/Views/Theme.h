#pragma once

#include <QColor>
#include <QPalette>

namespace korvo::theme {

// The system colours that the design names, in the values that they have on a dark ground.
// Source: Apple Human Interface Guidelines, Color, "iOS, iPadOS system colors", dark.
inline constexpr QColor systemGreen{48, 209, 88};
inline constexpr QColor systemCyan{100, 210, 255};
inline constexpr QColor systemOrange{255, 159, 10};
inline constexpr QColor systemRed{255, 69, 58};
inline constexpr QColor systemBlue{10, 132, 255};

/// Text and icon of a stop button: red 1.0, green 0.27, blue 0.23.
inline constexpr QColor stopRed{255, 69, 59};

inline constexpr double secondary = 0.55; ///< Opacity of white for texts beside the main one.
inline constexpr double disabledOpacity = 0.5;

/// A colour at an opacity from 0 to 1, on top of the one that it has.
inline QColor faded(QColor color, double opacity)
{
    color.setAlphaF(float(color.alphaF() * opacity));
    return color;
}

/// White at an opacity from 0 to 1.
inline QColor white(double opacity)
{
    return faded(Qt::white, opacity);
}

/// The opaque grey of a level from 0, black, to 1, white.
inline QColor gray(double level)
{
    return QColor::fromRgbF(float(level), float(level), float(level));
}

/// Whether the desktop's own colours are light writing on a dark ground.
inline bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

// The same system colours for views in the desktop's own colours. Source as above, light.
inline QColor systemGreenOn(const QPalette &palette)
{
    return isDark(palette) ? systemGreen : QColor(52, 199, 89);
}
inline QColor systemRedOn(const QPalette &palette)
{
    return isDark(palette) ? systemRed : QColor(255, 59, 48);
}

// For words in these colours: on a light ground the plain ones are too pale to read. Source as above, accessible.
inline QColor greenTextOn(const QPalette &palette)
{
    return isDark(palette) ? systemGreen : QColor(36, 138, 61);
}
inline QColor redTextOn(const QPalette &palette)
{
    return isDark(palette) ? QColor(255, 105, 97) : QColor(215, 0, 21);
}

/// A link. The desktop's own colour for it is often left at the dark blue of white pages.
inline QColor linkOn(const QPalette &palette)
{
    const QColor link = palette.color(QPalette::Active, QPalette::Link);
    constexpr int legible = 130;
    return isDark(palette) && link.lightness() < legible ? QColor(100, 170, 255) : link;
}

/// Of one colour so much, from 0 to 1, laid upon another.
inline QColor mixed(const QColor &ground, const QColor &upon, double share)
{
    const auto part = [share](int below, int above) { return int(below + (above - below) * share + 0.5); };
    return {part(ground.red(), upon.red()), part(ground.green(), upon.green()), part(ground.blue(), upon.blue())};
}

/// The hairline between parts, in the desktop's own colours.
inline QColor separatorOn(const QPalette &palette)
{
    return faded(palette.color(QPalette::Active, QPalette::WindowText), isDark(palette) ? 0.18 : 0.15);
}

/// The colour for texts beside the main one.
inline QColor secondaryOn(const QPalette &palette)
{
    return faded(palette.color(QPalette::Active, QPalette::WindowText), secondary);
}

} // namespace korvo::theme
