#include "Platform/Freedesktop/PortalKeyGrabber.h"

#include "Platform/Freedesktop/PortalRequest.h"
#include "Platform/HotkeyModifiers.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QStringList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

/// The structure (sa{sv}) of the portal.
struct Shortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Shortcut &shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Shortcut &shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

const auto shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const auto sessionInterface = u"org.freedesktop.portal.Session"_s;
const auto shortcutId = u"quick-add"_s;

/// Whether the portal's list of what it bound has our shortcut.
bool isBound(const QVariantMap &results)
{
    const auto list = results.value(u"shortcuts"_s).value<QDBusArgument>();
    if (list.currentSignature() != "a(sa{sv})"_L1)
        return false;
    const auto shortcuts = qdbus_cast<QList<Shortcut>>(list);
    return std::any_of(shortcuts.begin(), shortcuts.end(), [](const Shortcut &one) { return one.id == shortcutId; });
}

} // namespace

PortalKeyGrabber::PortalKeyGrabber(KeysymName keysymName, const QDBusConnection &bus, QObject *parent) :
    KeyGrabber(parent),
    m_keysymName(std::move(keysymName)),
    m_bus(bus)
{
    qRegisterMetaType<QDBusObjectPath>(); // Else QtDBus may not know it yet, and refuses the slot for Activated.
    qDBusRegisterMetaType<Shortcut>();
    qDBusRegisterMetaType<QList<Shortcut>>();
    if (!m_bus.isConnected())
        return;
    connect(
        &m_portal, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &oldOwner, const QString &newOwner) { handleOwner(oldOwner, newOwner); });
    m_portal.setConnection(m_bus);
    m_portal.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_portal.addWatchedService(PortalRequest::service());
    // Whoever is the first to subscribe to signals of a service makes QtDBus ask for its owner, and where the bus has
    // died meanwhile that question aborts the program. So one subscription is there from the beginning to the end.
    m_bus.connect(PortalRequest::service(), PortalRequest::path(), shortcutsInterface, u"Activated"_s, this,
                  SLOT(handleActivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    // No message of the bus, but one that the connection itself delivers when it has lost the bus.
    m_bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s, this,
                  SLOT(handleDisconnected()));
}

PortalKeyGrabber::~PortalKeyGrabber()
{
    uninstall();
}

int PortalKeyGrabber::install()
{
    m_isInstalled = true;
    return ok;
}

void PortalKeyGrabber::uninstall()
{
    ungrab();
    m_isInstalled = false;
}

int PortalKeyGrabber::grab(quint32 keyCode, quint32 modifiers)
{
    ungrab();
    if (!m_bus.isConnected())
        return notSupported; // A connection that has lost its bus finds no other.
    m_isWanted = true;
    m_hasFailed = false;
    m_keyCode = keyCode;
    m_modifiers = modifiers;
    createSession();
    return ok;
}

void PortalKeyGrabber::ungrab()
{
    m_isWanted = false;
    if (m_request)
        m_request->close();
    dropRequest();
    closeSession();
}

void PortalKeyGrabber::fail(int status)
{
    m_hasFailed = true;
    emit failed(status);
}

/// The session, or the question that was to lead to it, ended without us.
void PortalKeyGrabber::lose()
{
    dropRequest();
    forgetSession();
    fail(serviceLost);
}

void PortalKeyGrabber::createSession()
{
    auto *const request = newRequest(&PortalKeyGrabber::handleSession);
    const auto token = PortalRequest::newToken();
    m_session = PortalRequest::path() + u"/session/"_s + PortalRequest::callerPart(m_bus) + u'/' + token;
    auto call = QDBusMessage::createMethodCall(PortalRequest::service(), PortalRequest::path(), shortcutsInterface,
                                               u"CreateSession"_s);
    call << QVariantMap{{u"handle_token"_s, request->token()}, {u"session_handle_token"_s, token}};
    request->send(call);
}

void PortalKeyGrabber::handleSession(uint code, const QVariantMap &results)
{
    dropRequest();
    const auto handle = results.value(u"session_handle"_s).toString(); // A string there, not an object path.
    if (code != 0 || handle.isEmpty()) {
        m_isWanted = false;
        m_session.clear();
        fail(code != 0 ? int(code) : int(notBound));
        return;
    }
    m_session = handle;
    m_bus.connect(PortalRequest::service(), m_session, sessionInterface, u"Closed"_s, this, SLOT(handleClosed()));
    bindShortcuts();
}

void PortalKeyGrabber::bindShortcuts()
{
    auto *const request = newRequest(&PortalKeyGrabber::handleShortcuts);
    QVariantMap properties{{u"description"_s, tr("Create a task and start its timer")}};
    const auto preferred = trigger(m_modifiers, m_keysymName(m_keyCode));
    if (!preferred.isEmpty())
        properties.insert(u"preferred_trigger"_s, preferred);
    auto call = QDBusMessage::createMethodCall(PortalRequest::service(), PortalRequest::path(), shortcutsInterface,
                                               u"BindShortcuts"_s);
    call << QDBusObjectPath(m_session) << QVariant::fromValue(QList<Shortcut>{{shortcutId, properties}})
         << QString() // No window that the portal's dialog would belong to.
         << QVariantMap{{u"handle_token"_s, request->token()}};
    request->send(call);
}

void PortalKeyGrabber::handleShortcuts(uint code, const QVariantMap &results)
{
    dropRequest();
    if (code == 0 && isBound(results)) {
        if (std::exchange(m_hasFailed, false))
            emit grabbed();
        return;
    }
    m_isWanted = false;
    closeSession();
    fail(code != 0 ? int(code) : int(notBound));
}

PortalRequest *PortalKeyGrabber::newRequest(Answer answer)
{
    m_request = new PortalRequest(m_bus, this);
    connect(m_request, &PortalRequest::answered, this, answer);
    connect(m_request, &PortalRequest::failed, this, [this] {
        dropRequest();
        closeSession();
        fail(m_bus.isConnected() ? notSupported : serviceLost); // Without a bus nothing would have been asked.
    });
    return m_request;
}

void PortalKeyGrabber::dropRequest()
{
    if (!m_request)
        return;
    m_request->disconnect(this);
    m_request->deleteLater();
    m_request.clear();
}

void PortalKeyGrabber::forgetSession()
{
    if (!m_session.isEmpty())
        m_bus.disconnect(PortalRequest::service(), m_session, sessionInterface, u"Closed"_s, this,
                         SLOT(handleClosed()));
    m_session.clear();
}

/// Also one that the portal has not told of yet: it reads the questions in their order.
void PortalKeyGrabber::closeSession()
{
    if (m_session.isEmpty())
        return;
    auto call = QDBusMessage::createMethodCall(PortalRequest::service(), m_session, sessionInterface, u"Close"_s);
    call.setAutoStartService(false);
    m_bus.send(call);
    forgetSession();
}

void PortalKeyGrabber::handleActivated(const QDBusObjectPath &session, const QString &id, qulonglong,
                                       const QVariantMap &)
{
    if (m_isInstalled && session.path() == m_session && id == shortcutId)
        emit pressed();
}

void PortalKeyGrabber::handleClosed()
{
    lose();
}

void PortalKeyGrabber::handleDisconnected()
{
    m_isWanted = false;
    if (!m_session.isEmpty()) // Else there was none, or the open question has failed with the bus already.
        lose();
}

/// With a portal go its sessions; the next one is asked again.
void PortalKeyGrabber::handleOwner(const QString &oldOwner, const QString &newOwner)
{
    if (!m_isWanted)
        return;
    if (!oldOwner.isEmpty() && !m_session.isEmpty())
        lose();
    if (m_isWanted && !newOwner.isEmpty() && m_session.isEmpty())
        createSession();
}

QString PortalKeyGrabber::trigger(quint32 modifiers, const QString &keysym)
{
    if (keysym.isEmpty())
        return {};
    QStringList parts;
    if (modifiers & hotkeyModifier::control)
        parts.append(u"CTRL"_s);
    if (modifiers & hotkeyModifier::option)
        parts.append(u"ALT"_s);
    if (modifiers & hotkeyModifier::command)
        parts.append(u"LOGO"_s);
    if (modifiers & hotkeyModifier::shift)
        parts.append(u"SHIFT"_s);
    parts.append(keysym);
    return parts.join(u'+');
}

} // namespace korvo
