#include "Platform/Freedesktop/DesktopNotifications.h"

#include "Platform/Freedesktop/PortalRequest.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QStringList>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr uchar normalUrgency = 1;
constexpr int expiresAsTheServerLikes = -1;
const auto programId = u"com.korvo.app"_s;

QDBusMessage callOfService(const QString &method)
{
    const auto service = u"org.freedesktop.Notifications"_s;
    return QDBusMessage::createMethodCall(service, u"/org/freedesktop/Notifications"_s, service, method);
}

/// Whether nobody has that service, nobody could be started to have it, or a sandbox keeps it from us.
bool isMissing(const QDBusError &error)
{
    return error.type() == QDBusError::ServiceUnknown || error.type() == QDBusError::AccessDenied
        || error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1
        || error.name().startsWith("org.freedesktop.DBus.Error.Spawn."_L1);
}

/// Whether the question itself is what the service does not know, which leaves the service usable.
bool isUnknownMethod(const QDBusError &error)
{
    return error.type() == QDBusError::UnknownMethod || error.type() == QDBusError::UnknownInterface;
}

/// An icon as portals read it, (sv): its kind, and what that kind needs.
struct SerializedIcon {
    QString kind;
    QDBusVariant value;
};

QDBusArgument &operator<<(QDBusArgument &argument, const SerializedIcon &icon)
{
    argument.beginStructure();
    argument << icon.kind << icon.value;
    argument.endStructure();
    return argument;
}

/// For QtDBus, which registers both directions or none.
const QDBusArgument &operator>>(const QDBusArgument &argument, SerializedIcon &icon)
{
    argument.beginStructure();
    argument >> icon.kind >> icon.value;
    argument.endStructure();
    return argument;
}

} // namespace

DesktopNotifications::DesktopNotifications(Bus bus, QObject *parent) : QObject(parent), m_bus(bus) { }

void DesktopNotifications::add(const Notification &notification)
{
    const auto bus = m_bus();
    if (!bus.isConnected())
        return;
    // Asked each time: another service may have taken the place of the last one.
    auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(callOfService(u"GetCapabilities"_s)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, bus, notification, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QStringList> reply = *watcher;
        if (!reply.isError())
            notify(bus, notification, reply.value().contains("body-markup"_L1));
        else if (isMissing(reply.error()))
            addToPortal(bus, notification);
        else if (isUnknownMethod(reply.error()))
            notify(bus, notification, false);
    });
}

void DesktopNotifications::notify(const QDBusConnection &bus, const Notification &notification, bool hasBodyMarkup)
{
    QVariantMap hints{{u"desktop-entry"_s, programId}, {u"urgency"_s, QVariant::fromValue(normalUrgency)}};
    if (notification.hasDefaultSound)
        hints.insert(u"sound-name"_s, u"message-new-instant"_s);
    auto call = callOfService(u"Notify"_s);
    call << u"Korvo"_s << 0u // Replaces no other.
         << programId << notification.title << (hasBodyMarkup ? notification.body.toHtmlEscaped() : notification.body)
         << QStringList() // No actions.
         << hints << expiresAsTheServerLikes;
    auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [bus, notification, watcher] {
        watcher->deleteLater();
        if (watcher->isError() && isMissing(watcher->error()))
            addToPortal(bus, notification); // The service went in between.
    });
}

void DesktopNotifications::addToPortal(const QDBusConnection &bus, const Notification &notification)
{
    qDBusRegisterMetaType<SerializedIcon>();
    const SerializedIcon icon{u"themed"_s, QDBusVariant(QStringList(programId))}; // By its name in the icon theme.
    auto call = QDBusMessage::createMethodCall(PortalRequest::service(), PortalRequest::path(),
                                               u"org.freedesktop.portal.Notification"_s, u"AddNotification"_s);
    call << notification.identifier
         << QVariantMap{{u"title"_s, notification.title},
                        {u"body"_s, notification.body},
                        {u"icon"_s, QVariant::fromValue(icon)},
                        {u"priority"_s, u"normal"_s}};
    bus.send(call);
}

} // namespace korvo
