#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace korvo {

/// The program as it is installed, in a real tray, with a home folder of its own.
class ShippedKorvo {
public:
    static constexpr int patience = 20000; ///< Milliseconds.

    ShippedKorvo();
    ~ShippedKorvo() { end(); }
    Q_DISABLE_COPY_MOVE(ShippedKorvo)

    /// Puts these bytes where the program keeps its settings. False if that fails.
    bool writeSettings(const QByteArray &json);

    /// Sets a variable of the environment that it will start in.
    void setVariable(const QString &name, const QString &value) { m_environment.insert(name, value); }

    /// The folder of state that it has been told of; empty if it can keep no log. Else that is below its home folder.
    void setLogFolder(const QString &state) { m_state = state; }

    /// Starts it, and waits until it has launched and the tray has its item. False if it doesn't come up.
    bool start();

    /// Ends it, and waits until the tray has seen it go. False if the tray goes on showing it.
    bool end();

    QStringList log() const; ///< Its messages with their level, without the time.

    QProcess &process() { return m_process; }
    const QProcessEnvironment &environment() const { return m_environment; }
    const QString &item() const { return m_item; } ///< The bus name of the tray's item.

private:
    QTemporaryDir m_home;
    QString m_state = m_home.filePath(QStringLiteral(".local/state"));
    QProcessEnvironment m_environment;
    QProcess m_process;
    QString m_item;
};

} // namespace korvo
