#include "Controllers/QuickAddPlacement.h"

namespace korvo {

QPoint quickAddLowerLeft(const std::optional<Screen> &screen)
{
    if (!screen)
        return {0, quickAddPanelSize.height()};
    const QRectF room = screen->available.isEmpty() ? screen->geometry : screen->available;
    return QPointF(room.center().x() - quickAddPanelSize.width() / 2.0, room.center().y() - 0.1 * room.height())
        .toPoint();
}

} // namespace korvo
