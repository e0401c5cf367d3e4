#include "Platform/Freedesktop/PortalKeyGrabber.h"

#include "FakePortal.h"
#include "Fakes/FakeSystemLog.h"
#include "Services/GlobalHotkeyService.h"

#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

using Reply = FakePortal::Reply;

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
    void aSessionThatThePortalClosesIsLogged();
    void unregisterClosesTheSession();
    void unregisterBeforeTheAnswerTakesTheQuestionBack_data();
    void unregisterBeforeTheAnswerTakesTheQuestionBack();
    void aNewShortcutReplacesTheFormer();
    void theCallbackMayUnregister();
    void aLostBusCrashesNothing();

private:
    QStringList errors() const { return m_log->messages(SystemLog::Level::error); }
    bool isBound() const { return m_portal->calls.contains(u"BindShortcuts"_s); }
    void registerShortcut();
    void stopPortal();

    int m_presses = 0;
    std::unique_ptr<FakeSystemLog> m_log;
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
    m_grabber = std::make_unique<PortalKeyGrabber>([](quint32 keyCode) {
        return keyCode == 45 ? u"n"_s : keyCode == 96 ? u"F5"_s : QString();
    });
    m_service = std::make_unique<GlobalHotkeyService>(*m_grabber);
}

void PortalKeyGrabberTest::cleanup()
{
    m_service.reset();
    m_grabber.reset();
    m_portal.reset();
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
    QTRY_COMPARE(errors(), (QStringList{u"Failed to register hotkey: -1"_s}));
    service.unregister();
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
    // A second program's shortcut is bound by the new portal; ours would have been asked for before.
    PortalKeyGrabber second([](quint32) { return u"n"_s; });
    second.grab(45, 768);
    QTRY_VERIFY(isBound());
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

void PortalKeyGrabberTest::aLostBusCrashesNothing()
{
    const auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"lost"_s);
    PortalKeyGrabber grabber([](quint32) { return u"n"_s; }, bus);
    GlobalHotkeyService service(grabber);
    service.registerHotkey(45, 768, [] {});
    QTRY_VERIFY(isBound());
    QDBusConnection::disconnectFromBus(u"lost"_s);
    service.registerHotkey(96, 768, [] {});
    service.unregister();
    QVERIFY(m_portal->calls.size() >= 2);
}

QTEST_GUILESS_MAIN(PortalKeyGrabberTest)

#include "PortalKeyGrabberTest.moc"
