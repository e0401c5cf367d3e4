#include "Controllers/MenuPanelPlacement.h"

#include <algorithm>
#include <cmath>

namespace korvo {

namespace {

constexpr int width = 340;
constexpr int height = 420;
constexpr int gap = 4; // Between the status item and the panel.

const Screen *screenOf(const QPointF &point, const QList<Screen> &screens)
{
    const auto distance = [&point](const Screen &screen) {
        const QRectF &area = screen.geometry;
        const double dx = std::max({area.left() - point.x(), 0.0, point.x() - area.right()});
        const double dy = std::max({area.top() - point.y(), 0.0, point.y() - area.bottom()});
        return std::hypot(dx, dy);
    };
    const auto nearest = std::ranges::min_element(screens, {}, distance);
    return nearest == screens.end() ? nullptr : &*nearest;
}

/// `at` moved so that a length from there on lies within `from` to `to`; where it does not fit, it begins at `from`.
int slid(int at, int length, double from, double to)
{
    return std::max(std::min(at, int(std::floor(to)) - length), int(std::ceil(from)));
}

} // namespace

MenuPanelPlacement placeMenuPanel(const QRect &button, const QList<Screen> &screens)
{
    const QRectF item(button);
    MenuPanelPlacement placement{
        .frame = {int(std::lround(item.center().x() - width / 2.0)), int(item.bottom()) + gap, width, height},
    };
    const Screen *screen = screenOf(item.center(), screens);
    if (!screen)
        return placement;
    if (item.center().y() > screen->geometry.center().y()) {
        placement.opensUpwards = true;
        placement.frame.moveTop(button.top() - gap - height);
    }
    const QRectF room = screen->available.isEmpty() ? screen->geometry : screen->available;
    placement.frame.moveTo(slid(placement.frame.left(), width, room.left(), room.right()),
                           slid(placement.frame.top(), height, room.top(), room.bottom()));
    return placement;
}

} // namespace korvo
