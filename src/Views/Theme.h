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

/// The colour for texts beside the main one.
inline QColor secondaryOn(const QPalette &palette)
{
    return faded(palette.color(QPalette::Active, QPalette::WindowText), secondary);
}

} // namespace korvo::theme
