#include "EndToEnd/TrayLookUp.h"
#include "Fakes/TcpProxy.h"
#include "Platform/Linux/LinuxClock.h"
#include "Services/CurlTransport.h"
#include "Utilities/Spawn.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>
#include <signal.h>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = 20000; // Milliseconds for what takes some polls.

/// Sends a request and keeps what came back.
QCoro::Task<> sendTo(HttpTransport &transport, HttpRequest request, std::shared_ptr<std::optional<HttpResponse>> answer)
{
    const auto result = co_await transport.send(std::move(request), std::stop_token());
    *answer = result ? *result : HttpResponse();
}

} // namespace

/// Korvo as a user has it: in a real tray, over TLS, with a workspace that others change.
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
    void describeWorkspace(const QJsonObject &workspace);
    void startKorvo(double pollSeconds = 1);
    /// Asks the workspace's control path; the JSON that it answers.
    QJsonDocument control(const QByteArray &method, const QString &path, const QJsonObject &body = {});
    QString findItem() const;
    QString property(const QString &name) const;
    int seconds() const; ///< That the label shows; -1 without a clock.
    QString log() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QProcess> m_sandbox;
    std::unique_ptr<QProcess> m_korvo;
    QJsonObject m_workspace;
    CurlTransport m_transport;
    QString m_item;
};

void RunningTimerTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_sandbox = std::make_unique<QProcess>();
    m_sandbox->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_sandbox->start(qEnvironmentVariable("KORVO_SANDBOX"), QStringList());
    QTRY_VERIFY_WITH_TIMEOUT(m_sandbox->canReadLine(), patience);
    const auto line = m_sandbox->readLine();
    m_workspace = QJsonDocument::fromJson(line).object();
    QVERIFY(!m_workspace.isEmpty());
    describeWorkspace(m_workspace);
    m_transport.redirectHost(u"localhost"_s, u"127.0.0.1"_s, quint16(m_workspace["port"_L1].toInt()),
                             m_workspace["caFile"_L1].toString());
}

void RunningTimerTest::cleanup()
{
    for (auto *process : {m_korvo.get(), m_sandbox.get()}) {
        if (process) {
            process->kill();
            process->waitForFinished();
        }
    }
    m_korvo.reset();
    m_sandbox.reset();
    QTRY_VERIFY(findItem().isEmpty()); // The tray has seen it go.
}

void RunningTimerTest::describeWorkspace(const QJsonObject &workspace)
{
    QFile file(m_folder->filePath(u"workspace.json"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(workspace).toJson());
}

void RunningTimerTest::startKorvo(double pollSeconds)
{
    m_korvo = std::make_unique<QProcess>();
    m_korvo->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_STATE_HOME"_s, m_folder->path());
    m_korvo->setProcessEnvironment(environment);
    m_korvo->start(qEnvironmentVariable("KORVO_ATTACH"),
                   {m_folder->filePath(u"workspace.json"_s), u"--poll"_s, QString::number(pollSeconds)});
    QTRY_VERIFY_WITH_TIMEOUT(!(m_item = findItem()).isEmpty(), patience);
}

QJsonDocument RunningTimerTest::control(const QByteArray &method, const QString &path, const QJsonObject &body)
{
    HttpRequest request;
    request.method = method;
    request.url = QUrl(u"https://localhost:%1/sandbox/%2"_s.arg(m_workspace["port"_L1].toInt()).arg(path));
    if (!body.isEmpty())
        request.body = QJsonDocument(body).toJson();
    const auto answer = std::make_shared<std::optional<HttpResponse>>();
    spawn(sendTo(m_transport, request, answer));
    if (!QTest::qWaitFor([&] { return answer->has_value(); }, patience))
        return {};
    return QJsonDocument::fromJson((*answer)->body);
}

QString RunningTimerTest::findItem() const
{
    return m_korvo ? findTrayItem(m_korvo->processId()) : QString();
}

QString RunningTimerTest::property(const QString &name) const
{
    return trayItemProperty(m_item, name);
}

int RunningTimerTest::seconds() const
{
    static const QRegularExpression clock(u"^ ?(\\d+):(\\d\\d):(\\d\\d)$"_s);
    const auto match = clock.match(property(u"XAyatanaLabel"_s));
    if (!match.hasMatch())
        return -1;
    return match.captured(1).toInt() * 3600 + match.captured(2).toInt() * 60 + match.captured(3).toInt();
}

QString RunningTimerTest::log() const
{
    QFile file(m_folder->filePath(u"Korvo/korvo.log"_s));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void RunningTimerTest::labelFollowsATimerThatIsStartedElsewhere()
{
    startKorvo();
    QTRY_VERIFY_WITH_TIMEOUT(seconds() >= 42 * 60, patience); // The sample's timer has run for 42 minutes.
    QVERIFY(seconds() < 44 * 60);
    QVERIFY(property(u"Title"_s).contains(u"Home page layout"_s));
    control("POST", u"start-timer?task=Answer%20the%20printer"_s);
    QTRY_VERIFY_WITH_TIMEOUT(seconds() >= 0 && seconds() < 120, patience);
    QVERIFY(property(u"Title"_s).contains(u"Answer the printer"_s));
    control("POST", u"stop-timers"_s);
    QTRY_COMPARE_WITH_TIMEOUT(property(u"XAyatanaLabel"_s), QString(), patience);
}

void RunningTimerTest::labelIsCountedLocallyBetweenThePolls()
{
    startKorvo(3600);
    QTRY_VERIFY_WITH_TIMEOUT(seconds() > 0, patience);
    const int shown = seconds();
    QTRY_VERIFY_WITH_TIMEOUT(seconds() >= shown + 2, patience);
}

void RunningTimerTest::betweenPollsNoByteGoesOverTheNetwork()
{
    const TcpProxy proxy(quint16(m_workspace["port"_L1].toInt()));
    auto workspace = m_workspace;
    workspace.insert(u"port"_s, proxy.port());
    describeWorkspace(workspace);
    startKorvo(3600);
    QTRY_VERIFY_WITH_TIMEOUT(seconds() > 0, patience);
    const auto polled = [this] { return control("GET", u"requests"_s)["requests"_L1].toArray().size() == 5; };
    QTRY_VERIFY_WITH_TIMEOUT(polled(), patience); // Two queries and three pages.
    const int shown = seconds();
    QTRY_VERIFY_WITH_TIMEOUT(seconds() > shown, patience); // The last answer has arrived by now.
    const auto bytes = proxy.byteCount();
    QTRY_VERIFY_WITH_TIMEOUT(seconds() >= shown + 4, patience);
    QCOMPARE(proxy.byteCount(), bytes);
    QCOMPARE(proxy.connectionCount(), 1);
}

void RunningTimerTest::aWorkspaceThatFailsIsAWarningUntilItAnswersAgain()
{
    control("POST", u"stop-timers"_s);
    startKorvo();
    QTRY_VERIFY_WITH_TIMEOUT(property(u"Title"_s).contains(u"No timer running"_s), patience);
    control("POST", u"faults"_s, {{u"kind"_s, u"html"_s}, {u"status"_s, 403}, {u"times"_s, -1}, {u"path"_s, u"/v1"_s}});
    QTRY_VERIFY_WITH_TIMEOUT(property(u"Title"_s).contains(u"Server error 403"_s), patience);
    QVERIFY(log().contains(u"[ERROR] Poll failed: Server error 403"_s));
    control("DELETE", u"faults"_s);
    QTRY_VERIFY_WITH_TIMEOUT(property(u"Title"_s).contains(u"No timer running"_s), patience);
}

void RunningTimerTest::terminationSignalIsLoggedAndTheProgramGoesOn()
{
    startKorvo();
    QTRY_VERIFY_WITH_TIMEOUT(seconds() > 0, patience);
    QCOMPARE(::kill(pid_t(m_korvo->processId()), SIGTERM), 0);
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(u"[FAULT] Received signal 15"_s), patience);
    const int shown = seconds();
    QTRY_VERIFY_WITH_TIMEOUT(seconds() > shown, patience);
    QCOMPARE(m_korvo->state(), QProcess::Running);
}

void RunningTimerTest::quitFromTheMenuEndsWithStatusZero()
{
    startKorvo();
    QTRY_VERIFY_WITH_TIMEOUT(seconds() > 0, patience);
    QVERIFY(clickTrayMenu(m_item, u"Quit"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_korvo->state(), QProcess::NotRunning, patience);
    QCOMPARE(m_korvo->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_korvo->exitCode(), 0);
    const auto lines = log().split(u'\n', Qt::SkipEmptyParts);
    QVERIFY(lines.last().contains(u"Polling task finished (cancelled: true)"_s));
}

void RunningTimerTest::aKeyThatIsRefusedShowsWhatTheApiSaid()
{
    auto workspace = m_workspace;
    workspace.insert(u"apiKey"_s, u"ntn_wrong"_s);
    describeWorkspace(workspace);
    startKorvo();
    QTRY_VERIFY_WITH_TIMEOUT(property(u"Title"_s).contains(u"Invalid API key"_s), patience);
    QVERIFY(!log().contains(u"ntn_wrong"_s));
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    LinuxClock clock;
    Clock::setShared(&clock);
    RunningTimerTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "RunningTimerTest.moc"
