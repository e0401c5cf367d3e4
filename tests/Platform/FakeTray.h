#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QObject>
#include <QStringList>

namespace korvo {

/// A tray on the session bus in one: the watcher where items register, and a host that reads them. On a connection of
/// its own, so that the item sees another program.
class FakeTray final : public QDBusVirtualObject {
    Q_OBJECT
public:
    explicit FakeTray(bool isOwner = true); ///< Owns the watcher's name from the start, or does not.
    ~FakeTray() override;

    void ownWatcherName();
    void releaseWatcherName();
    bool ownName(const QString &name);

    /// Whether items have somebody to show them; tells those who listen.
    void setHost(bool hasHost);

    /// Calls the object at `path` of the last item that registered, or of `service`, and waits for the answer.
    QDBusMessage call(const QString &path, const QString &interface, const QString &member,
                      const QVariantList &arguments = {});
    QVariant itemProperty(const QString &name);
    QVariantMap itemProperties();

    /// Waits until all that has been sent before has arrived.
    void synchronize();

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

    bool isRefusing = false;
    bool hasHost = true;
    bool isSilentAboutHosts = false; ///< Does not know the property that tells of hosts.
    QString service;                 ///< Whom `call` calls.
    QStringList registered;          ///< What items gave as their names, in order.
    QList<QDBusMessage> received;    ///< Signals of items and of their menus, in order.
    QStringList receivedNames() const;

private slots:
    void receive(const QDBusMessage &signal);

private:
    QString m_connectionName;
    QDBusConnection m_connection;
};

} // namespace korvo
