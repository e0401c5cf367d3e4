#include "AppDelegate.h"

#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"
#include "Platform/Screens.h"
#include "Platform/StatusItem.h"
#include "Utilities/DiagnosticLogger.h"
#include "Utilities/TimeFormatter.h"
#include "Views/ActivityRing.h"
#include "Views/Symbols.h"
#include "Views/Theme.h"

#include <QCoreApplication>

#include <chrono>
#include <cmath>

namespace korvo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr double secondsPerHour = 3600.0;

double elapsedSeconds(const TimerEntry &entry, const Clock &clock)
{
    return double(entry.startTime.msecsTo(clock.now())) / 1000.0;
}

void logSignal(int signal)
{
    Log::fault(u"Received signal %1"_s.arg(signal));
}

void logException(const UncaughtException &exception)
{
    Log::fault(u"Uncaught exception: "_s + exception.name + u" — "_s + exception.reason.value_or(u"no reason"_s));
    Log::fault(u"Stack trace: "_s + exception.callStack.join(u'\n'));
}

/// One line of readable length: an error can hold a whole page of a gateway.
QString shortened(const QString &text)
{
    constexpr int limit = 200;
    const auto line = text.left(10 * limit).simplified();
    return line.size() <= limit ? line : line.left(limit - 1) + u'…';
}

} // namespace

AppDelegate::AppDelegate(Platform &platform, HttpTransport &transport, AppSettings &settings, QObject *parent) :
    QObject(parent),
    m_platform(platform),
    m_settings(settings),
    m_clock(platform.clock()),
    m_timerVM(platform.notificationCenter(), transport, settings, m_clock)
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    Log::info(u"App launched — applicationDidFinishLaunching"_s);
    installCrashHandlers();
    m_statusItem = m_platform.makeStatusItem();
    updateStatusBarAppearance(); // So that the item is never blank.
    m_menuFollowsTimer = m_timerVM.bindableActiveTimer().addNotifier([this] { updateStatusMenu(); });
    updateStatusMenu();
    Log::info(u"Status item created"_s);

    connect(&m_statusBarTimer, &QTimer::timeout, this, &AppDelegate::updateStatusBarAppearance);
    m_statusBarTimer.start(1s);

    m_platform.notificationCenter().requestAuthorization();
    m_timerVM.startPollingIfConfigured();
    Log::info(u"Physical notch detected: "_s + (hasPhysicalNotch() ? u"true"_s : u"false"_s));
    Log::info(u"App launch complete"_s);
}

void AppDelegate::applicationWillTerminate()
{
    Log::info(u"App terminating — applicationWillTerminate"_s);
    m_statusBarTimer.stop();
    m_timerVM.stopPolling();
    m_menuFollowsTimer = {}; // A poll that is under way still ends, and there is no item any more that shows it.
    m_statusItem.reset();
}

void AppDelegate::installCrashHandlers()
{
    m_platform.setExceptionHandler(logException);
    m_platform.setSignalHandler(logSignal);
}

bool AppDelegate::hasPhysicalNotch() const
{
    const auto screens = m_platform.screens().screens();
    return !screens.isEmpty() && screens.first().topSafeAreaInset > 0;
}

bool AppDelegate::isNotchActive() const
{
    return hasPhysicalNotch() && m_settings.useNotchUI();
}

void AppDelegate::updateStatusBarAppearance()
{
    if (!m_statusItem)
        return;
    const auto &entry = m_timerVM.activeTimer();
    if (entry && entry->status == TimerEntry::TimerStatus::running) {
        const double elapsed = elapsedSeconds(*entry, m_clock);
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

void AppDelegate::updateToolTip()
{
    const auto &entry = m_timerVM.activeTimer();
    if (entry && entry->status == TimerEntry::TimerStatus::running) {
        // Hours and minutes: a text that changes with the minute, not with the second.
        const auto time = TimeFormatter::format(elapsedSeconds(*entry, m_clock)).chopped(3);
        m_statusItem->setToolTip(shortened(entry->taskName), tr("Running for %1").arg(time));
    } else if (m_timerVM.hasNetworkError()) {
        m_statusItem->setToolTip(u"Korvo"_s, shortened(m_timerVM.errorMessage().value_or(QString())));
    } else {
        m_statusItem->setToolTip(u"Korvo"_s, tr("No timer running"));
    }
}

void AppDelegate::updateStatusMenu()
{
    const auto &entry = m_timerVM.activeTimer();
    QList<StatusMenuEntry> menu;
    menu.append(
        {.label = entry ? shortened(entry->taskName) : tr("No timer running"), .isEnabled = false, .action = {}});
    menu.append({.label = {}, .isEnabled = false, .action = {}});
    menu.append({.label = tr("Quit"), .isEnabled = true, .action = [] { QCoreApplication::quit(); }});
    m_statusItem->setMenu(menu);
}

QColor AppDelegate::colorForElapsed(double elapsed)
{
    const double hours = elapsed / secondsPerHour;
    if (hours < 1)
        return theme::systemGreen;
    if (hours < 2)
        return theme::systemCyan;
    if (hours < 4)
        return theme::systemOrange;
    return theme::systemRed;
}

} // namespace korvo
