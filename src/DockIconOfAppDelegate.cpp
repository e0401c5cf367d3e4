#include "AppDelegate.h"

#include "Platform/DockTile.h"
#include "Platform/Platform.h"
#include "Views/DockIcon.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsPerHour = 3600.0;
constexpr int secondsPerMinute = 60;
constexpr qint64 minutesPerHour = 60;
constexpr qint64 mostMinutesShown = 99; // Longer times stand there as hours.

} // namespace

void AppDelegate::updateDockIcon()
{
    if (!m_settings.showDockIcon())
        return;
    const auto &entry = m_timerVM.activeTimer();
    if (entry && entry->status == TimerEntry::TimerStatus::running) {
        const double elapsed = elapsedSeconds(*entry);
        const auto minutes = qint64(elapsed / secondsPerMinute);
        if (minutes == m_lastDockMinute)
            return;
        m_lastDockMinute = minutes;
        const QString text = minutes <= mostMinutesShown ? QString::asprintf("%02lld", minutes)
                                                         : QString::number(minutes / minutesPerHour) + u'h';
        m_platform.dockTile().setContent(makeDockIconImage(text, colorForElapsed(elapsed), elapsed));
    } else if (m_lastDockMinute != -1) {
        m_platform.dockTile().setContent(std::nullopt);
        m_lastDockMinute = -1;
    }
}

DockTileContent AppDelegate::makeDockIconImage(const QString &text, const QColor &ringColor, double elapsed) const
{
    return {
        .size = dockIconSize,
        .draw = [text, ringColor, elapsed](
                    QPainter &painter, const QSizeF &size) { drawDockIcon(painter, size, text, ringColor, elapsed); },
        .minutes = int(std::clamp(elapsed / secondsPerMinute, 0.0, double(std::numeric_limits<int>::max()))),
        .progress = std::clamp(std::fmod(elapsed, secondsPerHour) / secondsPerHour, 0.0, 1.0),
    };
}

void AppDelegate::updateDockIconVisibility()
{
    if (m_settings.showDockIcon()) {
        m_platform.dockTile().setPresent(true);
        return;
    }
    m_platform.dockTile().setContent(std::nullopt);
    m_lastDockMinute = -1;
    m_platform.dockTile().setPresent(false);
}

} // namespace korvo
