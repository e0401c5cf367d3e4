#include "Platform/Freedesktop/StatusNotifierRegistration.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr auto watcherName = "org.kde.StatusNotifierWatcher"_L1; // Also the name of its interface.
constexpr auto watcherPath = "/StatusNotifierWatcher"_L1;
constexpr auto busName = "org.freedesktop.DBus"_L1;
constexpr auto busPath = "/org/freedesktop/DBus"_L1;

const QStringList &indicatorNames()
{
    static const QStringList names{u"org.ayatana.indicator.application"_s, u"com.canonical.indicator.application"_s};
    return names;
}

QDBusMessage busCall(const QString &member, const QVariantList &arguments)
{
    auto call = QDBusMessage::createMethodCall(busName, busPath, busName, member);
    call.setArguments(arguments);
    return call;
}

} // namespace

StatusNotifierRegistration::StatusNotifierRegistration(QDBusConnection connection, QString itemName, QObject *parent) :
    QObject(parent),
    m_connection(std::move(connection)),
    m_itemName(std::move(itemName))
{
    if (!m_connection.isConnected()) {
        m_isWatcherKnown = true;
        m_state = State::absent;
        return;
    }
    m_connection.connect({}, u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s, this,
                         SLOT(receiveDisconnected()));

    // Of any sender: to name one would make Qt ask the bus for its owner, and wait.
    for (const auto &signal : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s})
        m_connection.connect({}, watcherPath, watcherName, signal, this, SLOT(askForHost()));

    auto *owners = new QDBusServiceWatcher(this);
    owners->setConnection(m_connection);
    owners->setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    owners->setWatchedServices(QStringList(watcherName) + indicatorNames());
    connect(owners, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &name, const QString &, const QString &owner) {
                name == watcherName ? setWatcher(owner) : setIndicator(name, owner);
            });

    // Nobody has to call the item by its name, but some trays insist on one of this form. A sandbox may refuse it, and two of
    // them may want the same, each with process numbers of its own; then the connection's own name has to do. The bus
    // answers this before it tells of the watcher.
    ask(busCall(u"RequestName"_s, {m_itemName, 4U /* Don't queue. */}), [this](const QDBusPendingReply<uint> &reply) {
        if (reply.isError() || reply.value() != 1U /* Owner. */)
            m_itemName = m_connection.baseService();
    });
    for (const QString &name : indicatorNames()) {
        ask(busCall(u"GetNameOwner"_s, {name}), [this, name](const QDBusPendingReply<QString> &reply) {
            if (!reply.isError())
                setIndicator(name, reply.value());
        });
    }
    ask(busCall(u"GetNameOwner"_s, {watcherName}),
        [this](const QDBusPendingReply<QString> &reply) { setWatcher(reply.isError() ? QString() : reply.value()); });
}

/// Sends `call` and hands its reply to `receive`, unless this object has gone by then.
template <typename Receive> void StatusNotifierRegistration::ask(const QDBusMessage &call, Receive receive)
{
    auto *pending = new QDBusPendingCallWatcher(m_connection.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [pending, receive] {
        pending->deleteLater();
        receive(*pending);
    });
}

void StatusNotifierRegistration::setWatcher(const QString &owner)
{
    if (m_isWatcherKnown && owner == m_watcher)
        return;
    m_isWatcherKnown = true;
    m_watcher = owner;
    m_isRegistered = m_isRefused = m_isHostKnown = m_hasHost = false;
    if (!m_watcher.isEmpty()) {
        registerItem();
        askForHost();
    }
    update();
}

void StatusNotifierRegistration::setIndicator(const QString &name, const QString &owner)
{
    if (m_indicators.value(name) == owner)
        return;
    if (owner.isEmpty())
        m_indicators.remove(name);
    else
        m_indicators.insert(name, owner);
    emit indicatorServicesChanged();
}

void StatusNotifierRegistration::registerItem()
{
    auto call = QDBusMessage::createMethodCall(m_watcher, watcherPath, watcherName, u"RegisterStatusNotifierItem"_s);
    call << m_itemName;
    ask(call, [this, watcher = m_watcher](const QDBusPendingReply<> &reply) {
        if (watcher != m_watcher)
            return;
        m_isRegistered = !reply.isError();
        m_isRefused = reply.isError();
        update();
    });
}

void StatusNotifierRegistration::askForHost()
{
    if (m_watcher.isEmpty())
        return;
    auto call = QDBusMessage::createMethodCall(m_watcher, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    call << watcherName << u"IsStatusNotifierHostRegistered"_s;
    ask(call, [this, watcher = m_watcher](const QDBusPendingReply<QVariant> &reply) {
        if (watcher != m_watcher)
            return;
        const bool hasLackedHost = m_isHostKnown && !m_hasHost;
        m_isHostKnown = true;
        m_hasHost = reply.isError() || reply.value().toBool(); // Some keep silent about it.
        if (hasLackedHost && m_hasHost && m_isRefused) {
            m_isRefused = false;
            registerItem(); // Now that there is somebody to show it.
        }
        update();
    });
}

void StatusNotifierRegistration::receiveDisconnected()
{
    setWatcher({});
    emit disconnected();
}

void StatusNotifierRegistration::update()
{
    State state = State::asking;
    if (!m_isWatcherKnown)
        state = State::asking;
    else if (m_watcher.isEmpty() || (m_isHostKnown && !m_hasHost))
        state = State::absent;
    else if (m_isRefused)
        state = State::refused;
    else if (m_isRegistered && m_isHostKnown)
        state = State::shown;
    if (std::exchange(m_state, state) != state)
        emit stateChanged();
}

} // namespace korvo
