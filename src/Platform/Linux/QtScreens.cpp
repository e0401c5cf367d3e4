#include "Platform/Linux/QtScreens.h"

#include <QGuiApplication>
#include <QScreen>

namespace korvo {

QList<Screen> QtScreens::screens() const
{
    QList<Screen> screens;
    for (const QScreen *screen : QGuiApplication::screens()) {
        const QRectF geometry = screen->geometry();
        const double scale = screen->devicePixelRatio();
        const QSize nativeSize = (geometry.size() * scale).toSize();
        const Screen one{geometry, notchInset(m_machine, screen->name(), nativeSize, scale),
                         screen->availableGeometry()};
        screen == QGuiApplication::primaryScreen() ? screens.prepend(one) : screens.append(one);
    }
    return screens;
}

} // namespace korvo
