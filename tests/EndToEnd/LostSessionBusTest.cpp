#include "EndToEnd/AttachedKorvo.h"
#include "Platform/PrivateBus.h"
#include "Platform/TrayOnScreen.h"
#include "Platform/XDesktop.h"
#include "Views/Theme.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QFileInfo>
#include <QGuiApplication>
#include <QJsonArray>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {
constexpr int patience = AttachedKorvo::patience;
constexpr QColor cardGround(10, 10, 10); // Of the quick-add panel.

/// The names that programs have on a bus.
QStringList namesOn(const QString &address)
{
    const auto connection = u"names"_s;
    const QStringList names = QDBusConnection::connectToBus(address, connection).interface()->registeredServiceNames();
    QDBusConnection::disconnectFromBus(connection);
    return names;
}

} // namespace

/// The whole program without what it says and hears over the session's bus.
class LostSessionBusTest : public QObject {
    Q_OBJECT
private slots:
    void theUserGoesOnWithoutABus_data();
    void theUserGoesOnWithoutABus();
};

void LostSessionBusTest::theUserGoesOnWithoutABus_data()
{
    QTest::addColumn<bool>("isThereFirst");
    QTest::newRow("that never was") << false;
    QTest::newRow("that has died") << true;
}

void LostSessionBusTest::theUserGoesOnWithoutABus()
{
    QFETCH(bool, isThereFirst);
    PrivateBus bus;
    if (isThereFirst)
        QVERIFY(bus.start());
    AttachedKorvo world;
    QVERIFY(world.startDemo(isThereFirst ? bus.address() : u"unix:path=/nonexistent"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(theme::systemGreen).isEmpty(), patience); // The other kind of tray has it.
    if (isThereFirst)
        QVERIFY(bus.kill());

    // A reminder that nobody shows: some polls later, each a second after the last, it has been sent.
    const auto query = u"/databases/%1/query"_s.arg(world.workspace()["timeTrackerDBId"_L1].toString());
    const auto polls = [&world, &query] {
        const auto requests = world.control("GET", u"requests"_s)["requests"_L1].toArray();
        return std::count_if(requests.begin(), requests.end(), [&query](const auto &request) {
            return request.toObject()["target"_L1].toString().endsWith(query);
        });
    };
    world.tell(u"remind"_s);
    const auto before = polls();
    QTRY_VERIFY_WITH_TIMEOUT(polls() >= before + 3, patience);

    const auto entry = world.filePath(u"autostart/com.korvo.app.desktop"_s);
    world.tell(u"login on"_s);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(entry), patience);
    world.tell(u"login off"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!QFileInfo::exists(entry), patience);

    QCOMPARE(world.log().count(u"Global hotkey registered (keyCode: 45, modifiers: 768)"_s), 1);
    QVERIFY(typeKeys(u"super+shift+n"_s));
    QTRY_VERIFY_WITH_TIMEOUT(findOnScreen(cardGround).width() > 500, patience);
    QVERIFY(run(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"20"_s, u"Call the framer"_s}));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_VERIFY_WITH_TIMEOUT(world.log().contains(u"Quick add: created task 'Call the framer'"_s), patience);
    QCOMPARE(world.runningTask(), u"Call the framer"_s);

    world.tell(u"start Answer the printer"_s);
    QTRY_COMPARE_WITH_TIMEOUT(world.runningTask(), u"Answer the printer"_s, patience);
    const auto then = polls();
    QTRY_VERIFY_WITH_TIMEOUT(polls() > then + 1, patience);
    QCOMPARE(world.process().state(), QProcess::Running);
    QVERIFY(!world.log().contains(u"[FAULT]"_s));
    if (!isThereFirst)
        return;

    // The next bus at that address gets the item.
    QVERIFY(bus.start());
    const auto item = u"org.kde.StatusNotifierItem-%1-"_s.arg(world.process().processId());
    QTRY_VERIFY_WITH_TIMEOUT(!namesOn(bus.address()).filter(item).isEmpty(), patience);
    QVERIFY(!world.log().contains(u"[FAULT]"_s));
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    LostSessionBusTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "LostSessionBusTest.moc"
