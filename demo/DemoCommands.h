#pragma once

#include "Models/AppSettings.h"
#include "Platform/KeyGrabber.h"
#include "Platform/Platform.h"
#include "Services/GlobalHotkeyService.h"
#include "ViewModels/TimerViewModel.h"

#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <memory>

namespace korvo::demo {

/// Lets whoever started the demonstration act as its user would, a line of standard input each:
/// "start NAME" (of today's tasks), "stop", "quick-add NAME", "remind" (the limit is 0 hours then),
/// "shortcut NAME" (lets the quick-add shortcut of the settings create that task), "login on", "login off".
class DemoCommands : public QObject {
    Q_OBJECT
public:
    DemoCommands(Platform &platform, TimerViewModel &timerVM, AppSettings &settings, QObject *parent = nullptr);

private:
    void readLines();
    void run(const QString &line);

    Platform &m_platform;
    TimerViewModel &m_timerVM;
    AppSettings &m_settings;
    QSocketNotifier m_input;
    std::unique_ptr<KeyGrabber> m_grabber;
    std::unique_ptr<GlobalHotkeyService> m_hotkey;
    QByteArray m_rest; ///< What came of a line that has not ended.
};

} // namespace korvo::demo
