#include "Sandbox/JsonLiteral.h"
#include "Sandbox/SandboxClient.h"
#include "sandbox/Workspace.h"

#include <QFile>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo::sandbox;

/// How answers go over the wire, what the server remembers, and the control paths.
class SandboxServerTest : public QObject {
    Q_OBJECT
private slots:
    void anOrdinaryClientTrustsItOverTls();
    void aClientWithoutTheAuthorityRefusesIt();
    void theAuthorityFileGoesWithTheServer();
    void itListensOnLoopbackOnly();
    void aTakenPortIsTold();
    void answersAreChunkedAndZippedWhenAsked();
    void answersToHttpOneZeroEndWithTheConnection();
    void aConnectionIsKept();
    void pipelinedRequestsAreAnsweredInOrder();
    void badBytesEndTheConnection();
    void requestsAreRecorded();
    void theStatusOfTheAnswerIsRecorded();
    void theOldestConnectionGivesWay();
    void controlPathsNeedNoKey();
    void controlPathsChangeTheContent();
    void theServerMayGoWhileARequestWaits();
};

void SandboxServerTest::anOrdinaryClientTrustsItOverTls()
{
    SandboxServer server;
    QVERIFY2(server.listen(), qPrintable(server.errorString()));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(server.caFile()));
    QNetworkAccessManager manager;
    for (const QString &host : {u"localhost"_s, u"127.0.0.1"_s}) {
        QNetworkRequest request(QUrl(u"https://%1:%2/v1/users/me"_s.arg(host).arg(server.port())));
        request.setSslConfiguration(configuration);
        request.setPeerVerifyName(u"api.notion.com"_s);
        request.setRawHeader("Authorization", "Bearer ntn_sandbox");
        request.setRawHeader("Notion-Version", "2022-06-28");
        const std::unique_ptr<QNetworkReply> reply(manager.get(request));
        QSignalSpy finished(reply.get(), &QNetworkReply::finished);
        QVERIFY(finished.wait());
        QCOMPARE(reply->error(), QNetworkReply::NoError);
        QCOMPARE(QJsonDocument::fromJson(reply->readAll())[u"object"_s], u"user"_s);
    }
}

void SandboxServerTest::aClientWithoutTheAuthorityRefusesIt()
{
    SandboxServer server;
    QVERIFY(server.listen());
    QNetworkAccessManager manager;
    const std::unique_ptr<QNetworkReply> reply(
        manager.get(QNetworkRequest(QUrl(u"https://localhost:%1/v1/users/me"_s.arg(server.port())))));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    QVERIFY(finished.wait());
    QCOMPARE(reply->error(), QNetworkReply::SslHandshakeFailedError);
    QCOMPARE(server.requests().size(), 0);
}

void SandboxServerTest::theAuthorityFileGoesWithTheServer()
{
    QString file;
    {
        SandboxServer server;
        QVERIFY(server.listen());
        file = server.caFile();
        QVERIFY(QFile::exists(file));
        QFile pem(file);
        QVERIFY(pem.open(QIODevice::ReadOnly));
        QVERIFY(!pem.readAll().contains("PRIVATE KEY"));
    }
    QVERIFY(!QFile::exists(file));
}

void SandboxServerTest::itListensOnLoopbackOnly()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxClient client(server);
    QCOMPARE(client.call("GET", "/v1/users/me").status, 200);
    QVERIFY(client.socket()->peerAddress().isLoopback());
    QVERIFY(server.caFile().isEmpty());
    QVERIFY(!server.isTls());
}

void SandboxServerTest::aTakenPortIsTold()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxServer other;
    QVERIFY(!other.listen(server.port(), false));
    QVERIFY(!other.errorString().isEmpty());
}

void SandboxServerTest::answersAreChunkedAndZippedWhenAsked()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxClient client(server);
    const ClientAnswer plain = client.call("GET", "/v1/users/me");
    QCOMPARE(plain.header("Transfer-Encoding"), "chunked"_ba);
    QVERIFY(plain.header("Content-Length").isNull());
    QVERIFY(plain.header("Content-Encoding").isNull());
    QCOMPARE(plain.header("Content-Type"), "application/json; charset=utf-8"_ba);
    QCOMPARE(plain.header("Vary"), "Accept-Encoding"_ba);
    client.headers += std::pair<QByteArray, QByteArray>("Accept-Encoding", "deflate, gzip");
    const ClientAnswer zipped = client.call("GET", "/v1/users/me");
    QCOMPARE(zipped.header("Content-Encoding"), "gzip"_ba);
    QCOMPARE(zipped.json().value(u"name"_s), u"Korvo"_s);
    QVERIFY(!zipped.raw.contains("Korvo"));
}

void SandboxServerTest::answersToHttpOneZeroEndWithTheConnection()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxClient client(server);
    const ClientAnswer answer = client.sendBytes("GET /v1/nope HTTP/1.0\r\n\r\n");
    QCOMPARE(answer.status, 400);
    QVERIFY(answer.isComplete);
    QVERIFY(answer.header("Transfer-Encoding").isNull());
    QCOMPARE(answer.code(), u"invalid_request_url"_s);
}

void SandboxServerTest::aConnectionIsKept()
{
    SandboxServer server;
    QVERIFY(server.listen());
    SandboxClient client(server);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(client.call("GET", "/v1/users/me").status, 200);
    QCOMPARE(server.connectionCount(), 1);
    QCOMPARE(server.openConnectionCount(), 1);
    client.headers += std::pair<QByteArray, QByteArray>("Connection", "close");
    QCOMPARE(client.call("GET", "/v1/users/me").header("Connection"), "close"_ba);
    QTRY_COMPARE(server.openConnectionCount(), 0);
    QTRY_COMPARE(client.socket()->state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(client.call("GET", "/v1/users/me").status, 200);
    QCOMPARE(server.connectionCount(), 2);
}

void SandboxServerTest::pipelinedRequestsAreAnsweredInOrder()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    server.faults().add(Fault::slow(std::chrono::milliseconds(20)));
    SandboxClient client(server);
    client.start("GET", "/v1/users/me");
    const ClientAnswer first = client.sendBytes("GET /v1/nope HTTP/1.1\r\n\r\n");
    QCOMPARE(first.status, 200);
    QTRY_COMPARE(server.requests().size(), 2);
    QCOMPARE(server.requests()[1].target, "/v1/nope"_ba);
}

void SandboxServerTest::badBytesEndTheConnection()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxClient client(server);
    QCOMPARE(client.sendBytes("what is this\r\n\r\n").status, 400);
    QTRY_COMPARE(server.openConnectionCount(), 0);
    QCOMPARE(server.requests().size(), 0);
}

void SandboxServerTest::requestsAreRecorded()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    QSignalSpy received(&server, &SandboxServer::requestReceived);
    SandboxClient client(server);
    SandboxClient other(server);
    client.query(server.workspace().tasksId(), {{u"page_size"_s, 1}});
    other.call("GET", "/v1/users/me?x=1");
    QCOMPARE(received.size(), 2);
    const QList<RecordedRequest> requests = server.requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests[0].method, "POST"_ba);
    QCOMPARE(requests[0].target, "/v1/databases/" + server.workspace().tasksId().toLatin1() + "/query");
    QCOMPARE(requests[0].body, QJsonObject({{u"page_size"_s, 1}}));
    QCOMPARE(requests[0].rawBody, "{\"page_size\":1}"_ba);
    QCOMPARE(requests[0].header("authorization"), "Bearer ntn_sandbox"_ba);
    QCOMPARE(requests[0].index, 0);
    QCOMPARE(requests[1].index, 1);
    QCOMPARE(requests[1].target, "/v1/users/me?x=1"_ba);
    QVERIFY(requests[0].connection != requests[1].connection);
    server.clearRequests();
    QCOMPARE(server.requests().size(), 0);
}

void SandboxServerTest::theStatusOfTheAnswerIsRecorded()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxClient client(server);
    const auto status = [&server] { return server.requests().last().status; };
    client.call("GET", "/v1/users/me");
    QCOMPARE(status(), 200);
    QCOMPARE(client.call("GET", "/sandbox/requests").json()[u"requests"_s][0][u"status"_s], 200);
    client.call("GET", "/v1/pages/none");
    QVERIFY(status() >= 400);
    server.faults().add(Fault::of(Fault::Kind::loseAnswer));
    client.call("GET", "/v1/users/me");
    QCOMPARE(status(), 0);
    server.setApiKey(u"another"_s);
    client.call("GET", "/v1/users/me");
    QCOMPARE(status(), 401);
}

void SandboxServerTest::theOldestConnectionGivesWay()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    for (int i = 0; i < 300; ++i) {
        sockets.push_back(std::make_unique<QTcpSocket>());
        sockets.back()->connectToHost(QHostAddress(QHostAddress::LocalHost), server.port());
    }
    QTRY_COMPARE(server.connectionCount(), 300);
    QVERIFY(server.openConnectionCount() <= 256);
    SandboxClient client(server);
    QCOMPARE(client.call("GET", "/v1/users/me").status, 200);
}

void SandboxServerTest::controlPathsNeedNoKey()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxClient client(server);
    client.headers.clear();
    const QJsonObject info = client.call("GET", "/sandbox/info").json();
    QCOMPARE(info.value(u"port"_s).toInt(), server.port());
    QCOMPARE(info.value(u"tasksDBId"_s), server.workspace().tasksId());
    QCOMPARE(info[u"fieldMapping"_s].toObject().size(), 14);
    QCOMPARE(client.call("POST", "/sandbox/faults", json("{'kind':'error','status':503,'path':'/v1/users'}")).status,
             200);
    QCOMPARE(client.call("GET", "/v1/users/me").status, 503);
    QCOMPARE(client.call("POST", "/sandbox/faults", json("{'kind':'nonsense'}")).status, 400);
    QCOMPARE(client.call("POST", "/sandbox/faults", json("{'kind':'html','status':502,'times':-1}")).status, 200);
    QCOMPARE(client.call("DELETE", "/sandbox/faults").status, 200);
    QVERIFY(server.faults().isEmpty());
    const QJsonObject requests = client.call("GET", "/sandbox/requests").json();
    QCOMPARE(requests.value(u"requests"_s).toArray().size(), 1); // Control requests are not among them.
    QCOMPARE(requests[u"requests"_s][0][u"target"_s], u"/v1/users/me"_s);
    QCOMPARE(client.call("GET", "/sandbox/nope").status, 404);
}

void SandboxServerTest::controlPathsChangeTheContent()
{
    SandboxServer server;
    QVERIFY(server.listen(0, false));
    SandboxClient client(server);
    Workspace &workspace = server.workspace();
    QCOMPARE(client.call("POST", "/sandbox/stop-timers").status, 200);
    QCOMPARE(workspace.runningEntries().size(), 0);
    const ClientAnswer started = client.call("POST", "/sandbox/start-timer?task=Review%20product%20texts");
    QCOMPARE(workspace.runningEntries(), QStringList(started.json().value(u"entry"_s).toString()));
    QCOMPARE(client.call("POST", "/sandbox/start-timer?task=x").status, 404);
    const QByteArray task = workspace.findPage(workspace.tasksId(), u"Home page layout"_s).toLatin1();
    const ClientAnswer set = client.call("POST", "/sandbox/set?property=Date&page=" + task, json("{'date':null}"));
    QCOMPARE(set.json()[u"properties"_s][u"Date"_s][u"date"_s], QJsonValue());
    QCOMPARE(client.call("POST", "/sandbox/set?property=Nope&page=" + task, json("{'date':null}")).status, 400);
    const ClientAnswer pages = client.call("GET", "/sandbox/pages?database=" + workspace.clientsId().toLatin1());
    QCOMPARE(pages.json().value(u"pages"_s).toArray().size(), 4);
    QCOMPARE(client.call("POST", "/sandbox/drop-connections").status, 200);
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void SandboxServerTest::theServerMayGoWhileARequestWaits()
{
    auto server = std::make_unique<SandboxServer>();
    QVERIFY(server->listen());
    server->faults().add(Fault::slow(std::chrono::hours(1)));
    SandboxClient client(*server);
    QSignalSpy received(server.get(), &SandboxServer::requestReceived);
    client.start("GET", "/v1/users/me");
    QTRY_COMPARE(received.size(), 1);
    server.reset();
    QTRY_COMPARE(client.socket()->state(), QAbstractSocket::UnconnectedState);
}

QTEST_GUILESS_MAIN(SandboxServerTest)
#include "SandboxServerTest.moc"
