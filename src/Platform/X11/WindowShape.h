#pragma once

#include <QPainterPath>

class QWidget;

namespace korvo {

/// Tells the X server what of a window can be clicked and, if `isCut`, what of it can be seen: `shape`, in the window's
/// logical pixels. Does nothing while the window has no native one.
void setWindowShape(const QWidget &window, const QPainterPath &shape, bool isCut);

} // namespace korvo
