#pragma once

#include <QRect>

#include <optional>

namespace korvo {

/// Where the window is that has the keyboard, of whatever program, as the window manager tells, in device pixels of the
/// whole desktop. None if there is no such window, or if it is the desktop's background.
std::optional<QRect> x11ActiveWindowGeometry();

} // namespace korvo
