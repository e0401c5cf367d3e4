#include "Platform/Linux/QtScreens.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMetaMethod>
#include <QScreen>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

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

/// A change comes in several steps, of which the first ones find the screens as they were.
constexpr std::chrono::milliseconds settleTime = 150ms;

} // namespace

QtScreens::QtScreens(QStringList machine, ActiveWindow activeWindow, PointerCheck isPointerKnown) :
    m_machine(std::move(machine)),
    m_activeWindow(std::move(activeWindow)),
    m_isPointerKnown(std::move(isPointerKnown))
{
    m_settled.setSingleShot(true);
    m_settled.setInterval(settleTime);
    connect(&m_settled, &QTimer::timeout, this, &QtScreens::changed);
}

Screen QtScreens::describe(const QScreen &screen) const
{
    const double scale = screen.devicePixelRatio();
    // A program of Wayland's can't have a window beside the housing, or anywhere of its own choice.
    const bool isPlaceable = !QGuiApplication::platformName().startsWith(u"wayland");
    const double inset = isPlaceable ? notchInset(m_machine, screen.name(), deviceGeometry(screen).size(), scale) : 0;
    return {screen.geometry(), inset, screen.availableGeometry(), screen.name()};
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

std::optional<QPointF> QtScreens::pointerPosition() const
{
    if (m_isPointerKnown && !m_isPointerKnown())
        return std::nullopt;
    return QCursor::pos();
}

void QtScreens::connectNotify(const QMetaMethod &signal)
{
    if (signal == QMetaMethod::fromSignal(&Screens::changed) && qGuiApp && !std::exchange(m_isWatching, true))
        watch();
}

void QtScreens::watch()
{
    const auto restart = [this] { m_settled.start(); };
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, restart);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, restart);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](const QScreen *screen) {
        watchScreen(screen);
        m_settled.start();
    });
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        watchScreen(screen);
}

void QtScreens::watchScreen(const QScreen *screen)
{
    const auto restart = [this] { m_settled.start(); };
    connect(screen, &QScreen::geometryChanged, this, restart);
    connect(screen, &QScreen::logicalDotsPerInchChanged, this, restart);
}

} // namespace korvo
