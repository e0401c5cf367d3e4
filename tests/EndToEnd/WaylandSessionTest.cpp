#include "EndToEnd/WaylandSession.h"
#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/FakePortal.h"
#include "Views/Theme.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;
constexpr QColor panelGround(20, 20, 20);
constexpr QColor cardGround(10, 10, 10); // Of the quick-add panel.
constexpr QRect output(0, 0, 1280, 800);
constexpr QPoint placeOfItem(1266, 11); // In the bar of this session, with no other item.

} // namespace

/// Korvo in a Wayland session, with a tray of its compositor's: through XWayland as it starts by itself there, and as a
/// Wayland program where the user wants that.
class WaylandSessionTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void throughXWaylandAClickOpensThePanelUnderTheItemAndTheNextOneClosesIt();
    void throughXWaylandNoWindowIsThereUnasked();
    void thePortalsShortcutOpensThePanelForATaskToBeTyped_data();
    void thePortalsShortcutOpensThePanelForATaskToBeTyped();
    void withoutAPortalThereIsNoShortcutAndAllElseWorks();
    void asAWaylandProgramAClickOpensThePanelAsAPlainWindowAndTheNextOneClosesIt();
    void theSettingsOpenAndQuitEndsCleanly_data();
    void theSettingsOpenAndQuitEndsCleanly();

private:
    bool start(const QString &kind);
    bool activate();
    QList<WaylandWindow> windows() { return waylandWindows(m_world->process().processId()); }

    WaylandKeyboard m_keyboard;
    std::unique_ptr<FakePortal> m_portal; ///< Where the test has one.
    std::unique_ptr<AttachedKorvo> m_world;
};

void WaylandSessionTest::initTestCase()
{
    QVERIFY(m_keyboard.plugIn());
}

void WaylandSessionTest::init()
{
    m_world = std::make_unique<AttachedKorvo>();
    QVERIFY(m_world->startWorkspace());
}

void WaylandSessionTest::cleanup()
{
    const auto item = m_world->item();
    m_world.reset();
    m_portal.reset();
    qunsetenv("QT_QPA_PLATFORM");
    QTRY_VERIFY(findOnOutput(theme::systemGreen).isEmpty()); // The tray has seen it go.
}

/// Starts Korvo with what is asked of the toolkit, nothing if that is empty.
bool WaylandSessionTest::start(const QString &kind)
{
    if (!kind.isEmpty())
        qputenv("QT_QPA_PLATFORM", kind.toLatin1());
    return m_world->startKorvo() && QTest::qWaitFor([this] { return m_world->seconds() > 0; }, patience)
        && QTest::qWaitFor([] { return !findOnOutput(theme::systemGreen).isEmpty(); }, patience);
}

/// What this tray does when its item is clicked.
bool WaylandSessionTest::activate()
{
    auto call = QDBusMessage::createMethodCall(m_world->item(), u"/StatusNotifierItem"_s,
                                               u"org.kde.StatusNotifierItem"_s, u"Activate"_s);
    call.setArguments({placeOfItem.x(), placeOfItem.y()});
    return QDBusReply<void>(QDBusConnection::sessionBus().call(call)).isValid();
}

void WaylandSessionTest::throughXWaylandAClickOpensThePanelUnderTheItemAndTheNextOneClosesIt()
{
    QVERIFY(start({}));
    QVERIFY(activate());
    QTRY_VERIFY_WITH_TIMEOUT(!findOnOutput(theme::stopRed).isEmpty(), patience);
    const auto panel = findOnOutput(panelGround);
    QCOMPARE(panel.width(), 340);
    QVERIFY(output.contains(panel));
    QVERIFY(panel.right() > output.right() - 10);
    QVERIFY(panel.top() >= 20 && panel.top() < 60); // Below the bar.
    QVERIFY(windows().isEmpty());                   // It has placed itself.
    QVERIFY(activate());
    QTRY_VERIFY_WITH_TIMEOUT(findOnOutput(theme::stopRed).isEmpty(), patience);
    QVERIFY(activate());
    QTRY_VERIFY_WITH_TIMEOUT(!findOnOutput(theme::stopRed).isEmpty(), patience);
}

void WaylandSessionTest::throughXWaylandNoWindowIsThereUnasked()
{
    QVERIFY(start({}));
    const int before = m_world->seconds();
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > before + 1, patience); // The tile would have come by now.
    QVERIFY(windows().isEmpty());
    QVERIFY(findOnOutput(panelGround).isEmpty());
}

void WaylandSessionTest::thePortalsShortcutOpensThePanelForATaskToBeTyped_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("through XWayland") << QString();
    QTest::newRow("as a Wayland program") << u"wayland"_s;
}

void WaylandSessionTest::thePortalsShortcutOpensThePanelForATaskToBeTyped()
{
    QFETCH(const QString, kind);
    m_portal = std::make_unique<FakePortal>();
    QVERIFY(m_portal->start());
    QVERIFY(start(kind));
    QTRY_COMPARE_WITH_TIMEOUT(m_portal->calls.value(1), u"BindShortcuts"_s, patience);
    m_portal->activate(m_portal->session, m_portal->shortcut.value(u"id"_s).toString());
    QTRY_VERIFY_WITH_TIMEOUT(findOnOutput(cardGround).width() > 500, patience);
    QVERIFY(output.contains(findOnOutput(cardGround)));
    QVERIFY(WaylandKeyboard::enter(u"Call the framer"_s));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->log().contains(u"Quick add: created task 'Call the framer' and started timer"_s),
                             patience);
    QCOMPARE(m_world->runningTask(), u"Call the framer"_s);
    QTRY_VERIFY_WITH_TIMEOUT(findOnOutput(cardGround).isEmpty(), patience);
}

void WaylandSessionTest::withoutAPortalThereIsNoShortcutAndAllElseWorks()
{
    QVERIFY(start({}));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->log().contains(u"[ERROR] Failed to register hotkey: -1"_s), patience);
    QVERIFY(clickTrayMenu(m_world->item(), u"Open"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnOutput(theme::stopRed).isEmpty(), patience);
}

void WaylandSessionTest::asAWaylandProgramAClickOpensThePanelAsAPlainWindowAndTheNextOneClosesIt()
{
    QVERIFY(start(u"wayland"_s));
    QVERIFY(windows().isEmpty());
    QVERIFY(activate());
    QTRY_VERIFY_WITH_TIMEOUT(!findOnOutput(theme::stopRed).isEmpty(), patience);
    QCOMPARE(windows().size(), 1);
    QCOMPARE(windows().first().appId, u"com.korvo.app"_s);
    QVERIFY(output.contains(windows().first().place));
    QVERIFY(windows().first().place.width() < output.width() / 2); // It is not tiled.
    QVERIFY(activate());
    QTRY_VERIFY_WITH_TIMEOUT(windows().isEmpty(), patience);
    QVERIFY(!m_world->log().contains(u"[FAULT]"_s));
}

void WaylandSessionTest::theSettingsOpenAndQuitEndsCleanly_data()
{
    thePortalsShortcutOpensThePanelForATaskToBeTyped_data();
}

void WaylandSessionTest::theSettingsOpenAndQuitEndsCleanly()
{
    QFETCH(const QString, kind);
    QVERIFY(start(kind));
    QVERIFY(clickTrayMenu(m_world->item(), u"Settings"_s));
    QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 1, patience);
    QCOMPARE(windows().first().appId, kind.isEmpty() ? QString() : u"com.korvo.app"_s);
    QVERIFY(output.contains(windows().first().place));
    QVERIFY(clickTrayMenu(m_world->item(), u"Quit"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->process().state(), QProcess::NotRunning, patience);
    QCOMPARE(m_world->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_world->process().exitCode(), 0);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    WaylandSessionTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "WaylandSessionTest.moc"
