#include "Services/CurlTransport.h"
#include "Services/NotionAPIService.h"

#include "Fakes/Await.h"
#include "Fakes/FakeClock.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/RawHttpServer.h"
#include "Fakes/TestAuthority.h"
#include "Fakes/TestSettings.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

using After = RawHttpServer::After;

/// The whole client as the program has it, led to a server on this machine in place of Notion's; only its waits end at
/// once.
struct Bench {
    Bench()
    {
        TestSettings::configure(settings.settings);
        clock.isInstant = true;
        transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, server.port(), authority.caFile());
    }

    QStringList errors() const { return log.messages(SystemLog::Level::error); }

    FakeSystemLog log;
    TestAuthority authority;
    RawHttpServer server{authority.issue("api.notion.com")};
    CurlTransport transport;
    FakeClock clock;
    TestSettings settings;
    NotionAPIService api{transport, settings.settings, clock};
};

} // namespace

class NotionOverNetworkTest : public QObject {
    Q_OBJECT
private slots:
    void anOperationReachesTheServerAsNotionWantsIt();
    void aRowInAnotherScriptComesAndGoesIntact();
    void anIdentifierGoesOverTheNetworkAsItIs_data();
    void anIdentifierGoesOverTheNetworkAsItIs();
    void anAnswerThatIsLostIsAskedForThreeTimesInAll_data();
    void anAnswerThatIsLostIsAskedForThreeTimesInAll();
    void aKeptConnectionThatEndsWithoutAnAnswerCountsAsOneSend();
    void aPageIsCreatedOnceWhenTheServerIsWell();
    void anAnswerThatComesAtTheSecondSendIsTheResult();
    void aLimitIsWaitedForAsTheServerSays();
    void aRefusedKeyIsSentOnce();
    void anErrorPageOfTheGatewayIsToldAsItIs();
    void aPollOfFiveRequestsUsesOneConnection();
    void aKeyThatCannotStandInAHeaderIsNeitherSentNorLogged();
    void anUntrustedServerLearnsNothing();
};

void NotionOverNetworkTest::anOperationReachesTheServerAsNotionWantsIt()
{
    Bench bench;
    bench.server.reply(RawHttpServer::response(200, R"({"results":[{"id":"a"}]})"_ba));
    const auto rows = await(bench.api.queryDatabase(u"d1"_s));
    QCOMPARE(rows->size(), 1);
    const auto &seen = bench.server.requests.first();
    QCOMPARE(seen.line(), "POST /v1/databases/d1/query HTTP/1.1"_ba);
    QCOMPARE(seen.header("Host"_ba), std::optional("api.notion.com"_ba));
    QCOMPARE(seen.header("Authorization"_ba), std::optional("Bearer ntn_test"_ba));
    QCOMPARE(seen.header("Notion-Version"_ba), std::optional("2022-06-28"_ba));
    QCOMPARE(seen.header("Content-Type"_ba), std::optional("application/json"_ba));
    QCOMPARE(seen.body, R"({"page_size":100})"_ba);
    QVERIFY(bench.log.lines.isEmpty());
}

void NotionOverNetworkTest::aRowInAnotherScriptComesAndGoesIntact()
{
    Bench bench;
    const auto text = R"({"properties":{"Größe":{"select":{"name":"日本 ✓ 👍"}}}})"_ba;
    bench.server.reply(RawHttpServer::response(200, text));
    const auto properties = QJsonDocument::fromJson(text).object().value("properties"_L1).toObject();
    const auto page = await(bench.api.updatePage(u"p1"_s, properties));
    QCOMPARE(bench.server.requests.first().body, text);
    QCOMPARE(page->value("properties"_L1).toObject(), properties);
}

void NotionOverNetworkTest::anIdentifierGoesOverTheNetworkAsItIs_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("letters, digits and dashes") << u"1D6B-1040"_s << "/v1/databases/1D6B-1040/query"_ba;
    QTest::newRow("escapes that none needs") << u"%41%2D%7E"_s << "/v1/databases/%41%2D%7E/query"_ba;
    QTest::newRow("escapes in small letters") << u"a%2fb%c3%a9"_s << "/v1/databases/a%2fb%c3%a9/query"_ba;
    QTest::newRow("dots and slashes") << u"a/./../b//c"_s << "/v1/databases/a/./../b//c/query"_ba;
    QTest::newRow("a question mark begins a query") << u"a?b=%41"_s << "/v1/databases/a?b=%41/query"_ba;
    QTest::newRow("what a hash sign begins stays here") << u"a#b"_s << "/v1/databases/a"_ba;
    QTest::newRow("what is not ASCII is escaped") << u"Größe"_s << "/v1/databases/Gr%C3%B6%C3%9Fe/query"_ba;
    QTest::newRow("an empty identifier") << QString() << "/v1/databases//query"_ba;
}

void NotionOverNetworkTest::anIdentifierGoesOverTheNetworkAsItIs()
{
    QFETCH(QString, id);
    QFETCH(QByteArray, target);
    Bench bench;
    bench.server.reply(RawHttpServer::response(200));
    QVERIFY(await(bench.api.queryDatabase(id)));
    QCOMPARE(bench.server.requests.first().line(), "POST " + target + " HTTP/1.1");
}

void NotionOverNetworkTest::anAnswerThatIsLostIsAskedForThreeTimesInAll_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("words");
    const auto nothing = u"api.notion.com closed the connection without an answer"_s;
    const auto lost = u"The connection to api.notion.com was lost"_s;
    QTest::newRow("nothing of it came") << ""_ba << nothing;
    QTest::newRow("half its headers came") << "HTTP/1.1 200 OK\r\nServer: x\r\n"_ba << nothing;
    QTest::newRow("half its body came") << "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}"_ba << lost;
    QTest::newRow("half a chunk came") << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\n{}"_ba << lost;
}

void NotionOverNetworkTest::anAnswerThatIsLostIsAskedForThreeTimesInAll()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, words);
    Bench bench;
    bench.server.reply(bytes, After::close);
    const auto answer = await(bench.api.createPage({}, {}));
    QCOMPARE(answer.error().errorDescription(), u"Network error: "_s + words);
    QCOMPARE(bench.server.requests.size(), 3);
    QCOMPARE(bench.errors(),
             (QStringList{u"API network error on /pages, attempt 1/3: "_s + words,
                          u"API network error on /pages, attempt 2/3: "_s + words,
                          u"API network error on /pages, attempt 3/3: "_s + words}));
}

void NotionOverNetworkTest::aKeptConnectionThatEndsWithoutAnAnswerCountsAsOneSend()
{
    Bench bench;
    bench.server.reply(RawHttpServer::response(200));
    bench.server.reply(""_ba, After::close);
    QVERIFY(await(bench.api.getMe()));
    QVERIFY(!await(bench.api.createPage({}, {})));
    QCOMPARE(bench.server.requests.size(), 1 + 3);
    QCOMPARE(bench.errors().size(), 3);
}

void NotionOverNetworkTest::aPageIsCreatedOnceWhenTheServerIsWell()
{
    Bench bench;
    bench.server.reply(RawHttpServer::response(200, R"({"id":"new"})"_ba));
    QVERIFY(await(bench.api.createPage({}, {})));
    QCOMPARE(bench.server.requests.size(), 1);
}

void NotionOverNetworkTest::anAnswerThatComesAtTheSecondSendIsTheResult()
{
    Bench bench;
    bench.server.reply(""_ba, After::close);
    bench.server.reply(RawHttpServer::response(200, R"({"id":"new"})"_ba));
    const auto page = await(bench.api.createPage({}, {}));
    QCOMPARE(page->value("id"_L1).toString(), u"new"_s);
    QCOMPARE(bench.server.requests.size(), 2);
    QCOMPARE(bench.server.requests.at(0).body, bench.server.requests.at(1).body);
    QCOMPARE(bench.errors().size(), 1);
}

void NotionOverNetworkTest::aLimitIsWaitedForAsTheServerSays()
{
    Bench bench;
    bench.server.reply(RawHttpServer::response(429, "{}"_ba, "retry-after:  7 \r\n"_ba));
    bench.server.reply(RawHttpServer::response(529));
    bench.server.reply(RawHttpServer::response(200));
    QVERIFY(await(bench.api.getMe()));
    QCOMPARE(bench.errors(),
             (QStringList{u"API rate limited (429), attempt 1/3, retry after 7.0s"_s,
                          u"API server error 529, attempt 2/3"_s}));
    QCOMPARE(bench.clock.waits, (QList<FakeClock::Wait>{{FakeClock::Kind::pause, 7}, {FakeClock::Kind::pause, 2}}));
    QCOMPARE(bench.server.connectionCount, 1);
}

void NotionOverNetworkTest::aRefusedKeyIsSentOnce()
{
    Bench bench;
    bench.server.reply(RawHttpServer::response(401));
    QCOMPARE(await(bench.api.getMe()).error().errorDescription(), u"Invalid API key"_s);
    QCOMPARE(bench.server.requests.size(), 1);
}

void NotionOverNetworkTest::anErrorPageOfTheGatewayIsToldAsItIs()
{
    Bench bench;
    bench.server.reply(RawHttpServer::response(403, "<html>blocked</html>"_ba, "Content-Type: text/html\r\n"_ba));
    QCOMPARE(await(bench.api.getMe()).error().errorDescription(), u"Server error 403: <html>blocked</html>"_s);
    QCOMPARE(bench.server.requests.size(), 3);
    QVERIFY(bench.log.lines.isEmpty());
}

void NotionOverNetworkTest::aPollOfFiveRequestsUsesOneConnection()
{
    Bench bench;
    bench.server.reply(RawHttpServer::response(200));
    QVERIFY(await(bench.api.queryDatabase(u"tracker"_s)));
    for (const auto &page : {u"task"_s, u"project"_s, u"client"_s})
        QVERIFY(await(bench.api.getPage(page)));
    QVERIFY(await(bench.api.queryDatabase(u"tasks"_s)));
    QCOMPARE(bench.server.requests.size(), 5);
    QCOMPARE(bench.server.connectionCount, 1);
}

void NotionOverNetworkTest::aKeyThatCannotStandInAHeaderIsNeitherSentNorLogged()
{
    Bench bench;
    bench.settings.settings.setApiKey(u"ntn_secret\r\nX-Injected: 1"_s);
    const auto words = await(bench.api.getMe()).error().errorDescription();
    QCOMPARE(words, u"Network error: The header Authorization holds a character that cannot be sent"_s);
    QCOMPARE(bench.server.connectionCount, 0);
    QCOMPARE(bench.errors().size(), 3);
    for (const auto &line : bench.errors())
        QVERIFY(!line.contains(u"ntn_secret"_s));
}

void NotionOverNetworkTest::anUntrustedServerLearnsNothing()
{
    Bench bench;
    const TestAuthority other;
    bench.transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, bench.server.port(), other.caFile());
    bench.server.reply(RawHttpServer::response(200));
    const auto words = await(bench.api.getMe()).error().errorDescription();
    QVERIFY2(words.startsWith(u"Network error: The certificate of api.notion.com is not trusted"_s), qPrintable(words));
    QCOMPARE(bench.server.requests.size(), 0);
}

} // namespace korvo

QTEST_GUILESS_MAIN(korvo::NotionOverNetworkTest)
#include "NotionOverNetworkTest.moc"
