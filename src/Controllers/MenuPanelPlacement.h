#pragma once

#include "Platform/Screens.h"

#include <QList>
#include <QRect>

namespace korvo {

/// Where the menu panel stands.
struct MenuPanelPlacement {
    QRect frame;               ///< In logical pixels.
    bool opensUpwards = false; ///< It stands above the status item, so its content is at the lower edge of the frame.
};

/// The panel stands centred under the status item, whose place is `button`, 4 points below it; above it with the same
/// gap if the item is in the lower half of its screen, as where the desktop's bar is at the bottom. What would leave
/// the room between the desktop's bars is slid back inside. Without any screen it stays where the item puts it.
MenuPanelPlacement placeMenuPanel(const QRect &button, const QList<Screen> &screens);

} // namespace korvo
