#include "Platform/Freedesktop/PortalKeyGrabber.h"

#include "FakePortal.h"
#include "Fakes/FakeSystemLog.h"
#include "PrivateBus.h"
#include "Services/GlobalHotkeyService.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

using Reply = FakePortal::Reply;

namespace {

QString keysymName(quint32 keyCode)
{
    return keyCode == 45 ? u"n"_s : keyCode == 96 ? u"F5"_s : QString();
}

} // namespace

/// Notices that a connection has lost its bus.
class BusEnd : public QObject {
    Q_OBJECT
public:
    explicit BusEnd(QDBusConnection bus)
    {
        bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s,
                    this, SLOT(notice()));
    }

    bool isNoticed = false;

private:
    Q_SLOT void notice() { isNoticed = true; }
};

class PortalKeyGrabberTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aShortcutIsBoundAndFires_data();
    void aShortcutIsBoundAndFires();
    void aKeyWithoutANameIsBoundWithoutATrigger();
    void triggersAreSpeltAsPortalsDo_data();
    void triggersAreSpeltAsPortalsDo();
    void othersShortcutsDoNotFire_data();
    void othersShortcutsDoNotFire();
    void pressesAreToldBetweenInstallAndUninstall();
    void aRefusalIsLoggedOnce_data();
    void aRefusalIsLoggedOnce();
    void withoutAPortalTheFailureIsLogged();
    void aPortalWithoutShortcutsIsLogged();
    void withoutABusTheFailureIsLogged();
    void aPortalThatComesLaterBindsAfterAll();
    void aPortalThatRestartsBindsAgain();
    void aPortalThatRestartsAgainAndAgainIsLoggedEachTime();
    void aRefusalByAPortalThatRestartedIsLogged();
    void aPortalThatGoesWhileItIsAskedIsLoggedOnce();
    void aRefusedShortcutIsNotAskedAgain();
    void aShortcutGivenUpWithoutAPortalIsNotAskedOfTheNextOne();
    void aSessionThatThePortalClosesIsLogged();
    void unregisterClosesTheSession();
    void unregisterBeforeTheAnswerTakesTheQuestionBack_data();
    void unregisterBeforeTheAnswerTakesTheQuestionBack();
    void aNewShortcutReplacesTheFormer();
    void theCallbackMayUnregister();
    void aBusThatDiesIsLoggedOnce_data();
    void aBusThatDiesIsLoggedOnce();
    void afterTheBusHasDiedAShortcutFailsAtOnce();
    void aBusThatDiesWithNothingBoundIsNotLogged_data();
    void aBusThatDiesWithNothingBoundIsNotLogged();
    void onABusThatHasDiedTheFailureIsLogged();
    void aClosedConnectionCrashesNothing();

private:
    QStringList errors() const { return m_log->messages(SystemLog::Level::error); }
    bool isBound() const { return m_portal->calls.contains(u"BindShortcuts"_s); }
    void registerShortcut();
    void stopPortal();
    void bindAnother();
    bool moveToDyingBus();

    int m_presses = 0;
    std::unique_ptr<FakeSystemLog> m_log;
    std::unique_ptr<PrivateBus> m_dyingBus;
    std::unique_ptr<FakePortal> m_portal;
    std::unique_ptr<PortalKeyGrabber> m_grabber;
    std::unique_ptr<GlobalHotkeyService> m_service;
};

void PortalKeyGrabberTest::init()
{
    m_presses = 0;
    m_log = std::make_unique<FakeSystemLog>();
    m_portal = std::make_unique<FakePortal>();
    QVERIFY(m_portal->start());
    m_grabber = std::make_unique<PortalKeyGrabber>(&keysymName);
    m_service = std::make_unique<GlobalHotkeyService>(*m_grabber);
}

void PortalKeyGrabberTest::cleanup()
{
    m_service.reset();
    m_grabber.reset();
    m_portal.reset();
    QDBusConnection::disconnectFromBus(u"dying"_s);
    m_dyingBus.reset();
    m_log.reset();
}

void PortalKeyGrabberTest::registerShortcut()
{
    m_service->registerHotkey(45, 768, [this] { ++m_presses; });
}

/// Until the program's connection knows of it too.
void PortalKeyGrabberTest::stopPortal()
{
    const QDBusServiceWatcher watcher(u"org.freedesktop.portal.Desktop"_s, QDBusConnection::sessionBus(),
                                      QDBusServiceWatcher::WatchForUnregistration);
    const QSignalSpy gone(&watcher, &QDBusServiceWatcher::serviceUnregistered);
    // A question and its answer, after which the bus has noted who watches.
    QVERIFY(QDBusConnection::sessionBus().interface()->isServiceRegistered(u"org.freedesktop.portal.Desktop"_s));
    m_portal->stop();
    QTRY_COMPARE(gone.count(), 1);
}

/// A second program's shortcut: when the portal has bound it, the first one has noticed whatever came before.
void PortalKeyGrabberTest::bindAnother()
{
    PortalKeyGrabber second([](quint32) { return u"n"_s; });
    second.grab(45, 768);
    QTRY_VERIFY(isBound());
}

/// Portal, shortcut and all on a bus of their own.
bool PortalKeyGrabberTest::moveToDyingBus()
{
    m_service.reset();
    m_grabber.reset();
    m_portal.reset();
    m_dyingBus = std::make_unique<PrivateBus>();
    if (!m_dyingBus->start())
        return false;
    m_portal = std::make_unique<FakePortal>(m_dyingBus->address());
    m_grabber = std::make_unique<PortalKeyGrabber>(&keysymName,
                                                   QDBusConnection::connectToBus(m_dyingBus->address(), u"dying"_s));
    m_service = std::make_unique<GlobalHotkeyService>(*m_grabber);
    return m_portal->start();
}

void PortalKeyGrabberTest::aShortcutIsBoundAndFires_data()
{
    QTest::addColumn<bool>("isAnsweringLate");
    QTest::addColumn<bool>("isNamingSessionsItself");
    QTest::newRow("the answers come before the replies") << false << false;
    QTest::newRow("the answers come after the replies") << true << false;
    QTest::newRow("the session is another than the token tells") << false << true;
    QTest::newRow("the session is another, and told after the reply") << true << true;
}

void PortalKeyGrabberTest::aShortcutIsBoundAndFires()
{
    QFETCH(bool, isAnsweringLate);
    QFETCH(bool, isNamingSessionsItself);
    m_portal->isAnsweringLate = isAnsweringLate;
    m_portal->isNamingSessionsItself = isNamingSessionsItself;
    registerShortcut();
    QTRY_VERIFY(isBound());
    QCOMPARE(m_portal->calls, (QStringList{u"CreateSession"_s, u"BindShortcuts"_s}));
    QCOMPARE(m_portal->shortcut,
             (QVariantMap{{u"id"_s, u"quick-add"_s},
                          {u"description"_s, u"Create a task and start its timer"_s},
                          {u"preferred_trigger"_s, u"LOGO+SHIFT+n"_s}}));
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_COMPARE(m_presses, 1);
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_COMPARE(m_presses, 2);
    QCOMPARE(m_log->lines, (QStringList{u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s}));
    m_service->unregister();
    QTRY_COMPARE(m_portal->openSessions, QStringList());
}

void PortalKeyGrabberTest::aKeyWithoutANameIsBoundWithoutATrigger()
{
    m_service->registerHotkey(0x34, 768, [] {});
    QTRY_VERIFY(isBound());
    QVERIFY(!m_portal->shortcut.contains(u"preferred_trigger"_s));
}

void PortalKeyGrabberTest::triggersAreSpeltAsPortalsDo_data()
{
    QTest::addColumn<quint32>("modifiers");
    QTest::addColumn<QString>("keysym");
    QTest::addColumn<QString>("trigger");
    QTest::newRow("command and shift") << 0x300u << u"n"_s << u"LOGO+SHIFT+n"_s;
    QTest::newRow("control and option") << 0x1800u << u"F5"_s << u"CTRL+ALT+F5"_s;
    QTest::newRow("all four") << 0x1b00u << u"Return"_s << u"CTRL+ALT+LOGO+SHIFT+Return"_s;
    QTest::newRow("none") << 0u << u"F5"_s << u"F5"_s;
    QTest::newRow("other bits are ignored") << 0x400u << u"F5"_s << u"F5"_s;
    QTest::newRow("a key without a name has no trigger") << 0x300u << QString() << QString();
}

void PortalKeyGrabberTest::triggersAreSpeltAsPortalsDo()
{
    QFETCH(quint32, modifiers);
    QFETCH(QString, keysym);
    QTEST(PortalKeyGrabber::trigger(modifiers, keysym), "trigger");
}

void PortalKeyGrabberTest::othersShortcutsDoNotFire_data()
{
    QTest::addColumn<QString>("session");
    QTest::addColumn<QString>("id");
    QTest::newRow("another identifier") << QString() << u"another"_s;
    QTest::newRow("another session") << u"/org/freedesktop/portal/desktop/session/1_1/other"_s << u"quick-add"_s;
}

void PortalKeyGrabberTest::othersShortcutsDoNotFire()
{
    QFETCH(QString, session);
    QFETCH(QString, id);
    registerShortcut();
    QTRY_VERIFY(isBound());
    m_portal->activate(session.isEmpty() ? m_portal->session : session, id);
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_VERIFY(m_presses > 0);
    QCOMPARE(m_presses, 1);
}

void PortalKeyGrabberTest::pressesAreToldBetweenInstallAndUninstall()
{
    PortalKeyGrabber grabber(&keysymName);
    const QSignalSpy pressed(&grabber, &KeyGrabber::pressed);
    grabber.grab(45, 768);
    QTRY_VERIFY(isBound());
    m_portal->activate(m_portal->session, u"quick-add"_s);
    grabber.grab(45, 768); // Its answers come behind that press.
    QTRY_COMPARE(m_portal->calls.count(u"BindShortcuts"_s), 2);
    QCOMPARE(pressed.count(), 0);
    grabber.install();
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_COMPARE(pressed.count(), 1);
    grabber.uninstall();
    grabber.grab(45, 768);
    QTRY_COMPARE(m_portal->calls.count(u"BindShortcuts"_s), 3);
    m_portal->activate(m_portal->session, u"quick-add"_s);
    grabber.grab(45, 768);
    QTRY_COMPARE(m_portal->calls.count(u"BindShortcuts"_s), 4);
    QCOMPARE(pressed.count(), 1);
}

void PortalKeyGrabberTest::aRefusalIsLoggedOnce_data()
{
    QTest::addColumn<int>("onCreate");
    QTest::addColumn<int>("onBind");
    QTest::addColumn<int>("status");
    const auto row = [](const char *name, Reply onCreate, Reply onBind, int status) {
        QTest::newRow(name) << int(onCreate) << int(onBind) << status;
    };
    row("the session is refused", Reply::refused, Reply::yes, 1);
    row("the session ends in some other way", Reply::ended, Reply::yes, 2);
    row("the session gives an error", Reply::error, Reply::yes, KeyGrabber::notSupported);
    row("the user refuses", Reply::yes, Reply::refused, 1);
    row("the question ends in some other way", Reply::yes, Reply::ended, 2);
    row("the question gives an error", Reply::yes, Reply::error, KeyGrabber::notSupported);
    row("an empty list is bound", Reply::yes, Reply::nothingBound, KeyGrabber::notBound);
    row("a list without ours is bound", Reply::yes, Reply::anotherBound, KeyGrabber::notBound);
    row("the list is none", Reply::yes, Reply::misshapen, KeyGrabber::notBound);
}

void PortalKeyGrabberTest::aRefusalIsLoggedOnce()
{
    QFETCH(int, onCreate);
    QFETCH(int, onBind);
    QFETCH(int, status);
    m_portal->onCreate = Reply(onCreate);
    m_portal->onBind = Reply(onBind);
    registerShortcut();
    QCOMPARE(errors(), QStringList()); // It comes later.
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: %1"_s.arg(status)}));
    QTRY_COMPARE(m_portal->openSessions, QStringList());
    m_portal->activate(m_portal->session, u"quick-add"_s);
    m_service->unregister();
    QCOMPARE(m_presses, 0);
    QCOMPARE(errors().size(), 1);
}

void PortalKeyGrabberTest::withoutAPortalTheFailureIsLogged()
{
    stopPortal();
    registerShortcut();
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -1"_s}));
}

void PortalKeyGrabberTest::aPortalWithoutShortcutsIsLogged()
{
    m_portal->hasShortcuts = false;
    registerShortcut();
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -1"_s}));
}

void PortalKeyGrabberTest::withoutABusTheFailureIsLogged()
{
    PortalKeyGrabber grabber([](quint32) { return u"n"_s; },
                             QDBusConnection::connectToBus(u"unix:path=/nonexistent"_s, u"none"_s));
    GlobalHotkeyService service(grabber);
    service.registerHotkey(45, 768, [] {});
    QCOMPARE(errors(), (QStringList{u"Failed to register hotkey: -1"_s})); // At once.
    service.unregister();
    QCoreApplication::processEvents();
    QCOMPARE(errors().size(), 1);
    QDBusConnection::disconnectFromBus(u"none"_s);
}

void PortalKeyGrabberTest::aPortalThatComesLaterBindsAfterAll()
{
    stopPortal();
    registerShortcut();
    QTRY_COMPARE(errors().size(), 1);
    QVERIFY(m_portal->start());
    QTRY_VERIFY(isBound());
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_COMPARE(m_presses, 1);
    QCOMPARE(errors().size(), 1);
    QCOMPARE(m_log->lines.last(), u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s);
}

void PortalKeyGrabberTest::aPortalThatRestartsAgainAndAgainIsLoggedEachTime()
{
    const auto success = u"INFO Global hotkey registered (keyCode: 45, modifiers: 768)"_s;
    const auto loss = u"ERROR Failed to register hotkey: -4"_s;
    registerShortcut();
    QTRY_VERIFY(isBound());
    QStringList lines{success};
    for (int i = 0; i < 2; ++i) {
        stopPortal();
        lines += loss;
        QTRY_COMPARE(m_log->lines, lines);
        QVERIFY(m_portal->start());
        lines += success;
        QTRY_COMPARE(m_log->lines, lines);
    }
}

void PortalKeyGrabberTest::aRefusalByAPortalThatRestartedIsLogged()
{
    registerShortcut();
    QTRY_VERIFY(isBound());
    stopPortal();
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -4"_s}));
    m_portal->onBind = Reply::refused;
    QVERIFY(m_portal->start());
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -4"_s, u"Failed to register hotkey: 1"_s}));
}

void PortalKeyGrabberTest::aPortalThatRestartsBindsAgain()
{
    registerShortcut();
    QTRY_VERIFY(isBound());
    stopPortal();
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -4"_s}));
    m_portal->calls.clear();
    QVERIFY(m_portal->start());
    QTRY_VERIFY(isBound());
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_COMPARE(m_presses, 1);
    QCOMPARE(errors().size(), 1);
}

void PortalKeyGrabberTest::aPortalThatGoesWhileItIsAskedIsLoggedOnce()
{
    m_portal->onBind = Reply::never;
    registerShortcut();
    QTRY_VERIFY(isBound());
    stopPortal();
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -4"_s}));
    m_service->unregister();
    QCOMPARE(errors().size(), 1);
}

void PortalKeyGrabberTest::aRefusedShortcutIsNotAskedAgain()
{
    m_portal->onBind = Reply::refused;
    registerShortcut();
    QTRY_COMPARE(errors().size(), 1);
    stopPortal();
    m_portal->calls.clear();
    m_portal->onBind = Reply::yes;
    QVERIFY(m_portal->start());
    bindAnother();
    QCOMPARE(m_portal->calls, (QStringList{u"CreateSession"_s, u"BindShortcuts"_s}));
}

void PortalKeyGrabberTest::aShortcutGivenUpWithoutAPortalIsNotAskedOfTheNextOne()
{
    stopPortal();
    registerShortcut();
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -1"_s}));
    m_service->unregister();
    QVERIFY(m_portal->start());
    bindAnother();
    QCOMPARE(m_portal->calls, (QStringList{u"CreateSession"_s, u"BindShortcuts"_s}));
}

void PortalKeyGrabberTest::aSessionThatThePortalClosesIsLogged()
{
    registerShortcut();
    QTRY_VERIFY(isBound());
    m_portal->closeSession(m_portal->session);
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -4"_s}));
}

void PortalKeyGrabberTest::unregisterClosesTheSession()
{
    registerShortcut();
    QTRY_VERIFY(isBound());
    QCOMPARE(m_portal->openSessions, (QStringList{m_portal->session}));
    m_service->unregister();
    QTRY_COMPARE(m_portal->openSessions, QStringList());
    m_portal->activate(m_portal->session, u"quick-add"_s);
    registerShortcut();
    QTRY_COMPARE(m_portal->calls.count(u"BindShortcuts"_s), 2);
    QCOMPARE(m_presses, 0);
}

void PortalKeyGrabberTest::unregisterBeforeTheAnswerTakesTheQuestionBack_data()
{
    QTest::addColumn<int>("onCreate");
    QTest::addColumn<QString>("question");
    QTest::newRow("the question for a session") << int(Reply::never) << u"CreateSession"_s;
    QTest::newRow("the question for the shortcut") << int(Reply::yes) << u"BindShortcuts"_s;
}

void PortalKeyGrabberTest::unregisterBeforeTheAnswerTakesTheQuestionBack()
{
    QFETCH(int, onCreate);
    QFETCH(QString, question);
    m_portal->onCreate = Reply(onCreate);
    m_portal->onBind = Reply::never;
    registerShortcut();
    QTRY_VERIFY(m_portal->calls.contains(question));
    m_service->unregister();
    QTRY_VERIFY(m_portal->calls.contains(u"Session.Close"_s));
    QVERIFY(m_portal->calls.contains(u"Request.Close"_s));
    QCOMPARE(m_portal->openSessions, QStringList());
    QCOMPARE(errors(), QStringList());
}

void PortalKeyGrabberTest::aNewShortcutReplacesTheFormer()
{
    registerShortcut();
    QTRY_VERIFY(isBound());
    const auto former = m_portal->session;
    m_service->registerHotkey(96, 0x1000, [this] { ++m_presses; });
    QTRY_COMPARE(m_portal->calls.count(u"BindShortcuts"_s), 2);
    QCOMPARE(m_portal->shortcut.value(u"preferred_trigger"_s).toString(), u"CTRL+F5"_s);
    QCOMPARE(m_portal->openSessions, (QStringList{m_portal->session}));
    m_portal->activate(former, u"quick-add"_s);
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_VERIFY(m_presses > 0);
    QCOMPARE(m_presses, 1);
}

void PortalKeyGrabberTest::theCallbackMayUnregister()
{
    m_service->registerHotkey(45, 768, [this] {
        m_service->unregister();
        ++m_presses;
    });
    QTRY_VERIFY(isBound());
    m_portal->activate(m_portal->session, u"quick-add"_s);
    QTRY_COMPARE(m_presses, 1);
    QTRY_COMPARE(m_portal->openSessions, QStringList());
}

void PortalKeyGrabberTest::aBusThatDiesIsLoggedOnce_data()
{
    QTest::addColumn<int>("onCreate");
    QTest::addColumn<int>("onBind");
    QTest::addColumn<QString>("question"); // The last one before it dies.
    QTest::newRow("while the shortcut is bound") << int(Reply::yes) << int(Reply::yes) << u"BindShortcuts"_s;
    QTest::newRow("while a session is asked for") << int(Reply::never) << int(Reply::yes) << u"CreateSession"_s;
    QTest::newRow("while the shortcut is asked for") << int(Reply::yes) << int(Reply::never) << u"BindShortcuts"_s;
    QTest::newRow("before any answer to a session") << int(Reply::silent) << int(Reply::yes) << u"CreateSession"_s;
    QTest::newRow("before any answer to the shortcut") << int(Reply::yes) << int(Reply::silent) << u"BindShortcuts"_s;
}

void PortalKeyGrabberTest::aBusThatDiesIsLoggedOnce()
{
    QFETCH(int, onCreate);
    QFETCH(int, onBind);
    QFETCH(QString, question);
    QVERIFY(moveToDyingBus());
    m_portal->onCreate = Reply(onCreate);
    m_portal->onBind = Reply(onBind);
    registerShortcut();
    QTRY_VERIFY(m_portal->calls.contains(question));
    if (m_portal->onCreate == Reply::yes && m_portal->onBind == Reply::yes) {
        m_portal->activate(m_portal->session, u"quick-add"_s);
        QTRY_COMPARE(m_presses, 1);
    }
    const int presses = m_presses;
    QVERIFY(m_dyingBus->kill());
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -4"_s}));
    QTRY_VERIFY(!QDBusConnection(u"dying"_s).isConnected());
    m_portal->activate(m_portal->session, u"quick-add"_s);
    m_service->unregister();
    m_service.reset();
    m_grabber.reset();
    QCoreApplication::processEvents();
    QCOMPARE(errors().size(), 1);
    QCOMPARE(m_presses, presses);
}

void PortalKeyGrabberTest::afterTheBusHasDiedAShortcutFailsAtOnce()
{
    QVERIFY(moveToDyingBus());
    registerShortcut();
    QTRY_VERIFY(isBound());
    QVERIFY(m_dyingBus->kill());
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -4"_s}));
    m_log->lines.clear();
    QCOMPARE(m_grabber->grab(96, 768), int(KeyGrabber::notSupported));
    QCOMPARE(m_log->lines, QStringList());
    for (int i = 0; i < 2; ++i) {
        m_log->lines.clear();
        registerShortcut();
        QCOMPARE(m_log->lines, (QStringList{u"ERROR Failed to register hotkey: -1"_s}));
    }
    m_service->unregister();
    QCoreApplication::processEvents();
    QCOMPARE(errors().size(), 1);
}

void PortalKeyGrabberTest::aBusThatDiesWithNothingBoundIsNotLogged_data()
{
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("nothing was asked for") << false;
    QTest::newRow("the shortcut was refused") << true;
}

void PortalKeyGrabberTest::aBusThatDiesWithNothingBoundIsNotLogged()
{
    QFETCH(bool, isRefused);
    QVERIFY(moveToDyingBus());
    m_portal->onBind = isRefused ? Reply::refused : Reply::yes;
    registerShortcut();
    if (isRefused)
        QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: 1"_s}));
    else
        m_service->unregister();
    const auto lines = m_log->lines;
    // Who is told of the end after the grabber.
    BusEnd end(QDBusConnection(u"dying"_s));
    QVERIFY(m_dyingBus->kill());
    QTRY_VERIFY(end.isNoticed);
    QCOMPARE(m_log->lines, lines);
}

void PortalKeyGrabberTest::onABusThatHasDiedTheFailureIsLogged()
{
    QVERIFY(moveToDyingBus());
    QVERIFY(m_dyingBus->kill());
    QTRY_VERIFY(!QDBusConnection(u"dying"_s).isConnected());
    m_service.reset();
    m_grabber = std::make_unique<PortalKeyGrabber>(&keysymName, QDBusConnection(u"dying"_s));
    m_service = std::make_unique<GlobalHotkeyService>(*m_grabber);
    registerShortcut();
    QCOMPARE(m_log->lines, (QStringList{u"ERROR Failed to register hotkey: -1"_s}));
    m_service->unregister();
}

/// The connection is closed from this side, by name, which other code of the process might do.
void PortalKeyGrabberTest::aClosedConnectionCrashesNothing()
{
    QVERIFY(moveToDyingBus());
    registerShortcut();
    QTRY_VERIFY(isBound());
    QDBusConnection::disconnectFromBus(u"dying"_s);
    m_service->registerHotkey(96, 768, [] {});
    m_service->unregister();
    QCOMPARE(m_presses, 0);
}

QTEST_GUILESS_MAIN(PortalKeyGrabberTest)

#include "PortalKeyGrabberTest.moc"
