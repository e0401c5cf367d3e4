#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Fakes/TcpProxy.h"

#include <QJsonArray>
#include <QTest>

#include <memory>
#include <signal.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {
constexpr int patience = AttachedKorvo::patience;
}

/// What stands in the tray while others change the workspace.
class RunningTimerTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void labelFollowsATimerThatIsStartedElsewhere();
    void labelIsCountedLocallyBetweenThePolls();
    void betweenPollsNoByteGoesOverTheNetwork();
    void aWorkspaceThatFailsIsAWarningUntilItAnswersAgain();
    void terminationSignalIsLoggedAndTheProgramGoesOn();
    void quitFromTheMenuEndsWithStatusZero();
    void aKeyThatIsRefusedShowsWhatTheApiSaid();

private:
    std::unique_ptr<AttachedKorvo> m_world;
};

void RunningTimerTest::init()
{
    m_world = std::make_unique<AttachedKorvo>();
    QVERIFY(m_world->startWorkspace());
}

void RunningTimerTest::cleanup()
{
    const auto item = m_world->item();
    m_world.reset();
    QTRY_VERIFY(trayItemProperty(item, u"Id"_s).isEmpty()); // The tray has seen it go.
}

void RunningTimerTest::labelFollowsATimerThatIsStartedElsewhere()
{
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= 42 * 60, patience); // The sample's timer has run for 42 minutes.
    QVERIFY(m_world->seconds() < 44 * 60);
    QVERIFY(m_world->property(u"Title"_s).contains(u"Home page layout"_s));
    m_world->control("POST", u"start-timer?task=Answer%20the%20printer"_s);
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= 0 && m_world->seconds() < 120, patience);
    QVERIFY(m_world->property(u"Title"_s).contains(u"Answer the printer"_s));
    m_world->control("POST", u"stop-timers"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_world->property(u"XAyatanaLabel"_s), QString(), patience);
}

void RunningTimerTest::labelIsCountedLocallyBetweenThePolls()
{
    QVERIFY(m_world->startKorvo(3600));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience);
    const int shown = m_world->seconds();
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= shown + 2, patience);
}

void RunningTimerTest::betweenPollsNoByteGoesOverTheNetwork()
{
    const TcpProxy proxy(quint16(m_world->workspace()["port"_L1].toInt()));
    auto workspace = m_world->workspace();
    workspace.insert(u"port"_s, proxy.port());
    m_world->describeWorkspace(workspace);
    QVERIFY(m_world->startKorvo(3600));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience);
    const auto polled = [this] { return m_world->control("GET", u"requests"_s)["requests"_L1].toArray().size() == 5; };
    QTRY_VERIFY_WITH_TIMEOUT(polled(), patience); // Two queries and three pages.
    const int shown = m_world->seconds();
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > shown, patience); // The last answer has arrived by now.
    const auto bytes = proxy.byteCount();
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() >= shown + 4, patience);
    QCOMPARE(proxy.byteCount(), bytes);
    QCOMPARE(proxy.connectionCount(), 1);
}

void RunningTimerTest::aWorkspaceThatFailsIsAWarningUntilItAnswersAgain()
{
    m_world->control("POST", u"stop-timers"_s);
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->property(u"Title"_s).contains(u"No timer running"_s), patience);
    m_world->control("POST", u"faults"_s,
                     {{u"kind"_s, u"html"_s}, {u"status"_s, 403}, {u"times"_s, -1}, {u"path"_s, u"/v1"_s}});
    QTRY_VERIFY_WITH_TIMEOUT(m_world->property(u"Title"_s).contains(u"Server error 403"_s), patience);
    QVERIFY(m_world->log().contains(u"[ERROR] Poll failed: Server error 403"_s));
    m_world->control("DELETE", u"faults"_s);
    QTRY_VERIFY_WITH_TIMEOUT(m_world->property(u"Title"_s).contains(u"No timer running"_s), patience);
}

void RunningTimerTest::terminationSignalIsLoggedAndTheProgramGoesOn()
{
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience);
    QCOMPARE(::kill(pid_t(m_world->process().processId()), SIGTERM), 0);
    QTRY_VERIFY_WITH_TIMEOUT(m_world->log().contains(u"[FAULT] Received signal 15"_s), patience);
    const int shown = m_world->seconds();
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > shown, patience);
    QCOMPARE(m_world->process().state(), QProcess::Running);
}

void RunningTimerTest::quitFromTheMenuEndsWithStatusZero()
{
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience);
    QVERIFY(clickTrayMenu(m_world->item(), u"Quit"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->process().state(), QProcess::NotRunning, patience);
    QCOMPARE(m_world->process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_world->process().exitCode(), 0);
    const auto lines = m_world->log().split(u'\n', Qt::SkipEmptyParts);
    QVERIFY(lines.last().contains(u"Polling task finished (cancelled: true)"_s));
}

void RunningTimerTest::aKeyThatIsRefusedShowsWhatTheApiSaid()
{
    auto workspace = m_world->workspace();
    workspace.insert(u"apiKey"_s, u"ntn_wrong"_s);
    m_world->describeWorkspace(workspace);
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->property(u"Title"_s).contains(u"Invalid API key"_s), patience);
    QVERIFY(!m_world->log().contains(u"ntn_wrong"_s));
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    RunningTimerTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "RunningTimerTest.moc"
