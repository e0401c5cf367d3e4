#include "Platform/Linux/QtScreens.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace korvo {

namespace {

/// In device pixels of the whole desktop, where the toolkit leaves the corner of a screen as it is.
QRect deviceGeometry(const QScreen &screen)
{
    const QRect geometry = screen.geometry();
    return {geometry.topLeft(), (QSizeF(geometry.size()) * screen.devicePixelRatio()).toSize()};
}

/// The screen that shows the greatest part of `window`; null if none shows any.
const QScreen *screenOf(const QRect &window)
{
    const QScreen *found = nullptr;
    qint64 most = 0;
    for (const QScreen *screen : QGuiApplication::screens()) {
        const QRect part = deviceGeometry(*screen) & window;
        const qint64 area = part.isEmpty() ? 0 : qint64(part.width()) * part.height();
        if (area > most) {
            found = screen;
            most = area;
        }
    }
    return found;
}

} // namespace

Screen QtScreens::describe(const QScreen &screen) const
{
    const double scale = screen.devicePixelRatio();
    return {screen.geometry(), notchInset(m_machine, screen.name(), deviceGeometry(screen).size(), scale),
            screen.availableGeometry()};
}

QList<Screen> QtScreens::screens() const
{
    QList<Screen> screens;
    for (const QScreen *screen : QGuiApplication::screens())
        screen == QGuiApplication::primaryScreen() ? screens.prepend(describe(*screen))
                                                   : screens.append(describe(*screen));
    return screens;
}

std::optional<Screen> QtScreens::mainScreen() const
{
    const auto window = m_activeWindow ? m_activeWindow() : std::nullopt;
    const QScreen *screen = window ? screenOf(*window) : nullptr;
    if (!screen)
        screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    return screen ? std::optional(describe(*screen)) : std::nullopt;
}

} // namespace korvo
