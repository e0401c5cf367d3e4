#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace korvo {

/// A message bus of one test, on which no service is started by itself, and which may die before the test does.
class PrivateBus {
public:
    /// Also after it was killed: then another one comes up at the same address. False if it doesn't.
    bool start();

    /// As a crash would end it: nobody is told goodbye. False if it doesn't end.
    bool kill();

    /// Without the bus's own mark, as desktops give it, so that the next bus there is as good.
    QString address() const;

private:
    const QTemporaryDir m_folder; // Outlives the bus, which removes its socket.
    QProcess m_daemon;
};

} // namespace korvo
