#pragma once

#include "Services/GlobalHotkeyService.h"
#include "ViewModels/TimerViewModel.h"

#include <QColor>
#include <QObject>
#include <QRect>
#include <QTimer>

#include <memory>

namespace korvo {

class KeyGrabber;
class MouseMonitor;
class NotchWindowController;
class Panel;
class Platform;
class SettingsWindow;
class QuickAddWindowController;
class StatusItem;
struct DockTileContent;

/// Owns every long-lived object and ties them together: the launch, the tick of one second that repaints what stands on
/// the desktop, and the end.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    /// The platform must outlive it; its clock, store and log are to be in their shared places already.
    explicit AppDelegate(Platform &platform, HttpTransport &transport = HttpTransport::shared(),
                         AppSettings &settings = AppSettings::shared(), QObject *parent = nullptr);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();

    /// False: the program lives in the tray and goes on without any window.
    bool applicationShouldTerminateAfterLastWindowClosed() const { return false; }

    /// Takes down what the launch built up. A running timer goes on in the workspace.
    void applicationWillTerminate();

    TimerViewModel &timerViewModel() { return m_timerVM; }

    /// Whether the first screen has a camera housing at its top.
    bool hasPhysicalNotch() const;

    /// Makes the panel around the notch, in place of a former one.
    void setupNotchUI();
    /// Takes it down, if it is there.
    void teardownNotchUI();

    /// Opens the settings, or brings their window to the front. The menu panel closes first.
    void openSettings();

    /// Binds the shortcut of the settings, whatever it is by now, to the quick-add panel; frees the key if none is set.
    void registerGlobalHotkey();

    /// Lets the program stand in the Dock, or not, as the settings say.
    void updateDockIconVisibility();

protected:
    /// Sees the end coming before the windows are closed for it.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void installCrashHandlers();
    void endSettings();
    void tick();

    // The notch.
    void decideAboutNotch();
    void chooseNotchOnFirstRun();
    bool isNotchActive() const;
    void screenDidChange();

    // The status item.
    void updateStatusBarAppearance();
    void updateToolTip();
    void updateStatusMenu();
    static QColor colorForElapsed(double elapsed);
    double elapsedSeconds(const TimerEntry &entry) const; ///< Negative if it starts in the future.

    // The menu panel.
    void togglePopover();
    void openMenuPanel();
    void dismissMenuPanel();
    bool isMenuPanelInSight() const;

    // The Dock.
    void updateDockIcon();
    DockTileContent makeDockIconImage(const QString &text, const QColor &ringColor, double elapsed) const;

    Platform &m_platform;
    HttpTransport &m_transport;
    AppSettings &m_settings;
    Clock &m_clock;
    TimerViewModel m_timerVM;
    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<Panel> m_menuPanel;               ///< There while it is open.
    QRect m_menuPanelFrame;                           ///< Its place.
    std::unique_ptr<MouseMonitor> m_menuPanelMonitor; ///< The same.
    std::unique_ptr<SettingsWindow> m_settingsWindow; ///< The last one that was opened.
    QTimer m_statusBarTimer{this};
    QPropertyNotifier m_menuFollowsTimer;
    QPropertyNotifier m_menuFollowsLoading;
    bool m_previouslyRunning = false;                               ///< Whether the last update showed a running timer.
    std::shared_ptr<QuickAddWindowController> m_quickAddController; ///< Since the launch.
    std::unique_ptr<NotchWindowController> m_notchController;       ///< There while the notch interface is up.
    std::unique_ptr<KeyGrabber> m_keyGrabber;
    GlobalHotkeyService m_hotkeyService;
    qint64 m_lastDockMinute = -1; ///< Last drawn in the Dock; -1 while no timer stands there.
};

} // namespace korvo
