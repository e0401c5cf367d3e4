#pragma once

#include "Models/AppSettings.h"
#include "ViewModels/TimerViewModel.h"

#include <QObject>
#include <QSocketNotifier>
#include <QString>

namespace korvo::demo {

/// Lets whoever started the demonstration act as its user would, a line of standard input each:
/// "start NAME" (of today's tasks), "stop", "quick-add NAME", "remind" (the limit is 0 hours then),
/// "login on", "login off".
class DemoCommands : public QObject {
    Q_OBJECT
public:
    DemoCommands(TimerViewModel &timerVM, AppSettings &settings, QObject *parent = nullptr);

private:
    void readLines();
    void run(const QString &line);

    TimerViewModel &m_timerVM;
    AppSettings &m_settings;
    QSocketNotifier m_input;
    QByteArray m_rest; ///< What came of a line that has not ended.
};

} // namespace korvo::demo
