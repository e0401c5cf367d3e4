#include "Platform/Freedesktop/DBusMenu.h"

#include "FakeTray.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

constexpr auto menuPath = "/MenuBar"_L1;
constexpr auto menuInterface = "com.canonical.dbusmenu"_L1;

/// One entry as a tray reads it.
struct Read {
    int id = 0;
    QVariantMap properties;
    bool operator==(const Read &) const = default;
};

struct Layout {
    uint revision = 0;
    Read root;
    QList<Read> children;
};

/// One of the events that a tray sends together.
struct Event {
    int id = 0;
    QString name;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Event &event)
{
    argument.beginStructure();
    argument << event.id << event.name << QDBusVariant(QString()) << 0U;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Event &event)
{
    QDBusVariant data;
    uint timestamp = 0;
    argument.beginStructure();
    argument >> event.id >> event.name >> data >> timestamp;
    argument.endStructure();
    return argument;
}

Read readItem(const QDBusArgument &argument, QList<Read> *children)
{
    Read item;
    QList<QDBusVariant> variants;
    argument.beginStructure();
    argument >> item.id >> item.properties >> variants;
    argument.endStructure();
    for (const QDBusVariant &variant : std::as_const(variants)) {
        if (children)
            children->append(readItem(variant.variant().value<QDBusArgument>(), nullptr));
    }
    return item;
}

QList<Read> readProperties(const QVariant &value)
{
    QList<Read> items;
    const auto argument = value.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
        Read item;
        argument.beginStructure();
        argument >> item.id >> item.properties;
        argument.endStructure();
        items.append(item);
    }
    argument.endArray();
    return items;
}

} // namespace

class DBusMenuTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void layoutHasAllEntries();
    void layoutOfDepthZeroIsTheRootAlone();
    void layoutHasOnlyThePropertiesAskedFor();
    void anUnderscoreIsShownAsItStands();
    void theSameEntriesAgainAreNoChange();
    void anotherActionIsNoChangeToSee();
    void anotherTextIsToldAsAProperty();
    void enablingRemovesTheProperty();
    void anotherNumberOfEntriesIsANewLayout();
    void aSeparatorInPlaceOfAnEntryIsANewLayout();
    void nobodyIsToldWhileNoTrayIsThere();
    void nobodyIsToldWhoHasNotRead();
    void aClickRunsTheAction();
    void aClickRunsTheNewAction();
    void onlyClicksOnEnabledEntriesRun_data();
    void onlyClicksOnEnabledEntriesRun();
    void anActionMayReplaceTheMenu();
    void severalEventsInOneCall();
    void groupPropertiesLeaveOutUnknownEntries();
    void noGroupMeansAll();
    void onePropertyOfOneEntry();
    void showingNeedsNoUpdate();
    void theMenuTellsItsVersion();
    void whatDoesNotFitIsRefused_data();
    void whatDoesNotFitIsRefused();

private:
    QDBusMessage call(const QString &member, const QVariantList &arguments)
    {
        return m_tray->call(menuPath, menuInterface, member, arguments);
    }
    Layout layout(int parent = 0, int depth = -1, const QStringList &names = {})
    {
        const auto reply = call(u"GetLayout"_s, {parent, depth, names});
        Layout layout;
        layout.revision = reply.arguments().value(0).toUInt();
        layout.root = readItem(reply.arguments().value(1).value<QDBusArgument>(), &layout.children);
        return layout;
    }
    QDBusMessage sendEvent(int id, const QString &event)
    {
        return call(u"Event"_s, {id, event, QVariant::fromValue(QDBusVariant(u""_s)), 0U});
    }
    QList<StatusMenuEntry> entries()
    {
        return {{u"Open Korvo"_s, true, [this] { m_chosen.append(u"open"_s); }}, {}, {u"Stop"_s, false, [this] {
                                                                                          m_chosen.append(u"stop"_s);
                                                                                      }}};
    }

    std::unique_ptr<FakeTray> m_tray;
    std::unique_ptr<DBusMenu> m_menu;
    QStringList m_chosen;
};

void DBusMenuTest::init()
{
    qDBusRegisterMetaType<Event>();
    qDBusRegisterMetaType<QList<Event>>();
    const auto connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"menu"_s);
    m_chosen.clear();
    m_menu = std::make_unique<DBusMenu>(connection, menuPath);
    m_menu->setEntries(entries());
    m_menu->setAnnouncing(true);
    m_tray = std::make_unique<FakeTray>();
    m_tray->service = connection.baseService();
}

void DBusMenuTest::cleanup()
{
    m_tray.reset();
    m_menu.reset();
    QDBusConnection::disconnectFromBus(u"menu"_s);
}

void DBusMenuTest::layoutHasAllEntries()
{
    const Layout read = layout();
    QCOMPARE(read.root, (Read{0, {{u"children-display"_s, u"submenu"_s}}}));
    const QList<Read> expected{{1, {{u"label"_s, u"Open Korvo"_s}}},
                               {2, {{u"type"_s, u"separator"_s}}},
                               {3, {{u"label"_s, u"Stop"_s}, {u"enabled"_s, false}}}};
    QCOMPARE(read.children, expected);
}

void DBusMenuTest::layoutOfDepthZeroIsTheRootAlone()
{
    QVERIFY(layout(0, 0).children.isEmpty());
    QCOMPARE(layout(1, -1).root, (Read{1, {{u"label"_s, u"Open Korvo"_s}}}));
}

void DBusMenuTest::layoutHasOnlyThePropertiesAskedFor()
{
    const Layout read = layout(0, -1, {u"enabled"_s});
    QCOMPARE(read.children, (QList<Read>{{1, {}}, {2, {}}, {3, {{u"enabled"_s, false}}}}));
}

void DBusMenuTest::anUnderscoreIsShownAsItStands()
{
    m_menu->setEntries({{u"Fix a_b __c"_s, true, {}}});
    QCOMPARE(layout().children.value(0).properties.value(u"label"_s).toString(), u"Fix a__b ____c"_s);
}

void DBusMenuTest::theSameEntriesAgainAreNoChange()
{
    const uint revision = layout().revision;
    m_menu->setEntries(entries());
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList());
    QCOMPARE(layout().revision, revision);
}

void DBusMenuTest::anotherActionIsNoChangeToSee()
{
    const uint revision = layout().revision;
    auto others = entries();
    others[0].action = {};
    m_menu->setEntries(others);
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList());
    QCOMPARE(layout().revision, revision);
}

void DBusMenuTest::anotherTextIsToldAsAProperty()
{
    const uint revision = layout().revision;
    auto others = entries();
    others[2].label = u"Stop_2"_s;
    m_menu->setEntries(others);
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList(u"ItemsPropertiesUpdated"_s));
    QCOMPARE(readProperties(m_tray->received[0].arguments().value(0)),
             (QList<Read>{{3, {{u"label"_s, u"Stop__2"_s}, {u"enabled"_s, false}}}}));
    QCOMPARE(layout().revision, revision + 1);
}

void DBusMenuTest::enablingRemovesTheProperty()
{
    layout();
    auto others = entries();
    others[2].isEnabled = true;
    m_menu->setEntries(others);
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList(u"ItemsPropertiesUpdated"_s));
    const auto removals = m_tray->received[0].arguments().value(1).value<QDBusArgument>();
    QCOMPARE(removals.currentSignature(), u"a(ias)"_s);
    int id = 0;
    QStringList names;
    removals.beginArray();
    removals.beginStructure();
    removals >> id >> names;
    removals.endStructure();
    QVERIFY(removals.atEnd());
    QCOMPARE(id, 3);
    QCOMPARE(names, QStringList(u"enabled"_s));
}

void DBusMenuTest::anotherNumberOfEntriesIsANewLayout()
{
    const uint revision = layout().revision;
    m_menu->setEntries({{u"Quit"_s, true, {}}});
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList(u"LayoutUpdated"_s));
    QCOMPARE(m_tray->received[0].arguments(), (QVariantList{revision + 1, 0}));
    QCOMPARE(layout().revision, revision + 1);
    QCOMPARE(layout().children.size(), 1);
}

void DBusMenuTest::aSeparatorInPlaceOfAnEntryIsANewLayout()
{
    layout();
    auto others = entries();
    others[0] = {};
    m_menu->setEntries(others);
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList(u"LayoutUpdated"_s));
}

void DBusMenuTest::nobodyIsToldWhileNoTrayIsThere()
{
    layout();
    m_menu->setAnnouncing(false);
    m_menu->setEntries({{u"Quit"_s, true, {}}});
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList());
    m_menu->setAnnouncing(true);
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList(u"LayoutUpdated"_s));
}

void DBusMenuTest::nobodyIsToldWhoHasNotRead()
{
    m_menu->setEntries({{u"Quit"_s, true, {}}});
    m_tray->synchronize();
    QCOMPARE(m_tray->receivedNames(), QStringList());
}

void DBusMenuTest::aClickRunsTheAction()
{
    QCOMPARE(sendEvent(1, u"clicked"_s).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(m_chosen, QStringList(u"open"_s));
}

void DBusMenuTest::aClickRunsTheNewAction()
{
    auto others = entries();
    others[0].action = [this] { m_chosen.append(u"other"_s); };
    m_menu->setEntries(others);
    sendEvent(1, u"clicked"_s);
    QTRY_COMPARE(m_chosen, QStringList(u"other"_s));
}

void DBusMenuTest::onlyClicksOnEnabledEntriesRun_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("event");
    QTest::newRow("the pointer over an entry") << 1 << u"hovered"_s;
    QTest::newRow("the menu opens") << 0 << u"opened"_s;
    QTest::newRow("a click on the menu itself") << 0 << u"clicked"_s;
    QTest::newRow("a click on a separator") << 2 << u"clicked"_s;
    QTest::newRow("a click on a disabled entry") << 3 << u"clicked"_s;
}

void DBusMenuTest::onlyClicksOnEnabledEntriesRun()
{
    QFETCH(int, id);
    QFETCH(QString, event);
    QCOMPARE(sendEvent(id, event).type(), QDBusMessage::ReplyMessage);
    sendEvent(1, u"clicked"_s); // Runs after the one in question.
    QTRY_COMPARE(m_chosen, QStringList(u"open"_s));
}

void DBusMenuTest::anActionMayReplaceTheMenu()
{
    m_menu->setEntries({{u"A"_s, true, [this] {
                             m_menu->setEntries({});
                             m_chosen.append(u"a"_s);
                         }}});
    sendEvent(1, u"clicked"_s);
    QTRY_COMPARE(m_chosen, QStringList(u"a"_s));
    QVERIFY(layout().children.isEmpty());
}

void DBusMenuTest::severalEventsInOneCall()
{
    const QList<Event> events{{1, u"clicked"_s}, {42, u"clicked"_s}, {3, u"opened"_s}, {1, u"clicked"_s}};
    const auto reply = call(u"EventGroup"_s, {QVariant::fromValue(events)});
    QCOMPARE(qdbus_cast<QList<int>>(reply.arguments().value(0)), QList<int>{42});
    QTRY_COMPARE(m_chosen, (QStringList{u"open"_s, u"open"_s}));
}

void DBusMenuTest::groupPropertiesLeaveOutUnknownEntries()
{
    const auto reply = call(u"GetGroupProperties"_s, {QVariant::fromValue(QList<int>{1, 77}), QStringList()});
    QCOMPARE(readProperties(reply.arguments().value(0)), (QList<Read>{{1, {{u"label"_s, u"Open Korvo"_s}}}}));
}

void DBusMenuTest::noGroupMeansAll()
{
    const auto reply = call(u"GetGroupProperties"_s, {QVariant::fromValue(QList<int>()), QStringList(u"label"_s)});
    QCOMPARE(readProperties(reply.arguments().value(0)).size(), 4);
}

void DBusMenuTest::onePropertyOfOneEntry()
{
    const auto reply = call(u"GetProperty"_s, {3, u"label"_s});
    QCOMPARE(reply.arguments().value(0).value<QDBusVariant>().variant().toString(), u"Stop"_s);
}

void DBusMenuTest::showingNeedsNoUpdate()
{
    QCOMPARE(call(u"AboutToShow"_s, {0}).arguments(), QVariantList{false});
    const auto reply = call(u"AboutToShowGroup"_s, {QVariant::fromValue(QList<int>{0, 1, 9})});
    QCOMPARE(qdbus_cast<QList<int>>(reply.arguments().value(0)), QList<int>());
    QCOMPARE(qdbus_cast<QList<int>>(reply.arguments().value(1)), QList<int>{9});
}

void DBusMenuTest::theMenuTellsItsVersion()
{
    const auto reply = m_tray->call(menuPath, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s, {menuInterface});
    const auto properties = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    QCOMPARE(properties.value(u"Version"_s).toUInt(), 3U);
    QCOMPARE(properties.value(u"Status"_s).toString(), u"normal"_s);
}

void DBusMenuTest::whatDoesNotFitIsRefused_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    const QString menu = menuInterface;
    const QString properties = u"org.freedesktop.DBus.Properties"_s;
    const QVariant nothing = QVariant::fromValue(QDBusVariant(u""_s));
    QTest::newRow("layout of an unknown entry") << menu << u"GetLayout"_s << QVariantList{99, -1, QStringList()};
    QTest::newRow("layout of a negative entry") << menu << u"GetLayout"_s << QVariantList{-1, -1, QStringList()};
    QTest::newRow("layout without arguments") << menu << u"GetLayout"_s << QVariantList();
    QTest::newRow("event for an unknown entry") << menu << u"Event"_s << QVariantList{99, u"clicked"_s, nothing, 0U};
    QTest::newRow("event with other arguments") << menu << u"Event"_s << QVariantList{u"clicked"_s};
    QTest::newRow("unknown entry to be shown") << menu << u"AboutToShow"_s << QVariantList{99};
    QTest::newRow("property of an unknown entry") << menu << u"GetProperty"_s << QVariantList{99, u"label"_s};
    QTest::newRow("unknown property of an entry") << menu << u"GetProperty"_s << QVariantList{1, u"colour"_s};
    QTest::newRow("unknown method") << menu << u"Explode"_s << QVariantList();
    QTest::newRow("unknown interface") << u"com.example.menu"_s << u"GetLayout"_s << QVariantList();
    QTest::newRow("unknown property of the menu") << properties << u"Get"_s << QVariantList{menu, u"Colour"_s};
    QTest::newRow("writing a property") << properties << u"Set"_s
                                        << QVariantList{menu, u"Version"_s, QVariant::fromValue(QDBusVariant(4U))};
}

void DBusMenuTest::whatDoesNotFitIsRefused()
{
    QFETCH(QString, interface);
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    QCOMPARE(m_tray->call(menuPath, interface, member, arguments).type(), QDBusMessage::ErrorMessage);
    QCOMPARE(layout().children.size(), 3); // Alive and well.
}

QTEST_MAIN(DBusMenuTest)
#include "DBusMenuTest.moc"
