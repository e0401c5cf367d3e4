#include "AppDelegate.h"

#include "Controllers/NotchWindowController.h"
#include "Controllers/QuickAddWindowController.h"
#include "Controllers/SettingsWindow.h"
#include "Platform/DockTile.h"
#include "Platform/KeyGrabber.h"
#include "Platform/MouseMonitor.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Panel.h"
#include "Platform/Platform.h"
#include "Platform/Screens.h"
#include "Platform/SingleInstance.h"
#include "Platform/StatusItem.h"
#include "Utilities/DiagnosticLogger.h"

#include <chrono>

namespace korvo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

void logSignal(int signal)
{
    Log::fault(u"Received signal %1"_s.arg(signal));
}

void logException(const UncaughtException &exception)
{
    Log::fault(u"Uncaught exception: "_s + exception.name + u" — "_s + exception.reason.value_or(u"no reason"_s));
    Log::fault(u"Stack trace: "_s + exception.callStack.join(u'\n'));
}

} // namespace

AppDelegate::AppDelegate(Platform &platform, HttpTransport &transport, AppSettings &settings, QObject *parent) :
    QObject(parent),
    m_platform(platform),
    m_transport(transport),
    m_settings(settings),
    m_clock(platform.clock()),
    m_timerVM(platform.notificationCenter(), transport, settings, m_clock),
    m_keyGrabber(platform.makeKeyGrabber()),
    m_hotkeyService(*m_keyGrabber)
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
    m_menuFollowsLoading = m_timerVM.bindableIsLoading().addNotifier([this] { updateStatusMenu(); });
    updateStatusMenu();
    connect(m_statusItem.get(), &StatusItem::activated, this, &AppDelegate::togglePopover);
    connect(&m_platform.singleInstance(), &SingleInstance::activationRequested, this, &AppDelegate::openMenuPanel);
    connect(&m_platform.dockTile(), &DockTile::activated, this, &AppDelegate::openMenuPanel);
    Log::info(u"Status item created"_s);

    m_statusBarTimer.setObjectName(u"statusBarTimer"_s);
    connect(&m_statusBarTimer, &QTimer::timeout, this, &AppDelegate::tick);
    m_statusBarTimer.start(1s);
    updateDockIconVisibility();
    m_platform.notificationCenter().requestAuthorization();
    m_timerVM.startPollingIfConfigured();

    decideAboutNotch();
    connect(&m_platform.screens(), &Screens::changed, this, &AppDelegate::screenDidChange);
    m_quickAddController = std::make_shared<QuickAddWindowController>(m_timerVM, m_platform);
    registerGlobalHotkey();
    Log::info(u"App launch complete"_s);
}

void AppDelegate::applicationWillTerminate()
{
    Log::info(u"App terminating — applicationWillTerminate"_s);
    m_hotkeyService.unregister();
    dismissMenuPanel();
    endSettings();
    if (m_quickAddController)
        m_quickAddController->dismiss();
    if (m_notchController)
        m_notchController->hide();
    disconnect(&m_platform.screens(), nullptr, this, nullptr); // Nothing is shown any more.
    m_statusBarTimer.stop();
    m_platform.dockTile().setContent(std::nullopt); // A tile with a timer in it doesn't outlive the run.
    m_timerVM.stopPolling();
    m_menuFollowsTimer = {}; // A poll that is under way still ends, and there is no item any more that shows it.
    m_menuFollowsLoading = {};
    m_statusItem.reset();
    // An action may keep the process for some seconds more: a start meanwhile is the program's own again.
    disconnect(&m_platform.singleInstance(), nullptr, this, nullptr);
    disconnect(&m_platform.dockTile(), nullptr, this, nullptr);
    m_platform.singleInstance().release();
}

/// All that moves on the desktop, once a second: no change of state needs longer to show there.
void AppDelegate::tick()
{
    updateStatusBarAppearance();
    if (m_notchController)
        m_notchController->updateForTimerState();
    updateDockIcon();
}

double AppDelegate::elapsedSeconds(const TimerEntry &entry) const
{
    return double(entry.startTime.msecsTo(m_clock.now())) / 1000.0;
}

void AppDelegate::installCrashHandlers()
{
    m_platform.setExceptionHandler(logException);
    m_platform.setSignalHandler(logSignal);
}

bool AppDelegate::hasPhysicalNotch() const
{
    const auto screens = m_platform.screens().screens();
    const auto screen = screens.isEmpty() ? m_platform.screens().mainScreen() : std::optional(screens.first());
    return screen && screen->topSafeAreaInset > 0;
}

bool AppDelegate::isNotchActive() const
{
    return hasPhysicalNotch() && m_settings.useNotchUI();
}

} // namespace korvo
