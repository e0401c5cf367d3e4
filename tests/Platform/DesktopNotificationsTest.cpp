#include "Platform/Freedesktop/DesktopNotifications.h"

#include "PrivateBus.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const Notification reminder{
    .identifier = u"timerReminder-42"_s, .title = u"Timer Running"_s, .body = u"Over 8 hours: \"A & B\" <c>"_s};

/// One object on a bus connection of its own that keeps what it is asked for.
class FakeService : public QDBusVirtualObject {
public:
    FakeService(const QString &service, const QString &path, const QString &connection, const QString &address = {}) :
        m_service(service),
        m_path(path),
        m_connection(connection),
        m_bus(address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection)
                                : QDBusConnection::connectToBus(address, connection))
    {
        m_bus.registerVirtualObject(path, this);
    }
    ~FakeService() override
    {
        stop();
        m_bus.unregisterObject(m_path);
        QDBusConnection::disconnectFromBus(m_connection);
    }

    bool start() { return m_bus.registerService(m_service); }
    void stop() { m_bus.unregisterService(m_service); }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        calls.append(message);
        if (isGoingWhenAsked)
            stop();
        if (isSilent)
            return true;
        if (message.member() == "GetCapabilities"_L1 && !error.isEmpty())
            m_bus.send(message.createErrorReply(error, u"No"_s));
        else if (message.member() == "GetCapabilities"_L1)
            m_bus.send(message.createReply(capabilities));
        else
            m_bus.send(message.createReply(7u));
        return true;
    }
    QString introspect(const QString &) const override { return {}; }

    QStringList members() const
    {
        QStringList members;
        for (const auto &call : calls)
            members.append(call.member());
        return members;
    }

    QStringList capabilities{u"body"_s};
    QString error;                 ///< The answer to the question for its capabilities.
    bool isSilent = false;         ///< It answers nothing.
    bool isGoingWhenAsked = false; ///< It leaves the bus, but for the answer.
    QList<QDBusMessage> calls;

private:
    const QString m_service;
    const QString m_path;
    const QString m_connection;
    QDBusConnection m_bus;
};

QVariantMap mapOf(const QVariant &argument)
{
    return qdbus_cast<QVariantMap>(argument.value<QDBusArgument>());
}

} // namespace

class DesktopNotificationsTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void theServiceIsToldEverything();
    void withoutASoundThereIsNoSoundHint();
    void theBodyIsEscapedOnlyForAServiceThatReadsMarkup_data();
    void theBodyIsEscapedOnlyForAServiceThatReadsMarkup();
    void aServiceWithoutTheQuestionGetsThePlainText_data();
    void aServiceWithoutTheQuestionGetsThePlainText();
    void askingForPermissionAsksNobody();
    void withoutTheServiceThePortalIsTold();
    void aServiceThatIsKeptFromUsIsMissing_data();
    void aServiceThatIsKeptFromUsIsMissing();
    void aServiceThatGoesInBetweenGivesWayToThePortal();
    void aServiceThatFailsIsNotAskedAgain();
    void theServiceIsLookedForEachTime();
    void withoutServiceAndPortalNothingIsKept();
    void withoutABusNothingHappens();
    void aBusThatGoesAwayCrashesNothing();

private:
    static bool isIdle(const DesktopNotifications &notifications) { return notifications.children().isEmpty(); }

    std::unique_ptr<FakeService> m_service;
    std::unique_ptr<FakeService> m_portal;
    std::unique_ptr<DesktopNotifications> m_notifications;
};

void DesktopNotificationsTest::init()
{
    m_service = std::make_unique<FakeService>(u"org.freedesktop.Notifications"_s, u"/org/freedesktop/Notifications"_s,
                                              u"service"_s);
    m_portal = std::make_unique<FakeService>(u"org.freedesktop.portal.Desktop"_s, u"/org/freedesktop/portal/desktop"_s,
                                             u"portal"_s);
    m_notifications = std::make_unique<DesktopNotifications>();
}

void DesktopNotificationsTest::cleanup()
{
    m_notifications.reset();
    m_portal.reset();
    m_service.reset();
}

void DesktopNotificationsTest::theServiceIsToldEverything()
{
    QVERIFY(m_service->start() && m_portal->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_service->members(), QStringList({u"GetCapabilities"_s, u"Notify"_s}));
    const auto &call = m_service->calls.last();
    QCOMPARE(call.interface(), u"org.freedesktop.Notifications"_s);
    QCOMPARE(call.signature(), u"susssasa{sv}i"_s);
    const auto arguments = call.arguments();
    QCOMPARE(arguments.at(0).toString(), u"Korvo"_s);
    QCOMPARE(arguments.at(1).toUInt(), 0u);
    QCOMPARE(arguments.at(2).toString(), u"com.korvo.app"_s);
    QCOMPARE(arguments.at(3).toString(), u"Timer Running"_s);
    QCOMPARE(arguments.at(4).toString(), reminder.body);
    QCOMPARE(arguments.at(5).toStringList(), QStringList());
    const auto hints = mapOf(arguments.at(6));
    QCOMPARE(hints.keys(), QStringList({u"desktop-entry"_s, u"sound-name"_s, u"urgency"_s}));
    QCOMPARE(hints.value(u"desktop-entry"_s).toString(), u"com.korvo.app"_s);
    QCOMPARE(hints.value(u"sound-name"_s).toString(), u"message-new-instant"_s);
    QCOMPARE(hints.value(u"urgency"_s).userType(), int(QMetaType::UChar)); // A byte, or services don't read it.
    QCOMPARE(hints.value(u"urgency"_s).toInt(), 1);
    QCOMPARE(arguments.at(7).toInt(), -1);
    QTRY_VERIFY(isIdle(*m_notifications));
    QVERIFY(m_portal->calls.isEmpty());
}

void DesktopNotificationsTest::withoutASoundThereIsNoSoundHint()
{
    QVERIFY(m_service->start());
    auto silent = reminder;
    silent.hasDefaultSound = false;
    m_notifications->add(silent);
    QTRY_COMPARE(m_service->calls.size(), 2);
    QVERIFY(!mapOf(m_service->calls.last().arguments().at(6)).contains(u"sound-name"_s));
}

void DesktopNotificationsTest::theBodyIsEscapedOnlyForAServiceThatReadsMarkup_data()
{
    QTest::addColumn<QStringList>("capabilities");
    QTest::addColumn<QString>("body");
    QTest::newRow("markup") << QStringList{u"actions"_s, u"body-markup"_s}
                            << u"Over 8 hours: &quot;A &amp; B&quot; &lt;c&gt;"_s;
    QTest::newRow("plain text") << QStringList{u"body"_s, u"body-hyperlinks"_s} << reminder.body;
    QTest::newRow("no capabilities") << QStringList() << reminder.body;
}

void DesktopNotificationsTest::theBodyIsEscapedOnlyForAServiceThatReadsMarkup()
{
    QFETCH(QStringList, capabilities);
    m_service->capabilities = capabilities;
    QVERIFY(m_service->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_service->calls.size(), 2);
    QTEST(m_service->calls.last().arguments().at(4).toString(), "body");
}

void DesktopNotificationsTest::aServiceWithoutTheQuestionGetsThePlainText_data()
{
    QTest::addColumn<QString>("error");
    QTest::newRow("unknown method") << u"org.freedesktop.DBus.Error.UnknownMethod"_s;
    QTest::newRow("unknown interface") << u"org.freedesktop.DBus.Error.UnknownInterface"_s;
}

void DesktopNotificationsTest::aServiceWithoutTheQuestionGetsThePlainText()
{
    QFETCH(QString, error);
    m_service->error = error;
    QVERIFY(m_service->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_service->members(), QStringList({u"GetCapabilities"_s, u"Notify"_s}));
    QCOMPARE(m_service->calls.last().arguments().at(4).toString(), reminder.body);
}

void DesktopNotificationsTest::askingForPermissionAsksNobody()
{
    QVERIFY(m_service->start() && m_portal->start());
    m_notifications->requestAuthorization();
    m_notifications->add(reminder);
    QTRY_COMPARE(m_service->members(), QStringList({u"GetCapabilities"_s, u"Notify"_s}));
    QVERIFY(m_portal->calls.isEmpty());
}

void DesktopNotificationsTest::withoutTheServiceThePortalIsTold()
{
    QVERIFY(m_portal->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_portal->members(), QStringList({u"AddNotification"_s}));
    const auto &call = m_portal->calls.last();
    QCOMPARE(call.interface(), u"org.freedesktop.portal.Notification"_s);
    QCOMPARE(call.signature(), u"sa{sv}"_s);
    QCOMPARE(call.arguments().at(0).toString(), u"timerReminder-42"_s);
    auto members = mapOf(call.arguments().at(1));
    const auto icon = members.take(u"icon"_s).value<QDBusArgument>();
    QCOMPARE(members,
             QVariantMap({{u"title"_s, u"Timer Running"_s}, {u"body"_s, reminder.body}, {u"priority"_s, u"normal"_s}}));
    // A themed icon in the form that icons are sent in, ('themed', <['com.korvo.app']>).
    QCOMPARE(icon.currentSignature(), u"(sv)"_s);
    QString kind;
    QDBusVariant names;
    icon.beginStructure();
    icon >> kind >> names;
    icon.endStructure();
    QCOMPARE(kind, u"themed"_s);
    QCOMPARE(names.variant().userType(), int(QMetaType::QStringList)); // The type "as".
    QCOMPARE(names.variant().toStringList(), QStringList(u"com.korvo.app"_s));
}

void DesktopNotificationsTest::aServiceThatIsKeptFromUsIsMissing_data()
{
    QTest::addColumn<QString>("error");
    QTest::newRow("denied") << u"org.freedesktop.DBus.Error.AccessDenied"_s;
    QTest::newRow("without an owner") << u"org.freedesktop.DBus.Error.NameHasNoOwner"_s;
    QTest::newRow("it could not be started") << u"org.freedesktop.DBus.Error.Spawn.ChildExited"_s;
}

void DesktopNotificationsTest::aServiceThatIsKeptFromUsIsMissing()
{
    QFETCH(QString, error);
    m_service->error = error;
    QVERIFY(m_service->start() && m_portal->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_portal->members(), QStringList({u"AddNotification"_s}));
    QCOMPARE(m_service->members(), QStringList({u"GetCapabilities"_s}));
}

void DesktopNotificationsTest::aServiceThatGoesInBetweenGivesWayToThePortal()
{
    m_service->isGoingWhenAsked = true;
    QVERIFY(m_service->start() && m_portal->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_portal->members(), QStringList({u"AddNotification"_s}));
    QCOMPARE(m_service->members(), QStringList({u"GetCapabilities"_s}));
}

void DesktopNotificationsTest::aServiceThatFailsIsNotAskedAgain()
{
    m_service->error = u"org.freedesktop.DBus.Error.Failed"_s;
    QVERIFY(m_service->start() && m_portal->start());
    m_notifications->add(reminder);
    QVERIFY(!isIdle(*m_notifications));
    QTRY_VERIFY(isIdle(*m_notifications));
    QCOMPARE(m_service->members(), QStringList({u"GetCapabilities"_s}));
    QVERIFY(m_portal->calls.isEmpty());
}

void DesktopNotificationsTest::theServiceIsLookedForEachTime()
{
    QVERIFY(m_portal->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QVERIFY(m_service->start());
    m_notifications->add(reminder);
    QTRY_COMPARE(m_service->calls.size(), 2);
    m_service->stop();
    m_notifications->add(reminder);
    QTRY_COMPARE(m_portal->calls.size(), 2);
    QCOMPARE(m_service->calls.size(), 2);
}

void DesktopNotificationsTest::withoutServiceAndPortalNothingIsKept()
{
    m_notifications->add(reminder);
    QTRY_VERIFY(isIdle(*m_notifications));
    QVERIFY(m_service->start() && m_portal->start());
    auto next = reminder;
    next.title = u"Next"_s;
    m_notifications->add(next);
    QTRY_VERIFY(m_service->members().contains(u"Notify"_s));
    QTRY_VERIFY(isIdle(*m_notifications));
    QCOMPARE(m_service->calls.size(), 2);
    QCOMPARE(m_service->calls.last().arguments().at(3).toString(), u"Next"_s);
    QVERIFY(m_portal->calls.isEmpty());
}

void DesktopNotificationsTest::withoutABusNothingHappens()
{
    DesktopNotifications notifications(
        [] { return QDBusConnection::connectToBus(u"unix:path=/nonexistent"_s, u"none"_s); });
    notifications.requestAuthorization();
    notifications.add(reminder);
    QVERIFY(isIdle(notifications));
    QDBusConnection::disconnectFromBus(u"none"_s);
}

void DesktopNotificationsTest::aBusThatGoesAwayCrashesNothing()
{
    PrivateBus bus;
    QVERIFY(bus.start());
    FakeService service(u"org.freedesktop.Notifications"_s, u"/org/freedesktop/Notifications"_s, u"dying service"_s,
                        bus.address());
    service.isSilent = true;
    QVERIFY(service.start());
    QVERIFY(QDBusConnection::connectToBus(bus.address(), u"dying"_s).isConnected());
    DesktopNotifications notifications([] { return QDBusConnection(u"dying"_s); });
    notifications.add(reminder);
    QTRY_COMPARE(service.calls.size(), 1);
    QVERIFY(bus.kill());
    QTRY_VERIFY(isIdle(notifications)); // The question ends with the bus.
    QTRY_VERIFY(!QDBusConnection(u"dying"_s).isConnected());
    notifications.add(reminder);
    QVERIFY(isIdle(notifications));
    QDBusConnection::disconnectFromBus(u"dying"_s);
}

QTEST_GUILESS_MAIN(DesktopNotificationsTest)
#include "DesktopNotificationsTest.moc"
