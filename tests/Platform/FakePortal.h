#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

namespace korvo {

/// A desktop portal with global shortcuts, on a connection of its own, that answers as a test wants it to.
class FakePortal final : public QDBusVirtualObject {
public:
    enum class Reply {
        yes,
        refused,
        ended,
        nothingBound,
        anotherBound,
        misshapen,
        never,  ///< A reply to the call, but no answer.
        silent, ///< Not even a reply.
        error,
    };

    explicit FakePortal(const QString &address = {}); ///< Of its bus; that of the session if it is empty.
    ~FakePortal() override;

    /// Comes on the bus, and goes from it.
    bool start();
    void stop();

    void activate(const QString &session, const QString &id);
    void closeSession(const QString &session);

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &) const override { return {}; }

    bool hasShortcuts = true;            ///< Else it is a portal without that interface.
    bool isAnsweringLate = false;        ///< The answer comes behind the reply, which is what portals mostly do.
    bool isNamingSessionsItself = false; ///< The session is not where the program's token would have it.
    Reply onCreate = Reply::yes;
    Reply onBind = Reply::yes;
    QStringList calls;    ///< The methods called, in order.
    QString session;      ///< The path of the last one.
    QVariantMap shortcut; ///< What the program told of its shortcut, its identifier under "id".
    QStringList openSessions;

private:
    void answer(const QDBusMessage &message, Reply reply, const QVariantMap &results);

    QDBusConnection m_bus;
};

} // namespace korvo
