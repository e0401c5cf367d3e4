#pragma once

#include <QColor>

namespace korvo::theme {

// The system colours that the design names, in the values that they have on a dark ground.
// Source: Apple Human Interface Guidelines, Color, "iOS, iPadOS system colors", dark.
inline constexpr QColor systemGreen{48, 209, 88};
inline constexpr QColor systemCyan{100, 210, 255};
inline constexpr QColor systemOrange{255, 159, 10};
inline constexpr QColor systemRed{255, 69, 58};

} // namespace korvo::theme
