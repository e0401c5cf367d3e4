#include "Views/Timeline.h"

#include "Utilities/Clock.h"

#include <QEvent>
#include <QWidget>

#include <chrono>

namespace korvo {

namespace {

constexpr qint64 period = 1000; // Milliseconds.
constexpr qint64 earliness = 5; // By how much a timer may come before its time.

} // namespace

Timeline::Timeline(QWidget &view, Clock &clock) : QObject(&view), m_view(view), m_clock(clock)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Timeline::tick);
    view.installEventFilter(this);
}

void Timeline::begin()
{
    m_anchor = m_clock.now();
    tick();
}

void Timeline::end()
{
    m_anchor = {};
    m_timer.stop();
}

bool Timeline::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::Hide)
        m_timer.stop();
    else if (event->type() == QEvent::Show && m_anchor.isValid())
        tick();
    return false;
}

void Timeline::tick()
{
    // A clock that was set back begins the schedule anew; one that jumped ahead is followed.
    const auto now = m_clock.now();
    if (now < m_anchor)
        m_anchor = now;
    const qint64 sinceAnchor = m_anchor.msecsTo(now) + earliness;
    if (m_view.isVisible())
        m_timer.start(std::chrono::milliseconds(period + earliness - sinceAnchor % period));
    emit ticked(m_anchor.addMSecs(sinceAnchor / period * period));
}

} // namespace korvo
