#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace korvo {

/// A message bus of one test, on which no service is started by itself, and which may die before the test does.
class PrivateBus {
public:
    /// False if it doesn't come up.
    bool start();

    /// As a crash would end it: nobody is told goodbye. False if it doesn't end.
    bool kill();

    QString address() const { return m_address; }

private:
    const QTemporaryDir m_folder; // Outlives the bus, which removes its socket.
    QString m_address;
    QProcess m_daemon;
};

} // namespace korvo
