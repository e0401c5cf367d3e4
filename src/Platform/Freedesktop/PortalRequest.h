#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

class QDBusMessage;

namespace korvo {

/// One question to the desktop portal, whose answer comes later in a signal of its own. Deleted, it tells nothing more.
/// Source: org.freedesktop.portal.Request, portals from 0.9 on.
class PortalRequest : public QObject {
    Q_OBJECT
public:
    static QString service() { return QStringLiteral("org.freedesktop.portal.Desktop"); }
    static QString path() { return QStringLiteral("/org/freedesktop/portal/desktop"); }

    explicit PortalRequest(const QDBusConnection &bus, QObject *parent = nullptr);

    /// To be given to the portal as option "handle_token".
    QString token() const { return m_token; }

    /// Calls a method of the portal that has the option "handle_token". Once only.
    void send(const QDBusMessage &call);

    /// Takes a question back that has no answer yet.
    void close();

    /// The caller's part of the object paths that belong to it: of ":1.42" it is "1_42".
    static QString callerPart(const QDBusConnection &bus);

    /// A name for a handle, another at each call.
    static QString newToken();

signals:
    /// The answer: 0 for yes, 1 if the user refused, 2 if it ended in some other way.
    void answered(uint code, const QVariantMap &results);

    /// There is no portal, or it knows no such question.
    void failed();

private:
    Q_SLOT void handleResponse(uint code, const QVariantMap &results);
    void fail();

    QDBusConnection m_bus;
    const QString m_token;
    QString m_handle; ///< The object that answers, as the portal makes it of caller and token.
    bool m_isDone = false;
};

} // namespace korvo
