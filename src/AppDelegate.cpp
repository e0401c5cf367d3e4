#include "AppDelegate.h"

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
#include "Platform/UserDefaults.h"
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

    const bool hasNotch = hasPhysicalNotch();
    Log::info(u"Physical notch detected: "_s + (hasNotch ? u"true"_s : u"false"_s));
    if (hasNotch) {
        chooseNotchOnFirstRun();
    } else {
        m_settings.setUseNotchUI(false);
        Log::info(u"No notch — menu bar mode only"_s);
    }
    m_quickAddController = std::make_shared<QuickAddWindowController>(m_timerVM, m_platform);
    registerGlobalHotkey();
    Log::info(u"App launch complete"_s);
}

/// The notch interface is switched on once for every user of a machine with a notch; afterwards the saved value stands.
void AppDelegate::chooseNotchOnFirstRun()
{
    const QString key = u"hasSetNotchDefault4"_s;
    UserDefaults &defaults = m_platform.userDefaults();
    if (defaults.boolean(key).value_or(false))
        return;
    m_settings.setUseNotchUI(true);
    defaults.set({{key, true}});
}

void AppDelegate::applicationWillTerminate()
{
    Log::info(u"App terminating — applicationWillTerminate"_s);
    m_hotkeyService.unregister();
    dismissMenuPanel();
    if (m_quickAddController)
        m_quickAddController->dismiss();
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
    return !screens.isEmpty() && screens.first().topSafeAreaInset > 0;
}

bool AppDelegate::isNotchActive() const
{
    return hasPhysicalNotch() && m_settings.useNotchUI();
}

} // namespace korvo
