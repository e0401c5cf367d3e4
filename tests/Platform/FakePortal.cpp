#include "FakePortal.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

struct BoundShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument &operator<<(QDBusArgument &argument, const BoundShortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, BoundShortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

const auto service = u"org.freedesktop.portal.Desktop"_s;
const auto path = u"/org/freedesktop/portal/desktop"_s;
const auto shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const auto requestInterface = u"org.freedesktop.portal.Request"_s;
const auto sessionInterface = u"org.freedesktop.portal.Session"_s;

QString callerPart(const QDBusMessage &message)
{
    return message.service().mid(1).replace(u'.', u'_');
}

QVariant listOf(const QString &id)
{
    const QVariantMap properties{{u"trigger_description"_s, u"Press something"_s}};
    return QVariant::fromValue(QList<BoundShortcut>{{id, properties}});
}

} // namespace

FakePortal::FakePortal(const QString &address) :
    m_bus(address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s)
                            : QDBusConnection::connectToBus(address, u"portal"_s))
{
    qDBusRegisterMetaType<BoundShortcut>();
    qDBusRegisterMetaType<QList<BoundShortcut>>();
    m_bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
}

FakePortal::~FakePortal()
{
    stop();
    m_bus.unregisterObject(path);
    QDBusConnection::disconnectFromBus(u"portal"_s);
}

bool FakePortal::start()
{
    return m_bus.registerService(service);
}

void FakePortal::stop()
{
    m_bus.unregisterService(service);
    openSessions.clear();
}

bool FakePortal::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    const auto method = message.member();
    if (message.interface() == sessionInterface || message.interface() == requestInterface) {
        calls.append((message.interface() == sessionInterface ? u"Session."_s : u"Request."_s) + method);
        if (message.interface() == sessionInterface)
            openSessions.removeAll(message.path());
        m_bus.send(message.createReply());
        return true;
    }
    if (message.interface() != shortcutsInterface || !hasShortcuts)
        return false;
    calls.append(method);
    const auto options = message.arguments().last().value<QDBusArgument>();
    if (method == "CreateSession"_L1) {
        const auto token = qdbus_cast<QVariantMap>(options).value(u"session_handle_token"_s).toString();
        session = path + u"/session/"_s + callerPart(message) + u'/' + token;
        if (isNamingSessionsItself)
            session += u"_of_the_portal"_s;
        if (onCreate == Reply::yes)
            openSessions.append(session);
        answer(message, onCreate, {{u"session_handle"_s, session}});
        return true;
    }
    if (method == "BindShortcuts"_L1) {
        const auto boundSession = message.arguments().first().value<QDBusObjectPath>().path();
        if (message.signature() != "oa(sa{sv})sa{sv}"_L1 || !openSessions.contains(boundSession)) {
            m_bus.send(message.createErrorReply(QDBusError::AccessDenied, u"Invalid session"_s));
            return true;
        }
        const auto shortcuts = qdbus_cast<QList<BoundShortcut>>(message.arguments().at(1).value<QDBusArgument>());
        shortcut = shortcuts.value(0).properties;
        shortcut.insert(u"id"_s, shortcuts.value(0).id);
        QVariantMap results{{u"shortcuts"_s, listOf(shortcuts.value(0).id)}};
        if (onBind == Reply::nothingBound)
            results.insert(u"shortcuts"_s, QVariant::fromValue(QList<BoundShortcut>()));
        else if (onBind == Reply::anotherBound)
            results.insert(u"shortcuts"_s, listOf(u"another"_s));
        else if (onBind == Reply::misshapen)
            results.insert(u"shortcuts"_s, u"quick-add"_s);
        answer(message, onBind, results);
        return true;
    }
    return false;
}

void FakePortal::answer(const QDBusMessage &message, Reply reply, const QVariantMap &results)
{
    if (reply == Reply::silent)
        return;
    if (reply == Reply::error) {
        m_bus.send(message.createErrorReply(u"org.freedesktop.portal.Error.Failed"_s, u"No"_s));
        return;
    }
    const auto options = qdbus_cast<QVariantMap>(message.arguments().last().value<QDBusArgument>());
    const auto token = options.value(u"handle_token"_s).toString();
    const auto handle = path + u"/request/"_s + callerPart(message) + u'/' + token;

    auto response = QDBusMessage::createTargetedSignal(message.service(), handle, requestInterface, u"Response"_s);
    const auto code = reply == Reply::refused ? 1u : reply == Reply::ended ? 2u : 0u;
    response << code << (code == 0 ? results : QVariantMap());
    const auto handleReply = message.createReply(QVariant::fromValue(QDBusObjectPath(handle)));
    if (isAnsweringLate)
        m_bus.send(handleReply);
    if (reply != Reply::never)
        m_bus.send(response);
    if (!isAnsweringLate)
        m_bus.send(handleReply); // The answer before the reply, which a portal may do.
}

void FakePortal::activate(const QString &sessionPath, const QString &id)
{
    auto signal = QDBusMessage::createSignal(path, shortcutsInterface, u"Activated"_s);
    signal << QDBusObjectPath(sessionPath) << id << qulonglong(1234) << QVariantMap();
    m_bus.send(signal);
}

void FakePortal::closeSession(const QString &sessionPath)
{
    openSessions.removeAll(sessionPath);
    auto signal = QDBusMessage::createSignal(sessionPath, sessionInterface, u"Closed"_s);
    signal << QVariantMap(); // No details.
    m_bus.send(signal);
}

} // namespace korvo
