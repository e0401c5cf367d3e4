#include "Sandbox/JsonLiteral.h"
#include "Sandbox/SandboxClient.h"
#include "sandbox/Workspace.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QStringDecoder>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo::sandbox;

/// What goes wrong on purpose.
class SandboxFaultTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data();
    void init();
    void errorsHaveTheWordsOfTheApi_data();
    void errorsHaveTheWordsOfTheApi();
    void faultsComeInTheirOrder();
    void faultsAreForMatchingRequests();
    void aGatewayAnswersInHtml();
    void aBodyMayHoldBrokenUtf8();
    void aBodyMayBeNestedDeep();
    void aLongBodyIsStreamed();
    void aSlowAnswerHasItsEffectAtOnce();
    void aLostAnswerLeavesThePage();
    void aBodyEndsInTheMiddle();
    void headersEndInTheMiddle();
    void aConnectionClosesWithoutAnAnswer();
    void aConnectionClosesBeforeReading();
    void anAnswerMayNeverCome();
    void droppedConnectionsAreMadeAnew();
    void faultsAreToldInJson();

private:
    qsizetype taskCount() const { return m_server->workspace().pages(m_server->workspace().tasksId()).size(); }
    ClientAnswer createTask() { return m_client->createPage(m_server->workspace().tasksId(), {}); }

    std::unique_ptr<SandboxServer> m_server;
    std::unique_ptr<SandboxClient> m_client;
};

void SandboxFaultTest::initTestCase_data()
{
    QTest::addColumn<bool>("tls");
    QTest::newRow("over TLS") << true;
    QTest::newRow("over plain HTTP") << false;
}

void SandboxFaultTest::init()
{
    QFETCH_GLOBAL(bool, tls);
    m_client.reset();
    m_server = std::make_unique<SandboxServer>();
    QVERIFY2(m_server->listen(0, tls), qPrintable(m_server->errorString()));
    m_client = std::make_unique<SandboxClient>(*m_server);
}

void SandboxFaultTest::errorsHaveTheWordsOfTheApi_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("code");
    QTest::newRow("conflict") << 409 << u"conflict_error"_s;
    QTest::newRow("rate limit") << 429 << u"rate_limited"_s;
    QTest::newRow("internal error") << 500 << u"internal_server_error"_s;
    QTest::newRow("bad gateway") << 502 << u"bad_gateway"_s;
    QTest::newRow("unavailable") << 503 << u"service_unavailable"_s;
    QTest::newRow("gateway time-out") << 504 << u"gateway_timeout"_s;
    QTest::newRow("overload") << 529 << u"service_overload"_s;
    QTest::newRow("forbidden") << 403 << u"restricted_resource"_s;
}

void SandboxFaultTest::errorsHaveTheWordsOfTheApi()
{
    QFETCH(int, status);
    m_server->faults().add(Fault::error(status, "90"));
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QCOMPARE(answer.status, status);
    QTEST(answer.code(), "code");
    QCOMPARE(answer.header("Retry-After"), "90"_ba);
    QCOMPARE(answer.json().value(u"status"_s).toInt(), status);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
}

void SandboxFaultTest::faultsComeInTheirOrder()
{
    m_server->faults().add(Fault::error(503), 2);
    m_server->faults().add(Fault::error(429));
    QList<int> statuses;
    for (int i = 0; i < 4; ++i)
        statuses.append(m_client->call("GET", "/v1/users/me").status);
    QCOMPARE(statuses, QList<int>({503, 503, 429, 200}));
    QVERIFY(m_server->faults().isEmpty());
    QCOMPARE(m_server->requests().size(), 4);
}

void SandboxFaultTest::faultsAreForMatchingRequests()
{
    m_server->faults().add(Fault::error(500), {.method = "GET", .pathPrefix = "/v1/users", .nth = 2, .times = -1});
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
    QCOMPARE(m_client->query(m_server->workspace().tasksId()).status, 200);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 500);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 500);
    m_server->faults().clear();
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
}

void SandboxFaultTest::aGatewayAnswersInHtml()
{
    m_server->faults().add(Fault::html(502));
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QCOMPARE(answer.status, 502);
    QCOMPARE(answer.header("Content-Type"), "text/html"_ba);
    QVERIFY(answer.body.contains("<h1>502 Bad Gateway</h1>"));
}

void SandboxFaultTest::aBodyMayHoldBrokenUtf8()
{
    m_server->faults().add(Fault::notUtf8());
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QCOMPARE(answer.status, 200);
    QStringDecoder decoder(QStringDecoder::Utf8);
    [[maybe_unused]] const QString text = decoder.decode(answer.body);
    QVERIFY(decoder.hasError());
}

void SandboxFaultTest::aBodyMayBeNestedDeep()
{
    m_server->faults().add(Fault::nested(2000));
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QCOMPARE(answer.body.count('{'), 2001);
    QJsonParseError error;
    QJsonDocument::fromJson(answer.body, &error);
    QCOMPARE(error.error, QJsonParseError::DeepNesting);
}

void SandboxFaultTest::aLongBodyIsStreamed()
{
    constexpr qint64 size = 3 * 1024 * 1024;
    m_server->faults().add(Fault::streamed(size));
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QVERIFY(answer.isComplete);
    QCOMPARE(answer.json().value(u"filler"_s).toString().size(), size);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
    QCOMPARE(m_server->connectionCount(), 1);
}

void SandboxFaultTest::aSlowAnswerHasItsEffectAtOnce()
{
    m_server->faults().add(Fault::slow(std::chrono::milliseconds(20)));
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
    const qsizetype before = taskCount();
    m_server->faults().add(Fault::slow(std::chrono::hours(1)));
    SandboxClient patient(*m_server);
    patient.start("POST", "/v1/pages",
                  QJsonObject{{u"parent"_s, QJsonObject{{u"database_id"_s, m_server->workspace().tasksId()}}},
                              {u"properties"_s, QJsonObject()}});
    QTRY_COMPARE(taskCount(), before + 1);
    QCOMPARE(patient.socket()->bytesAvailable(), 0);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200); // Others are served meanwhile.
}

void SandboxFaultTest::aLostAnswerLeavesThePage()
{
    const qsizetype before = taskCount();
    m_server->faults().add(Fault::of(Fault::Kind::loseAnswer));
    const ClientAnswer answer = createTask();
    QCOMPARE(answer.raw, QByteArray());
    QCOMPARE(taskCount(), before + 1);
    QCOMPARE(createTask().status, 200);
    QCOMPARE(taskCount(), before + 2);
}

void SandboxFaultTest::aBodyEndsInTheMiddle()
{
    const qsizetype before = taskCount();
    m_server->faults().add(Fault::of(Fault::Kind::cutBody));
    const ClientAnswer answer = createTask();
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.hasWholeHead);
    QVERIFY(!answer.isComplete);
    QVERIFY(answer.raw.contains("{\"archived\""));
    QCOMPARE(taskCount(), before + 1);
}

void SandboxFaultTest::headersEndInTheMiddle()
{
    m_server->faults().add(Fault::of(Fault::Kind::cutHeaders));
    const ClientAnswer answer = m_client->call("GET", "/v1/users/me");
    QVERIFY(answer.raw.startsWith("HTTP/1.1 200 OK\r\n"));
    QVERIFY(!answer.hasWholeHead);
}

void SandboxFaultTest::aConnectionClosesWithoutAnAnswer()
{
    const qsizetype before = taskCount();
    m_server->faults().add(Fault::of(Fault::Kind::closeWithoutAnswer));
    QCOMPARE(createTask().raw, QByteArray());
    QCOMPARE(taskCount(), before);
    QCOMPARE(m_server->requests().size(), 1);
}

void SandboxFaultTest::aConnectionClosesBeforeReading()
{
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
    m_server->faults().add(Fault::of(Fault::Kind::closeBeforeReading));
    QCOMPARE(m_client->call("GET", "/v1/users/me").raw, QByteArray());
    QCOMPARE(m_server->requests().size(), 1);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
    QCOMPARE(m_server->connectionCount(), 2);
}

void SandboxFaultTest::anAnswerMayNeverCome()
{
    m_server->faults().add(Fault::of(Fault::Kind::neverAnswer));
    SandboxClient silent(*m_server);
    QSignalSpy received(m_server.get(), &SandboxServer::requestReceived);
    silent.start("GET", "/v1/users/me");
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200); // Others are served meanwhile.
    QCOMPARE(silent.socket()->bytesAvailable(), 0);
    QCOMPARE(silent.socket()->state(), QAbstractSocket::ConnectedState);
}

void SandboxFaultTest::droppedConnectionsAreMadeAnew()
{
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
    m_server->dropConnections();
    QTRY_COMPARE(m_client->socket()->state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(m_client->call("GET", "/v1/users/me").status, 200);
    QCOMPARE(m_server->connectionCount(), 2);
}

void SandboxFaultTest::faultsAreToldInJson()
{
    FaultPlan plan;
    QCOMPARE(addFault(plan,
                      json("{'kind':'error','status':429,'retry_after':7,'nth':2,'path':'/v1/pages',"
                           "'method':'POST','delay_ms':5}")),
             QString());
    QVERIFY(!plan.take("GET", "/v1/pages/x"));
    QVERIFY(!plan.take("POST", "/v1/pages"));
    const auto fault = plan.take("POST", "/v1/pages");
    QVERIFY(fault);
    QCOMPARE(fault->reply.status, 429);
    QCOMPARE(headerValue(fault->reply.headers, "Retry-After"), "7"_ba);
    QCOMPARE(fault->delay, std::chrono::milliseconds(5));
    QVERIFY(plan.isEmpty());
    for (const QString &kind :
         {u"answer"_s, u"html"_s, u"not-utf8"_s, u"nested"_s, u"streamed"_s, u"slow"_s, u"lose-answer"_s, u"cut-body"_s,
          u"cut-headers"_s, u"close-without-answer"_s, u"close-before-reading"_s, u"never-answer"_s})
        QCOMPARE(addFault(plan, {{u"kind"_s, kind}}), QString());
    QVERIFY(!addFault(plan, {}).isEmpty());
}

QTEST_GUILESS_MAIN(SandboxFaultTest)
#include "SandboxFaultTest.moc"
