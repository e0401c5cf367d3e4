#include "AppDelegate.h"

#include "Platform/StatusItem.h"
#include "Utilities/TimeFormatter.h"
#include "Views/ActivityRing.h"
#include "Views/Symbols.h"
#include "Views/TimerFigures.h"

#include <QCoreApplication>
#include <QTextBoundaryFinder>

#include <cmath>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsPerHour = 3600.0;

/// One line of readable length: an error can hold a whole page of a gateway.
QString shortened(const QString &text)
{
    constexpr int limit = 200;
    const auto line = text.left(10 * limit).simplified();
    if (line.size() <= limit)
        return line;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, line); // Half an emoji is no character at all.
    finder.setPosition(limit - 1);
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    return line.left(finder.position()) + u'…';
}

} // namespace

void AppDelegate::updateStatusBarAppearance()
{
    if (!m_statusItem)
        return;
    const auto &entry = m_timerVM.activeTimer();
    if (entry && entry->status == TimerEntry::TimerStatus::running) {
        const double elapsed = elapsedSeconds(*entry);
        m_timerVM.checkReminder(elapsed);
        if (isNotchActive()) {
            m_statusItem->setImage(makeSymbolImage(Symbol::timer, u"Korvo"_s));
            m_statusItem->setTitle({});
        } else {
            const double progress = std::fmod(elapsed, secondsPerHour) / secondsPerHour;
            m_statusItem->setImage(makeActivityRingImage(progress, colorForElapsed(elapsed)));
            m_statusItem->setTitle(u" "_s + TimeFormatter::format(elapsed));
        }
        m_previouslyRunning = true;
    } else if (m_timerVM.hasNetworkError()) {
        m_statusItem->setImage(makeSymbolImage(Symbol::wifiExclamationmark, {}));
        m_statusItem->setTitle({});
        m_previouslyRunning = false;
    } else {
        m_statusItem->setImage(makeSymbolImage(Symbol::timer, u"Korvo"_s));
        m_statusItem->setTitle({});
        m_previouslyRunning = false;
    }
    updateToolTip();
}

/// It tells why the last poll failed, on purpose: the item shows only the warning and the panel only its banner, so
/// that this is the one place where a user finds the reason.
void AppDelegate::updateToolTip()
{
    const auto &entry = m_timerVM.activeTimer();
    if (entry && entry->status == TimerEntry::TimerStatus::running) {
        // Hours and minutes: a text that changes with the minute, not with the second.
        const auto time = TimeFormatter::format(elapsedSeconds(*entry)).chopped(3);
        m_statusItem->setToolTip(shortened(entry->taskName), tr("Running for %1").arg(time));
    } else if (m_timerVM.hasNetworkError()) {
        m_statusItem->setToolTip(u"Korvo"_s, shortened(m_timerVM.errorMessage().value_or(QString())));
    } else {
        m_statusItem->setToolTip(u"Korvo"_s, tr("No timer running"));
    }
}

/// For trays that only open menus, and for the pointer's other button. Not the click's own road: that opens the panel.
void AppDelegate::updateStatusMenu()
{
    const auto &entry = m_timerVM.activeTimer();
    QList<StatusMenuEntry> menu;
    const auto append = [&menu](const QString &label, bool isEnabled, std::function<void()> action) {
        menu.append({.label = label, .isEnabled = isEnabled, .action = std::move(action)});
    };
    append(tr("Open"), true, [this] { openMenuPanel(); });
    append({}, false, {});
    append(entry ? shortened(entry->taskName) : tr("No timer running"), false, {});
    append(tr("Stop"), entry && !m_timerVM.isLoading(), [this] { m_timerVM.stopTimer(); });
    append({}, false, {});
    append(tr("Settings"), true, [this] {
        dismissMenuPanel();
        openSettings();
    });
    append(tr("Quit"), true, [] { QCoreApplication::quit(); });
    m_statusItem->setMenu(menu);
}

QColor AppDelegate::colorForElapsed(double elapsed)
{
    return ringColor(elapsed); // All displays of a timer agree.
}

} // namespace korvo
