#include "Platform/Freedesktop/BusSingleInstance.h"
#include "Platform/Freedesktop/SessionBus.h"
#include "Platform/Freedesktop/TrayStatusItem.h"

#include "FakeTray.h"
#include "Fakes/FakeStatusItem.h"
#include "PrivateBus.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {
constexpr int patience = 15000;
} // namespace

/// The session bus of this process is one of its own, which dies and is started anew at the same address, as service
/// managers do it.
class RestartedBusTest : public QObject {
    Q_OBJECT
public:
    /// Before anything in the process looks for a bus.
    bool startBus() { return m_bus.start() && qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toLatin1()); }

private slots:
    void init();
    void cleanup();

    void theItemComesBackToTheTrayEachTime();
    void anItemThatHadNoTrayComesToTheOneOfTheNewBus();
    void aTrayThatComesLongAfterTheBusTakesOver();
    void anItemThatGoesWhileTheBusIsLostLooksNoMore();
    void theSessionBusIsTheOneThatRunsNow();
    void theProgramTakesItsNameAgainOnTheNewBus();
    void theItemTellsOfTheNewBus();

private:
    PrivateBus m_bus;
    std::unique_ptr<FakeTray> m_tray;
    std::unique_ptr<TrayStatusItem> m_item;
    QPointer<FakeStatusItem> m_fallback;
};

void RestartedBusTest::init()
{
    m_item = std::make_unique<TrayStatusItem>([this] {
        auto fallback = std::make_unique<FakeStatusItem>();
        fallback->setShown(true);
        m_fallback = fallback.get();
        return fallback;
    });
}

void RestartedBusTest::cleanup()
{
    m_item.reset();
    m_tray.reset();
}

void RestartedBusTest::theItemComesBackToTheTrayEachTime()
{
    m_tray = std::make_unique<FakeTray>();
    QTRY_VERIFY_WITH_TIMEOUT(m_item->isShown(), patience);
    QSignalSpy activated(m_item.get(), &StatusItem::activated);
    QStringList services(m_tray->service);
    for (int time = 1; time <= 2; ++time) {
        QVERIFY(m_bus.kill());
        m_tray.reset();
        QTRY_VERIFY_WITH_TIMEOUT(m_fallback, patience);
        QVERIFY(m_item->isShown());
        const auto title = u" 0:00:0%1"_s.arg(time);
        m_item->setTitle(title);
        m_item->setToolTip(u"Write"_s, title);
        m_item->setImage({title, u"Ring"_s, QSizeF(18, 18), {}});
        m_item->setMenu({{u"Open"_s, true, {}}, {title, true, {}}});

        QVERIFY(m_bus.start());
        m_tray = std::make_unique<FakeTray>();
        QTRY_VERIFY_WITH_TIMEOUT(!m_fallback, patience);
        QVERIFY(m_item->isShown());
        QCOMPARE(m_tray->itemProperty(u"XAyatanaLabel"_s).toString(), title);
        QCOMPARE(m_tray->itemProperty(u"Title"_s).toString(), u"Write, "_s + title);
        QCOMPARE(m_tray->itemProperty(u"IconAccessibleDesc"_s).toString(), u"Ring"_s);
        const auto label = m_tray->call(u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, u"GetProperty"_s, {2, u"label"_s});
        QCOMPARE(label.arguments().value(0).value<QDBusVariant>().variant().toString(), title);
        m_tray->call(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s, {1, 1});
        QTRY_COMPARE(activated.count(), time);

        // Changes go there too, and once.
        m_item->setTitle(title + u'0');
        m_tray->synchronize();
        QCOMPARE(m_tray->receivedNames(), QStringList(u"XAyatanaNewLabel"_s));
    }
}

void RestartedBusTest::anItemThatHadNoTrayComesToTheOneOfTheNewBus()
{
    QTRY_VERIFY_WITH_TIMEOUT(m_fallback, patience);
    QVERIFY(m_bus.kill());
    QVERIFY(m_bus.start());
    m_tray = std::make_unique<FakeTray>();
    QTRY_VERIFY_WITH_TIMEOUT(!m_fallback, patience);
    QVERIFY(m_item->isShown());
}

void RestartedBusTest::aTrayThatComesLongAfterTheBusTakesOver()
{
    m_tray = std::make_unique<FakeTray>();
    QTRY_VERIFY_WITH_TIMEOUT(m_item->isShown(), patience);
    QVERIFY(m_bus.kill());
    m_tray.reset();
    QTRY_VERIFY_WITH_TIMEOUT(m_fallback, patience);
    QVERIFY(m_bus.start());
    m_tray = std::make_unique<FakeTray>(false);
    const auto item = u"org.kde.StatusNotifierItem-%1-"_s.arg(QCoreApplication::applicationPid());
    const auto isItemThere = [&item] {
        const auto names = currentSessionBus().call(QDBusMessage::createMethodCall(
            u"org.freedesktop.DBus"_s, u"/"_s, u"org.freedesktop.DBus"_s, u"ListNames"_s));
        return !names.arguments().value(0).toStringList().filter(item).isEmpty();
    };
    QTRY_VERIFY_WITH_TIMEOUT(isItemThere(), patience);
    QVERIFY(m_fallback);
    QVERIFY(m_item->isShown());
    m_tray->ownWatcherName();
    QTRY_VERIFY_WITH_TIMEOUT(!m_fallback, patience);
    QVERIFY(m_item->isShown());
}

void RestartedBusTest::anItemThatGoesWhileTheBusIsLostLooksNoMore()
{
    QTRY_VERIFY_WITH_TIMEOUT(m_fallback, patience);
    QVERIFY(m_bus.kill());
    m_item.reset();
    QVERIFY(m_bus.start());
    m_tray = std::make_unique<FakeTray>();
    m_tray->synchronize();
    QVERIFY(m_tray->registered.isEmpty());
}

void RestartedBusTest::theProgramTakesItsNameAgainOnTheNewBus()
{
    BusSingleInstance instance;
    const auto isOwned = [] {
        auto call = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                   u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
        call << u"com.korvo.app"_s;
        return QDBusReply<bool>(currentSessionBus().call(call)).value();
    };
    QVERIFY(instance.claim());
    QVERIFY(isOwned());
    QVERIFY(m_bus.kill());
    QTRY_VERIFY(!currentSessionBus().isConnected());
    QVERIFY(m_bus.start());
    QVERIFY(!isOwned());
    instance.claimAgain();
    QVERIFY(isOwned());
    instance.release();
    QVERIFY(!isOwned());
    instance.claimAgain(); // What was given back stays free.
    QVERIFY(!isOwned());
}

void RestartedBusTest::theItemTellsOfTheNewBus()
{
    QSignalSpy returned(m_item.get(), &TrayStatusItem::busReturned);
    QVERIFY(m_bus.kill());
    QTRY_VERIFY(!currentSessionBus().isConnected());
    QCOMPARE(returned.count(), 0);
    QVERIFY(m_bus.start());
    QTRY_COMPARE_WITH_TIMEOUT(returned.count(), 1, patience);
}

void RestartedBusTest::theSessionBusIsTheOneThatRunsNow()
{
    for (int time = 0; time < 2; ++time) {
        QVERIFY(currentSessionBus().isConnected());
        QCOMPARE(currentSessionBus().baseService(), currentSessionBus().baseService()); // One connection for all.
        QVERIFY(m_bus.kill());
        QTRY_VERIFY(!currentSessionBus().isConnected());
        QVERIFY(m_bus.start());
        QVERIFY(currentSessionBus().isConnected());
    }
}

int main(int argc, char **argv)
{
    RestartedBusTest test;
    if (!test.startBus())
        return 1;
    QApplication app(argc, argv);
    return QTest::qExec(&test, argc, argv);
}

#include "RestartedBusTest.moc"
