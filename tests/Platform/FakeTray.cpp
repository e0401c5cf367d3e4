#include "FakeTray.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusReply>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr auto watcherName = "org.kde.StatusNotifierWatcher"_L1;
constexpr auto watcherPath = "/StatusNotifierWatcher"_L1;
constexpr auto itemInterface = "org.kde.StatusNotifierItem"_L1;
constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties"_L1;

QString nextConnectionName()
{
    static int count = 0;
    return u"fake-tray-%1"_s.arg(++count);
}

} // namespace

FakeTray::FakeTray(bool isOwner) :
    m_connectionName(nextConnectionName()),
    m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName))
{
    m_connection.registerVirtualObject(watcherPath, this);
    for (const auto &interface : {u"org.kde.StatusNotifierItem"_s, u"com.canonical.dbusmenu"_s})
        m_connection.connect({}, {}, interface, {}, this, SLOT(receive(QDBusMessage)));
    if (isOwner)
        ownWatcherName();
}

FakeTray::~FakeTray()
{
    m_connection.unregisterObject(watcherPath);
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void FakeTray::ownWatcherName()
{
    ownName(watcherName);
}

void FakeTray::releaseWatcherName()
{
    m_connection.unregisterService(watcherName);
}

bool FakeTray::ownName(const QString &name)
{
    return m_connection.registerService(name);
}

void FakeTray::setHost(bool newHasHost)
{
    hasHost = newHasHost;
    m_connection.send(QDBusMessage::createSignal(
        watcherPath, watcherName, hasHost ? u"StatusNotifierHostRegistered"_s : u"StatusNotifierHostUnregistered"_s));
}

QDBusMessage FakeTray::call(const QString &path, const QString &interface, const QString &member,
                            const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, member);
    message.setArguments(arguments);
    return m_connection.call(message, QDBus::BlockWithGui); // The item lives in this very thread.
}

QVariant FakeTray::itemProperty(const QString &name)
{
    const auto reply = call(u"/StatusNotifierItem"_s, propertiesInterface, u"Get"_s, {itemInterface, name});
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0).value<QDBusVariant>().variant()
                                                      : QVariant();
}

QVariantMap FakeTray::itemProperties()
{
    const QDBusReply<QVariantMap> reply
        = call(u"/StatusNotifierItem"_s, propertiesInterface, u"GetAll"_s, {itemInterface});
    return reply.value();
}

void FakeTray::synchronize()
{
    // The answer comes after all that was sent before it; what it has overtaken stands in the queue of events.
    call(u"/"_s, u"org.freedesktop.DBus.Peer"_s, u"Ping"_s);
    QCoreApplication::sendPostedEvents();
}

QStringList FakeTray::receivedNames() const
{
    QStringList names;
    for (const QDBusMessage &signal : received)
        names.append(signal.member());
    return names;
}

QString FakeTray::introspect(const QString &) const
{
    return {};
}

bool FakeTray::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.member() == "RegisterStatusNotifierItem"_L1) {
        registered.append(message.arguments().value(0).toString());
        service = message.service();
        m_connection.send(isRefusing ? message.createErrorReply(QDBusError::AccessDenied, u"No"_s)
                                     : message.createReply());
        return true;
    }
    if (message.interface() == propertiesInterface && message.member() == "Get"_L1 && !isSilentAboutHosts) {
        m_connection.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
        return true;
    }
    return false;
}

void FakeTray::receive(const QDBusMessage &signal)
{
    received.append(signal);
}

} // namespace korvo
