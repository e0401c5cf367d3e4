#include "Platform/Desktop/DesktopKeyGrabber.h"
#include "Platform/Freedesktop/BusSingleInstance.h"
#include "Platform/Freedesktop/DesktopNotifications.h"
#include "Platform/Freedesktop/JournalLog.h"
#include "Platform/Freedesktop/TaskBarTile.h"
#include "Platform/Freedesktop/TrayStatusItem.h"
#include "Platform/KeyGrabber.h"
#include "Platform/Linux/AutostartLoginItem.h"
#include "Platform/Linux/ExceptionLog.h"
#include "Platform/Linux/JsonUserDefaults.h"
#include "Platform/Linux/LinuxClock.h"
#include "Platform/Linux/QtScreens.h"
#include "Platform/Linux/SignalLog.h"
#include "Platform/Platform.h"
#include "Platform/X11/ActiveWindow.h"
#include "Platform/X11/KnownPointer.h"
#include "Platform/X11/X11InputPanel.h"
#include "Platform/X11/X11MouseMonitor.h"
#include "Platform/X11/X11Panel.h"
#include "Platform/X11/XkbKeyboardLayout.h"

#include <QPointer>
#include <QtGlobal>

#include <csignal>

#include <malloc.h>

namespace korvo {

namespace {

/// The adapters of a freedesktop.org desktop on Linux.
class LinuxPlatform final : public Platform {
public:
    explicit LinuxPlatform(const QString &defaultsFile) : m_userDefaults(defaultsFile)
    {
        // A peer that is gone is an error of its write, never the end of the program.
        std::signal(SIGPIPE, SIG_IGN);
        // A program that mostly sleeps: its few threads share one heap, and what a poll needed goes back to the system.
        mallopt(M_ARENA_MAX, 1);
        mallopt(M_TRIM_THRESHOLD, 32 * 1024);
        mallopt(M_TOP_PAD, 16 * 1024);
    }

    Clock &clock() override { return m_clock; }
    SystemLog &systemLog() override { return m_systemLog; }
    UserDefaults &userDefaults() override { return m_userDefaults; }
    Screens &screens() override { return m_screens; }
    const KeyboardLayout &keyboardLayout() override { return m_keyboardLayout; }
    LoginItem &loginItem() override { return m_loginItem; }
    NotificationCenter &notificationCenter() override { return m_notificationCenter; }
    SingleInstance &singleInstance() override { return m_singleInstance; }
    DockTile &dockTile() override { return m_dockTile; }
    std::unique_ptr<StatusItem> makeStatusItem() override
    {
        auto item = std::make_unique<TrayStatusItem>();
        m_statusItem = item.get();
        // A second start is to find this one on the new bus too.
        QObject::connect(item.get(), &TrayStatusItem::busReturned, &m_singleInstance, &BusSingleInstance::claimAgain);
        return item;
    }
    std::unique_ptr<KeyGrabber> makeKeyGrabber() override { return makeDesktopKeyGrabber(); }
    std::unique_ptr<Panel> makePanel(const PanelStyle &style) override { return std::make_unique<X11Panel>(style); }
    std::unique_ptr<InputPanel> makeInputPanel() override { return std::make_unique<X11InputPanel>(); }
    std::unique_ptr<MouseMonitor> makeMouseMonitor() override
    {
        auto monitor = std::make_unique<X11MouseMonitor>();
        if (m_statusItem) {
            QObject::connect(m_statusItem, &StatusItem::activated, monitor.get(), &X11MouseMonitor::forgetPressOnBar);
            QObject::connect(m_statusItem, &StatusItem::menuOpened, monitor.get(), &X11MouseMonitor::forgetPressOnBar);
        }
        return monitor;
    }
    void setSignalHandler(void (*handler)(int signal)) override { SignalLog::install(handler); }
    void setExceptionHandler(void (*handler)(const UncaughtException &exception)) override
    {
        ExceptionLog::install(handler);
    }

private:
    LinuxClock m_clock;
    JournalLog m_systemLog;
    JsonUserDefaults m_userDefaults;
    QtScreens m_screens{deviceTreeCompatible(), x11ActiveWindowGeometry, isX11PointerKnown};
    XkbKeyboardLayout m_keyboardLayout;
    AutostartLoginItem m_loginItem;
    DesktopNotifications m_notificationCenter;
    BusSingleInstance m_singleInstance;
    TaskBarTile m_dockTile;
    QPointer<StatusItem> m_statusItem; ///< The last one that was made.
};

/// Windows can't place themselves under Wayland: there the program runs through XWayland, unless the user says otherwise.
void preferX11()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && !qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb;wayland"); // Where the display doesn't answer, without X11 after all.
}

} // namespace

std::unique_ptr<Platform> Platform::create(const QString &defaultsFile)
{
    preferX11();
    return std::make_unique<LinuxPlatform>(defaultsFile.isEmpty() ? JsonUserDefaults::defaultPath() : defaultsFile);
}

} // namespace korvo
