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

/// A change comes in several steps, of which the first ones find the screens as they were.
constexpr std::chrono::milliseconds settleTime = 150ms;

} // namespace

QtScreens::QtScreens(QStringList machine) : m_machine(std::move(machine))
{
    m_settled.setSingleShot(true);
    m_settled.setInterval(settleTime);
    connect(&m_settled, &QTimer::timeout, this, &QtScreens::changed);
}

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

QPointF QtScreens::pointerPosition() const
{
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
