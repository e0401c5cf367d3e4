#include "Platform/Freedesktop/ScreenSample.h"

#include "Platform/Freedesktop/StatusButton.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

namespace korvo {

Backdrop backdropAt(const QRect &area)
{
    QScreen *screen = QGuiApplication::screenAt(area.center());
    if (!screen || area.isEmpty())
        return Backdrop::unknown;
    const QPoint inside = area.topLeft() - screen->geometry().topLeft();
    return backdropOf(screen->grabWindow(0, inside.x(), inside.y(), area.width(), area.height()).toImage());
}

Backdrop backdropOfBar()
{
    const auto bar = desktopBar(barScreens());
    if (!bar)
        return Backdrop::unknown;
    // One line along the bar, off its middle, where text and pictures are fewer.
    const bool isUpright = bar->height() > bar->width();
    return backdropAt(isUpright ? QRect(bar->left() + bar->width() / 4, bar->top(), 1, bar->height())
                                : QRect(bar->left(), bar->top() + bar->height() / 4, bar->width(), 1));
}

} // namespace korvo
