#include "Fakes/FakeClock.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/TestAuthority.h"
#include "Fakes/TestSettings.h"
#include "Services/CurlTransport.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"
#include "sandbox/SandboxServer.h"
#include "sandbox/Workspace.h"

#include <QJsonDocument>
#include <QTcpServer>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;
using sandbox::Fault;

/// The poll loop over the real network code, against a workspace on this machine that misbehaves.
class BadAnswersTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aBadAnswerIsShownUntilAGoodOneComes_data();
    void aBadAnswerIsShownUntilAGoodOneComes();
    void aSettingThatIsNotRightIsShownUntilItIs_data();
    void aSettingThatIsNotRightIsShownUntilItIs();
    void aServerOutOfReachIsShownUntilItIsBack_data();
    void aServerOutOfReachIsShownUntilItIsBack();
    void aBadAnswerKeepsTheTimerThatWasShown_data();
    void aBadAnswerKeepsTheTimerThatWasShown();

private:
    struct World {
        FakeSystemLog log;
        FakeClock clock;
        FakeNotificationCenter notifications;
        sandbox::SandboxServer server;
        TestAuthority otherAuthority;
        CurlTransport transport;
        TestSettings settings;
        std::unique_ptr<TimerViewModel> viewModel;
    };

    void leadToServer();
    /// Lets the loop poll once, up to its next sleep.
    void poll();
    QList<double> pauses() const;

    sandbox::SandboxServer &server() { return m_world->server; }
    TimerViewModel &viewModel() { return *m_world->viewModel; }

    std::unique_ptr<World> m_world;
};

Q_DECLARE_METATYPE(Fault)

namespace {

const auto host = u"api.notion.com"_s;
constexpr int patience = 60000; // Milliseconds; answers of 50 MB come three times.

QString serverError(const Fault &fault)
{
    return u"Server error %1: "_s.arg(fault.reply.status) + QString::fromUtf8(fault.reply.body);
}

/// A port on which nobody listens.
quint16 closedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

void BadAnswersTest::init()
{
    m_world = std::make_unique<World>();
    m_world->clock.arePausesInstant = true;
    server().setClock([clock = &m_world->clock] { return clock->now(); });
    QVERIFY2(server().listen(), qPrintable(server().errorString()));
    leadToServer();

    auto &settings = m_world->settings.settings;
    const auto &workspace = server().workspace();
    const auto mapping = FieldMapping::fromJson(QJsonDocument(sandbox::Workspace::fieldMapping()).toJson());
    QVERIFY(mapping);
    settings.setApiKey(server().apiKey());
    settings.setTimeTrackerDBId(workspace.timeTrackerId());
    settings.setTasksDBId(workspace.tasksId());
    settings.setFieldMapping(*mapping);
    m_world->viewModel
        = std::make_unique<TimerViewModel>(m_world->notifications, m_world->transport, settings, m_world->clock);
}

void BadAnswersTest::cleanup()
{
    m_world->viewModel.reset();
    QVERIFY2(finishSpawned(2000), "A loop went on without its owner");
    m_world.reset();
}

void BadAnswersTest::leadToServer()
{
    m_world->transport.redirectHost(host, u"127.0.0.1"_s, server().port(), server().caFile());
}

void BadAnswersTest::poll()
{
    auto &clock = m_world->clock;
    const auto sleepCount = [&clock] {
        return std::count_if(clock.waits.begin(), clock.waits.end(),
                             [](const auto &wait) { return wait.kind == FakeClock::Kind::sleep; });
    };
    const auto before = sleepCount();
    if (before == 0)
        viewModel().startPollingIfConfigured();
    else
        clock.advance(clock.waits.last().seconds);
    QTRY_VERIFY_WITH_TIMEOUT(sleepCount() == before + 1, patience);
}

QList<double> BadAnswersTest::pauses() const
{
    QList<double> seconds;
    for (const auto &wait : std::as_const(m_world->clock.waits)) {
        if (wait.kind == FakeClock::Kind::pause)
            seconds.append(wait.seconds);
    }
    return seconds;
}

void BadAnswersTest::aBadAnswerIsShownUntilAGoodOneComes_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QString>("words");
    QTest::addColumn<QList<double>>("pauses"); // Two after what is sent three times.
    using Kind = Fault::Kind;
    using Pauses = QList<double>;
    const Pauses doubling{1, 2};
    const auto limited = u"Rate limited, retrying..."_s;
    const auto nothing = u"Network error: api.notion.com closed the connection without an answer"_s;
    const auto notJson
        = [](const QString &why) { return u"Network error: The answer is not valid JSON (%1)"_s.arg(why); };

    QTest::newRow("a request that is refused") << Fault::error(400) << serverError(Fault::error(400)) << Pauses{};
    QTest::newRow("a key that is refused") << Fault::error(401) << u"Invalid API key"_s << Pauses{};
    QTest::newRow("a gateway's page that forbids") << Fault::html(403) << serverError(Fault::html(403)) << Pauses{};
    QTest::newRow("nothing there") << Fault::error(404) << u"Resource not found"_s << Pauses{};
    QTest::newRow("a limit in seconds") << Fault::error(429, "7"_ba) << limited << Pauses{7, 7};
    QTest::newRow("a limit of two minutes") << Fault::error(429, "120"_ba) << limited << Pauses{120, 120};
    QTest::newRow("a limit in words") << Fault::error(429, "soon"_ba) << limited << doubling;
    QTest::newRow("a limit that says not how long") << Fault::error(429) << limited << doubling;
    for (const int status : {500, 503, 529}) {
        const auto fault = Fault::error(status);
        QTest::addRow("status %d", status) << fault << serverError(fault) << doubling;
    }
    QTest::newRow("a gateway's page for an answer") << Fault::html(200) << notJson(u"illegal value"_s) << doubling;
    QTest::newRow("half a body") << Fault::of(Kind::cutBody)
                                 << u"Network error: The connection to api.notion.com was lost"_s << doubling;
    QTest::newRow("half the headers") << Fault::of(Kind::cutHeaders) << nothing << doubling;
    QTest::newRow("no UTF-8") << Fault::notUtf8() << notJson(u"invalid UTF8 string"_s) << doubling;
    QTest::newRow("ten thousand objects in each other")
        << Fault::nested(10000) << notJson(u"too deeply nested document"_s) << doubling;
    QTest::newRow("fifty megabytes") << Fault::streamed(50 * 1024 * 1024)
                                     << u"Network error: The answer of api.notion.com is too large"_s << doubling;
    QTest::newRow("an end without an answer") << Fault::of(Kind::closeWithoutAnswer) << nothing << doubling;
    QTest::newRow("an answer that is lost") << Fault::of(Kind::loseAnswer) << nothing << doubling;
}

void BadAnswersTest::aBadAnswerIsShownUntilAGoodOneComes()
{
    QFETCH(Fault, fault);
    QFETCH(QString, words);
    server().faults().add(fault, -1);
    poll();
    QVERIFY(viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), std::optional(words));
    QVERIFY(!viewModel().activeTimer());
    QTEST(pauses(), "pauses");

    server().faults().clear();
    poll();
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), std::nullopt);
    QVERIFY(viewModel().isTimerRunning());
    QVERIFY(!viewModel().todayTasks().isEmpty());
}

void BadAnswersTest::aSettingThatIsNotRightIsShownUntilItIs_data()
{
    QTest::addColumn<bool>("hasKey");
    QTest::addColumn<QString>("trackerId"); // Empty for the right one.
    QTest::addColumn<QString>("words");
    QTest::addColumn<int>("sendCount");
    QTest::newRow("no key") << false << QString() << u"No API key configured"_s << 0;
    QTest::newRow("a database id with blanks in it")
        << true << u"not an id"_s << u"Invalid response from Notion"_s << 0;
    QTest::newRow("a database id with a slash in it")
        << true << u"a/b"_s << u"Server error 400: {\"code\":\"invalid_request_url\""_s << 3;
    QTest::newRow("a database id that is none")
        << true << u"tracker"_s << u"Server error 400: {\"code\":\"validation_error\""_s << 3;
}

void BadAnswersTest::aSettingThatIsNotRightIsShownUntilItIs()
{
    QFETCH(bool, hasKey);
    QFETCH(QString, trackerId);
    QFETCH(QString, words);
    poll();
    QVERIFY(viewModel().isTimerRunning());
    const auto shown = viewModel().activeTimer();

    auto &settings = m_world->settings.settings;
    if (!hasKey)
        settings.setApiKey({});
    if (!trackerId.isEmpty())
        settings.setTimeTrackerDBId(trackerId);
    server().clearRequests();
    poll();
    QVERIFY(viewModel().hasNetworkError());
    const auto message = viewModel().errorMessage().value_or(QString());
    QVERIFY2(message.startsWith(words), qPrintable(message));
    QVERIFY(viewModel().activeTimer() == shown);
    QTEST(int(server().requests().size()), "sendCount");
    QVERIFY(pauses().isEmpty());

    settings.setApiKey(server().apiKey());
    settings.setTimeTrackerDBId(server().workspace().timeTrackerId());
    poll();
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), std::nullopt);
    QVERIFY(viewModel().isTimerRunning());
}

void BadAnswersTest::aServerOutOfReachIsShownUntilItIsBack_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("isPortOpen");
    QTest::addColumn<bool>("isTrusted");
    QTest::addColumn<QString>("beginning");
    QTest::newRow("nobody listens") << u"127.0.0.1"_s << false << true
                                    << u"Network error: Could not connect to api.notion.com"_s;
    QTest::newRow("its name does not resolve") << u"does-not-exist.invalid"_s << true << true
                                               << u"Network error: The server api.notion.com could not be found"_s;
    QTest::newRow("its certificate is not trusted")
        << u"127.0.0.1"_s << true << false << u"Network error: The certificate of api.notion.com is not trusted ("_s;
}

void BadAnswersTest::aServerOutOfReachIsShownUntilItIsBack()
{
    QFETCH(QString, address);
    QFETCH(bool, isPortOpen);
    QFETCH(bool, isTrusted);
    QFETCH(QString, beginning);
    const auto port = isPortOpen ? server().port() : closedPort();
    m_world->transport.redirectHost(host, address, port,
                                    isTrusted ? server().caFile() : m_world->otherAuthority.caFile());
    poll();
    QVERIFY(viewModel().hasNetworkError());
    const auto words = viewModel().errorMessage().value_or(QString());
    QVERIFY2(words.startsWith(beginning), qPrintable(words));
    QVERIFY(!viewModel().activeTimer());
    QCOMPARE(pauses(), (QList<double>{1, 2}));
    QVERIFY(server().requests().isEmpty());

    leadToServer();
    poll();
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), std::nullopt);
    QVERIFY(viewModel().isTimerRunning());
}

void BadAnswersTest::aBadAnswerKeepsTheTimerThatWasShown_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::newRow("on the kept connection") << Fault::of(Fault::Kind::closeWithoutAnswer);
    QTest::newRow("before the request is read") << Fault::of(Fault::Kind::closeBeforeReading);
    QTest::newRow("a page of the gateway") << Fault::html(502);
}

void BadAnswersTest::aBadAnswerKeepsTheTimerThatWasShown()
{
    QFETCH(Fault, fault);
    poll();
    QVERIFY(viewModel().isTimerRunning());
    const auto shown = viewModel().activeTimer();
    const auto tasks = viewModel().todayTasks();

    server().faults().add(fault, -1);
    poll();
    QVERIFY(viewModel().hasNetworkError());
    QVERIFY(viewModel().errorMessage());
    QVERIFY(viewModel().activeTimer() == shown);
    QVERIFY(viewModel().todayTasks() == tasks);

    server().faults().clear();
    poll();
    QVERIFY(!viewModel().hasNetworkError());
    QCOMPARE(viewModel().errorMessage(), std::nullopt);
    QVERIFY(viewModel().isTimerRunning());
}

QTEST_GUILESS_MAIN(BadAnswersTest)
#include "BadAnswersTest.moc"
