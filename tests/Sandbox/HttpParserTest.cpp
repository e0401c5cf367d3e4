#include "sandbox/HttpParser.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo::sandbox;

class HttpParserTest : public QObject {
    Q_OBJECT
private slots:
    void aRequestMayComeByteByByte();
    void requestsFollowOneAnother();
    void chunksAreJoined();
    void headersAreFoundInAnyCase();
    void badBytesAreRefused_data();
    void badBytesAreRefused();
    void aSenderThatWaitsIsNoticed();
    void connectionsStayOpenAsAsked_data();
    void connectionsStayOpenAsAsked();
};

void HttpParserTest::aRequestMayComeByteByByte()
{
    const QByteArray bytes = "POST /v1/pages?x=1 HTTP/1.1\r\nHost: h\r\nContent-Length: 5\r\n\r\nhello";
    HttpParser parser;
    for (qsizetype i = 0; i < bytes.size() - 1; ++i) {
        parser.feed(bytes.mid(i, 1));
        QVERIFY(!parser.next());
    }
    parser.feed(bytes.right(1));
    const auto request = parser.next();
    QVERIFY(request);
    QCOMPARE(request->method, "POST"_ba);
    QCOMPARE(request->path(), "/v1/pages"_ba);
    QCOMPARE(request->target, "/v1/pages?x=1"_ba);
    QCOMPARE(request->body, "hello"_ba);
    QVERIFY(!parser.next());
}

void HttpParserTest::requestsFollowOneAnother()
{
    HttpParser parser;
    parser.feed("GET /a HTTP/1.1\r\n\r\n\r\nPOST /b HTTP/1.1\r\nContent-Length: 2\r\n\r\nxyGET /c HTTP/1.1\r\n\r\n");
    QCOMPARE(parser.next()->target, "/a"_ba);
    QCOMPARE(parser.next()->body, "xy"_ba);
    QCOMPARE(parser.next()->target, "/c"_ba);
    QVERIFY(!parser.next());
    QCOMPARE(parser.errorStatus(), 0);
}

void HttpParserTest::chunksAreJoined()
{
    HttpParser parser;
    parser.feed("POST /b HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n3;x=y\r\nabc\r\n");
    QVERIFY(!parser.next());
    parser.feed("2\r\nde\r\n0\r\n\r\nGET /c HTTP/1.1\r\n\r\n");
    QCOMPARE(parser.next()->body, "abcde"_ba);
    QCOMPARE(parser.next()->target, "/c"_ba);
}

void HttpParserTest::headersAreFoundInAnyCase()
{
    HttpParser parser;
    parser.feed("GET / HTTP/1.1\r\nnotion-VERSION:  2022-06-28 \r\nEmpty:\r\n\r\n");
    const auto request = parser.next();
    QCOMPARE(request->header("Notion-Version"), "2022-06-28"_ba);
    QVERIFY(!request->header("empty").isNull());
    QVERIFY(request->header("empty").isEmpty());
    QVERIFY(request->header("absent").isNull());
}

void HttpParserTest::badBytesAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status");
    QTest::newRow("not HTTP") << "\x16\x03\x01 what\r\n\r\n"_ba << 400;
    QTest::newRow("HTTP/2") << "PRI * HTTP/2.0\r\n\r\n"_ba << 400;
    QTest::newRow("a header without a colon") << "GET / HTTP/1.1\r\nHost\r\n\r\n"_ba << 400;
    QTest::newRow("a length that is no number") << "GET / HTTP/1.1\r\nContent-Length: x\r\n\r\n"_ba << 400;
    QTest::newRow("a negative length") << "GET / HTTP/1.1\r\nContent-Length: -1\r\n\r\n"_ba << 400;
    QTest::newRow("length and chunks") << "GET / HTTP/1.1\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n"_ba
                                       << 400;
    QTest::newRow("an unknown coding") << "GET / HTTP/1.1\r\nTransfer-Encoding: gzip\r\n\r\n"_ba << 400;
    QTest::newRow("a chunk size that is no number")
        << "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n\r\n"_ba << 400;
    QTest::newRow("a huge body") << "POST / HTTP/1.1\r\nContent-Length: 99999999999\r\n\r\n"_ba << 413;
    QTest::newRow("a huge chunk") << "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n7fffffffffffffff\r\n"_ba
                                  << 413;
    QTest::newRow("a head without an end") << QByteArray(HttpParser::largestHead + 1, 'x') << 413;
}

void HttpParserTest::badBytesAreRefused()
{
    QFETCH(QByteArray, bytes);
    HttpParser parser;
    parser.feed(bytes);
    QVERIFY(!parser.next());
    QTEST(parser.errorStatus(), "status");
    parser.feed("GET / HTTP/1.1\r\n\r\n");
    QVERIFY(!parser.next());
}

void HttpParserTest::aSenderThatWaitsIsNoticed()
{
    HttpParser parser;
    parser.feed("POST / HTTP/1.1\r\nContent-Length: 1\r\nExpect: 100-continue\r\n\r\n");
    QVERIFY(!parser.next());
    QVERIFY(parser.takeContinueExpected());
    QVERIFY(!parser.takeContinueExpected());
    parser.feed("x");
    QCOMPARE(parser.next()->body, "x"_ba);
}

void HttpParserTest::connectionsStayOpenAsAsked_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("keepsAlive");
    QTest::newRow("1.1") << "GET / HTTP/1.1\r\n\r\n"_ba << true;
    QTest::newRow("1.1 with close") << "GET / HTTP/1.1\r\nConnection: Close\r\n\r\n"_ba << false;
    QTest::newRow("1.0") << "GET / HTTP/1.0\r\n\r\n"_ba << false;
}

void HttpParserTest::connectionsStayOpenAsAsked()
{
    QFETCH(QByteArray, head);
    HttpParser parser;
    parser.feed(head);
    QTEST(parser.next()->keepsAlive(), "keepsAlive");
}

QTEST_GUILESS_MAIN(HttpParserTest)
#include "HttpParserTest.moc"
