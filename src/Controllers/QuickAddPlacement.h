#pragma once

#include "Platform/Screens.h"

#include <QPoint>
#include <QSize>

#include <optional>

namespace korvo {

inline constexpr QSize quickAddPanelSize(520, 90);

/// The lower left corner of the quick-add panel, in logical pixels, y growing downwards: centred across the room that the
/// desktop's bars leave of `screen`, its lower edge a tenth of that room's height above the middle. Without a screen that
/// of a panel in the desktop's corner.
QPoint quickAddLowerLeft(const std::optional<Screen> &screen);

} // namespace korvo
