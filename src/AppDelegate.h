#pragma once

#include "ViewModels/TimerViewModel.h"

#include <QColor>
#include <QObject>
#include <QTimer>

#include <memory>

namespace korvo {

class Platform;
class Screens;
class StatusItem;
struct StatusImage;

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

private:
    void installCrashHandlers();
    bool isNotchActive() const;
    void updateStatusBarAppearance();
    void updateToolTip();
    void updateStatusMenu();
    static QColor colorForElapsed(double elapsed);

    Platform &m_platform;
    AppSettings &m_settings;
    Clock &m_clock;
    TimerViewModel m_timerVM;
    std::unique_ptr<StatusItem> m_statusItem;
    QTimer m_statusBarTimer;
    QPropertyNotifier m_menuFollowsTimer;
    bool m_previouslyRunning = false; ///< Whether the last update showed a running timer.
};

} // namespace korvo
