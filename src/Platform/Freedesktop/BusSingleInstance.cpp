#include "Platform/Freedesktop/BusSingleInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QVariantMap>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace korvo {

namespace {

const auto serviceName = u"com.korvo.app"_s;
const auto objectPath = u"/com/korvo/app"_s;
const auto applicationInterface = u"org.freedesktop.Application"_s;

/// Whoever is asked may hang; the second start ends all the same.
constexpr std::chrono::milliseconds activationTimeout = 2s;

/// An owner that goes between two questions leaves the name to us.
constexpr int attemptCount = 3;

enum class Activation { done, ownerGone };

Activation activateOwner(const QDBusConnection &bus)
{
    auto call = QDBusMessage::createMethodCall(serviceName, objectPath, applicationInterface, u"Activate"_s);
    call.setAutoStartService(false);
    call << QVariantMap();
    const auto reply = bus.call(call, QDBus::Block, int(activationTimeout.count()));
    const bool isGone = reply.type() == QDBusMessage::ErrorMessage
        && (QDBusError(reply).type() == QDBusError::ServiceUnknown
            || reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1);
    return isGone ? Activation::ownerGone : Activation::done;
}

} // namespace

/// What others on the bus find under the name.
class BusSingleInstance::Object final : public QDBusVirtualObject {
public:
    Object(QDBusConnection bus, BusSingleInstance &owner) : m_bus(std::move(bus)), m_owner(owner)
    {
        m_isThere = m_bus.registerVirtualObject(objectPath, this);
    }
    ~Object() override { withdraw(); }

    void withdraw()
    {
        if (std::exchange(m_isThere, false))
            m_bus.unregisterObject(objectPath);
    }

    bool takeName() { return m_hasName = m_bus.registerService(serviceName); }
    void giveNameBack()
    {
        if (m_hasName)
            m_bus.unregisterService(serviceName);
    }

    QString introspect(const QString &path) const override
    {
        if (path != objectPath)
            return {};
        return uR"(  <interface name="org.freedesktop.Application">
    <method name="Activate"><arg name="platform_data" type="a{sv}" direction="in"/></method>
    <method name="Open">
      <arg name="uris" type="as" direction="in"/><arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg name="action_name" type="s" direction="in"/><arg name="parameter" type="av" direction="in"/>
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
  </interface>
)"_s;
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.interface() != applicationInterface && !message.interface().isEmpty())
            return false; // Introspection and the like. A call may also leave the interface out.
        if (message.member() == "Activate"_L1 && message.signature() == "a{sv}"_L1) {
            answer(message, message.createReply(), connection);
            emit m_owner.activationRequested(); // The last thing: who is told may end the program.
            return true;
        }
        const bool isKnown = (message.member() == "Open"_L1 && message.signature() == "asa{sv}"_L1)
            || (message.member() == "ActivateAction"_L1 && message.signature() == "sava{sv}"_L1);
        if (!isKnown) {
            answer(message, message.createErrorReply(QDBusError::UnknownMethod, u"No such method"_s), connection);
            return true;
        }
        answer(message,
               message.createErrorReply(QDBusError::NotSupported, u"Korvo opens no files and has no actions"_s),
               connection);
        return true;
    }

private:
    static void answer(const QDBusMessage &call, const QDBusMessage &reply, const QDBusConnection &connection)
    {
        if (call.isReplyRequired())
            connection.send(reply);
    }

    QDBusConnection m_bus;
    BusSingleInstance &m_owner;
    bool m_hasName = false;
    bool m_isThere = false; ///< At its path on the bus.
};

BusSingleInstance::BusSingleInstance(Bus bus, QObject *parent) : SingleInstance(parent), m_bus(bus) { }

BusSingleInstance::~BusSingleInstance()
{
    if (m_object)
        m_object->giveNameBack();
}

void BusSingleInstance::release()
{
    if (!m_object)
        return;
    m_object->giveNameBack();
    // Not at once: an activation that is being handled may have led here. Nobody finds it by the name any more.
    m_object->withdraw();
    m_object.release()->deleteLater();
}

void BusSingleInstance::claimAgain()
{
    if (!m_object)
        return;
    m_object.reset();
    claim();
}

bool BusSingleInstance::claim()
{
    if (m_object)
        return true;
    const auto bus = m_bus();
    if (!bus.isConnected())
        return true;
    // It answers before it has the name, or the first question could find nobody.
    auto object = std::make_unique<Object>(bus, *this);
    for (int attempt = 0; attempt < attemptCount; ++attempt) {
        if (object->takeName()) {
            m_object = std::move(object);
            return true;
        }
        if (!bus.isConnected())
            return true;
        if (activateOwner(bus) == Activation::done)
            return false;
    }
    return true; // Nobody can tell.
}

} // namespace korvo
