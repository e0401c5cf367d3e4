#pragma once

#include "Services/CurlTransport.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace korvo {

/// Korvo as a user has it, in a real tray and over TLS, with a sample workspace in another process.
class AttachedKorvo {
public:
    static constexpr int patience = 20000; ///< Milliseconds for what takes some polls.

    AttachedKorvo() = default;
    ~AttachedKorvo(); ///< Ends both.
    Q_DISABLE_COPY_MOVE(AttachedKorvo)

    /// Starts a sample workspace. False if it doesn't come up.
    bool startWorkspace();

    /// Tells Korvo of another workspace than it is.
    void describeWorkspace(const QJsonObject &workspace);

    /// Starts Korvo, and waits until the tray has its item. False if it has none.
    bool startKorvo(double pollSeconds = 1);

    /// Starts Korvo with a workspace in the same process instead, and a session bus at that address. False if it doesn't
    /// come up, whether or not in a tray.
    bool startDemo(const QString &busAddress);

    /// Has the demonstration act as its user would: one of the lines that it reads.
    void tell(const QString &line);

    /// Asks the workspace's control path; the JSON that it answers.
    QJsonDocument control(const QByteArray &method, const QString &path, const QJsonObject &body = {});

    /// The name of the task that runs in the workspace; several are joined by "|".
    QString runningTask();

    QStringList arguments; ///< More of Korvo's command line.

    bool isInTray() const;
    QString property(const QString &name) const; ///< Of the tray's item.
    int seconds() const;                         ///< That the label shows; -1 without a clock.
    QString log() const;
    QString filePath(const QString &name) const { return m_folder.filePath(name); } ///< In its XDG folders.

    const QJsonObject &workspace() const { return m_workspace; }
    const QString &item() const { return m_item; } ///< The bus name of the tray's item.
    QProcess &process() { return *m_korvo; }

private:
    /// Reads the line by which a workspace tells how it is reached.
    bool readWorkspace(QProcess &process);
    QProcessEnvironment environment() const;

    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_sandbox;
    std::unique_ptr<QProcess> m_korvo;
    QJsonObject m_workspace;
    CurlTransport m_transport;
    QString m_item;
};

/// Runs the tests of `test` with the system's clock.
int runWithSystemClock(QObject &test, int argc, char **argv);

} // namespace korvo
