#include "Services/CurlTransport.h"

#include "Fakes/Await.h"
#include "Fakes/RawHttpServer.h"
#include "Fakes/TestAuthority.h"

#include <QFileInfo>
#include <QSemaphore>
#include <QTcpServer>
#include <QTest>
#include <QTimer>

#include <atomic>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <netdb.h>
#include <zlib.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto slowName = "slow.invalid";
QSemaphore slowLookups;               ///< Each unit lets one look-up of that name end.
std::atomic<int> lookupsUnderWay = 0; ///< Of that name.

std::atomic<long> suspendedMilliseconds = 0; ///< For which the machine seems to have slept.

} // namespace

/// In place of the C library's: the clock that goes on in suspension is ahead by what the test says.
extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    using Function = int (*)(clockid_t, timespec *);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = real(clock, time);
    if (clock == CLOCK_BOOTTIME) {
        constexpr long second = 1000000000;
        const long nanoseconds = time->tv_nsec + suspendedMilliseconds % 1000 * 1000000;
        time->tv_sec += suspendedMilliseconds / 1000 + nanoseconds / second;
        time->tv_nsec = nanoseconds % second;
    }
    return result;
}

/// In place of the C library's: a name server that takes its time over one name.
extern "C" int getaddrinfo(const char *node, const char *service, const addrinfo *hints, addrinfo **result)
{
    if (node && std::strcmp(node, slowName) == 0) {
        ++lookupsUnderWay;
        slowLookups.acquire();
        --lookupsUnderWay;
        return EAI_NONAME;
    }
    using Function = int (*)(const char *, const char *, const addrinfo *, addrinfo **);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(node, service, hints, result);
}

namespace korvo {

namespace {

using Answer = Result<HttpResponse, HttpError>;
using After = RawHttpServer::After;

constexpr auto host = "api.notion.com";

HttpRequest get(const QUrl &url)
{
    HttpRequest request;
    request.method = "GET";
    request.url = url;
    return request;
}

HttpRequest post(const QUrl &url, const QByteArray &body)
{
    HttpRequest request;
    request.method = "POST";
    request.url = url;
    request.headers = {{"Content-Type"_ba, "application/json"_ba}};
    request.body = body;
    return request;
}

Answer fetch(CurlTransport &transport, const HttpRequest &request)
{
    return await(transport.send(request, {}));
}

/// What came back, as "status body" or the error's words.
QString told(const Answer &answer)
{
    return answer ? QString::number(answer->status) + u' ' + QString::fromUtf8(answer->body)
                  : answer.error().description;
}

/// Sets a variable of the environment for as long as it lives.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char *name, const QByteArray &value) :
        m_name(name),
        m_wasSet(qEnvironmentVariableIsSet(name)),
        m_former(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~EnvironmentVariable() { m_wasSet ? qputenv(m_name, m_former) : qunsetenv(m_name); }
    Q_DISABLE_COPY_MOVE(EnvironmentVariable)

private:
    const char *const m_name;
    const bool m_wasSet;
    const QByteArray m_former;
};

QByteArray gzipped(const QByteArray &text)
{
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    QByteArray packed(qsizetype(deflateBound(&stream, uLong(text.size()))), '\0');
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(text.constData()));
    stream.avail_in = uInt(text.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = uInt(packed.size());
    deflate(&stream, Z_FINISH);
    packed.truncate(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

QByteArray chunk(const QByteArray &data)
{
    return QByteArray::number(data.size(), 16) + "\r\n" + data + "\r\n";
}

} // namespace

class CurlTransportTest : public QObject {
    Q_OBJECT
private slots:
    void anyStatusIsAResponse_data();
    void anyStatusIsAResponse();
    void aWholeAnswerInAnyFormIsRead_data();
    void aWholeAnswerInAnyFormIsRead();
    void anAnswerThatIsNotWholeIsAnErrorAfterOneSend_data();
    void anAnswerThatIsNotWholeIsAnErrorAfterOneSend();
    void headersAreFoundInAnyCase();
    void headersOfAnInterimAnswerAndTrailersAreLeftOut();
    void aFoldedHeaderIsOneHeader();
    void aGetHasItsContentTypeAndNoBodyAndNoLength();
    void aBodyArrivesAsItIs_data();
    void aBodyArrivesAsItIs();
    void aRequestSaysWhatItWants();
    void aPathGoesOutAsItIs();
    void aHeaderThatWouldBeginAnotherIsNotSent_data();
    void aHeaderThatWouldBeginAnotherIsNotSent();
    void aHeaderInUtf8AndAnEmptyOneAreSent();
    void aRedirectIsNotFollowed();
    void anAnswerUpToTheLimitIsRead();
    void anAnswerBeyondTheLimitIsAnError_data();
    void anAnswerBeyondTheLimitIsAnError();
    void headersWithoutEndAreAnError();
    void aRefusedConnectionIsAnError();
    void aNameThatDoesNotResolveIsAnError();
    void anotherProtocolThanHttpIsRefused();
    void aServerThatNeverAnswersTimesOut();
    void aServerThatTricklesTimesOutAllTheSame();
    void sequentialRequestsShareOneConnection_data();
    void sequentialRequestsShareOneConnection();
    void requestsInFlightTogetherAllEnd();
    void aConnectionClosedWhileIdleCostsNothing_data();
    void aConnectionClosedWhileIdleCostsNothing();
    void aConnectionFromBeforeASuspensionIsNotUsedAgain_data();
    void aConnectionFromBeforeASuspensionIsNotUsedAgain();
    void aSuspensionLeavesTheRequestsUnderWayAlone();
    void aReusedConnectionThatEndsWithoutAnAnswerIsNotTriedAgain_data();
    void aReusedConnectionThatEndsWithoutAnAnswerIsNotTriedAgain();
    void nextRequestAfterAFailureSucceeds();
    void aStopEndsATransferAtOnce();
    void aStopBeforehandSendsNothing();
    void aStopAfterTheAnswerChangesNothing();
    void aSlowNameServerHoldsUpNeitherTheLoopNorAStop();
    void transfersUnderWayAreCancelledWhenTheTransportGoes();
    void aCertificateOfATrustedAuthorityIsAccepted();
    void theAuthoritiesOfTheFolderAreTrustedIfTheyCanBeLookedUp_data();
    void theAuthoritiesOfTheFolderAreTrustedIfTheyCanBeLookedUp();
    void aCertificateThatIsNotRightIsRefused_data();
    void aCertificateThatIsNotRightIsRefused();
    void aSelfSignedCertificateIsRefused();
    void onlyTheRedirectedHostIsLedElsewhere();
    void aRedirectedHostIsReachedPastTheProxyOfTheEnvironment_data();
    void aRedirectedHostIsReachedPastTheProxyOfTheEnvironment();
    void theProcessHasOneSessionThatOutlivesItsRequests();
};

void CurlTransportTest::anyStatusIsAResponse_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {200, 201, 204, 299, 304, 400, 401, 403, 404, 409, 429, 500, 502, 503, 529, 600})
        QTest::addRow("%d", status) << status;
}

void CurlTransportTest::anyStatusIsAResponse()
{
    QFETCH(int, status);
    RawHttpServer server;
    server.reply(RawHttpServer::response(status, status == 204 || status == 304 ? ""_ba : "{}"_ba));
    CurlTransport transport;
    const auto answer = fetch(transport, get(server.url()));
    QVERIFY2(answer, qPrintable(told(answer)));
    QCOMPARE(answer->status, status);
    QCOMPARE(server.requests.size(), 1);
}

void CurlTransportTest::aWholeAnswerInAnyFormIsRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    const auto text = uR"({"name":"Größe ✓ 日本"})"_s;
    const auto body = text.toUtf8();
    const auto ok = u"200 "_s + text;
    const auto packed = gzipped(body);

    QTest::newRow("with its length") << RawHttpServer::response(200, body) << ok;
    QTest::newRow("up to the end of the connection") << "HTTP/1.1 200 OK\r\n\r\n" + body << ok;
    QTest::newRow("from an HTTP/1.0 server") << "HTTP/1.0 200 OK\r\n\r\n" + body << ok;
    QTest::newRow("in chunks") << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk(body.first(12))
            + chunk(body.sliced(12))
            + "0\r\n\r\n" << ok;
    QTest::newRow("in gzip") << RawHttpServer::response(200, packed, "Content-Encoding: gzip\r\n"_ba) << ok;
    QTest::newRow("in gzip and chunks")
        << "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk(packed.first(20))
            + chunk(packed.sliced(20)) + "0\r\n\r\n"
        << ok;
    QTest::newRow("after 100 Continue") << "HTTP/1.1 100 Continue\r\n\r\n" + RawHttpServer::response(200, body) << ok;
    QTest::newRow("after 103 Early Hints")
        << "HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n" + RawHttpServer::response(200, body) << ok;
    QTest::newRow("with more after its length, which is not part of it")
        << "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}more"_ba << u"200 {}"_s;
    QTest::newRow("an HTML page") << RawHttpServer::response(502, "<html>"_ba) << u"502 <html>"_s;
    QTest::newRow("without a body") << RawHttpServer::response(200, ""_ba) << u"200 "_s;
}

void CurlTransportTest::aWholeAnswerInAnyFormIsRead()
{
    QFETCH(QByteArray, bytes);
    RawHttpServer server;
    server.reply(bytes, After::close);
    CurlTransport transport;
    QTEST(told(fetch(transport, get(server.url()))), "expected");
    QCOMPARE(server.requests.size(), 1);
}

void CurlTransportTest::anAnswerThatIsNotWholeIsAnErrorAfterOneSend_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("words");
    const auto nothing = u"127.0.0.1 closed the connection without an answer"_s;
    const auto lost = u"The connection to 127.0.0.1 was lost"_s;
    QTest::newRow("no byte") << ""_ba << nothing;
    QTest::newRow("half a status line") << "HTTP/1."_ba << nothing;
    QTest::newRow("half the headers") << "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"_ba << nothing;
    QTest::newRow("half a header") << "HTTP/1.1 200 OK\r\nContent-Len"_ba << nothing;
    QTest::newRow("only an interim answer") << "HTTP/1.1 100 Continue\r\n\r\n"_ba << nothing;
    QTest::newRow("an interim answer and half the next head")
        << "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nServer: x\r\n"_ba << nothing;
    QTest::newRow("half the body") << "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"a\":"_ba << lost;
    QTest::newRow("a chunk that is cut") << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n10\r\n{\"a\":"_ba
                                         << lost;
    QTest::newRow("no last chunk") << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + chunk("{}"_ba) << lost;
    QTest::newRow("a chunk without a size")
        << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n{}"_ba << QString();
    QTest::newRow("gzip that is none") << RawHttpServer::response(200, "plain text"_ba, "Content-Encoding: gzip\r\n"_ba)
                                       << QString();
    QTest::newRow("no HTTP at all") << "SSH-2.0-OpenSSH_9.2\r\n"_ba << QString();
    QTest::newRow("a status that is no number") << "HTTP/1.1 abc\r\n\r\n"_ba << QString();
}

void CurlTransportTest::anAnswerThatIsNotWholeIsAnErrorAfterOneSend()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, words);
    RawHttpServer server;
    server.reply(bytes, After::close);
    CurlTransport transport;
    const auto answer = fetch(transport, post(server.url(), "{}"_ba));
    QVERIFY2(!answer, qPrintable(told(answer)));
    QVERIFY(!answer.error().description.isEmpty());
    QVERIFY(!answer.error().isCancelled);
    if (!words.isEmpty())
        QCOMPARE(answer.error().description, words);
    QCOMPARE(server.requests.size(), 1);
}

void CurlTransportTest::headersAreFoundInAnyCase()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(429, "{}"_ba, "rEtRy-AfTeR:  7 \r\nX-Empty:\r\n"_ba));
    CurlTransport transport;
    const auto answer = fetch(transport, get(server.url()));
    QCOMPARE(answer->header("Retry-After"_ba), std::optional("7"_ba));
    QCOMPARE(answer->header("x-empty"_ba), std::optional(""_ba));
    QCOMPARE(answer->header("X-Missing"_ba), std::nullopt);
}

void CurlTransportTest::headersOfAnInterimAnswerAndTrailersAreLeftOut()
{
    RawHttpServer server;
    server.reply("HTTP/1.1 103 Early Hints\r\nRetry-After: 1\r\n\r\n"
                 "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nTrailer: Retry-After\r\n\r\n"
                 + chunk("{}"_ba) + "0\r\nRetry-After: 2\r\n\r\n");
    CurlTransport transport;
    const auto answer = fetch(transport, get(server.url()));
    QCOMPARE(told(answer), u"200 {}"_s);
    QCOMPARE(answer->header("Retry-After"_ba), std::nullopt);
    QVERIFY(answer->header("Trailer"_ba));
}

void CurlTransportTest::aFoldedHeaderIsOneHeader()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200, "{}"_ba, "X-Long: one\r\n  two\r\n"_ba));
    CurlTransport transport;
    QCOMPARE(fetch(transport, get(server.url()))->header("X-Long"_ba), std::optional("one two"_ba));
}

void CurlTransportTest::aGetHasItsContentTypeAndNoBodyAndNoLength()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    auto request = get(server.url(u"/v1/users/me"_s));
    request.headers = {{"Content-Type"_ba, "application/json"_ba}};
    fetch(transport, request);
    const auto &seen = server.requests.first();
    QCOMPARE(seen.line(), "GET /v1/users/me HTTP/1.1"_ba);
    QCOMPARE(seen.header("Content-Type"_ba), std::optional("application/json"_ba));
    QCOMPARE(seen.header("Content-Length"_ba), std::nullopt);
    QCOMPARE(seen.header("Transfer-Encoding"_ba), std::nullopt);
    QCOMPARE(seen.body, QByteArray());
}

void CurlTransportTest::aBodyArrivesAsItIs_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("JSON in UTF-8") << "POST"_ba
                                   << R"({"name":"Größe ✓"})"_ba;
    QTest::newRow("a PATCH") << "PATCH"_ba
                             << R"({"properties":{}})"_ba;
    QTest::newRow("nothing") << "POST"_ba
                             << ""_ba;
    QTest::newRow("with a zero byte") << "POST"_ba << QByteArray("a\0b", 3);
    QTest::newRow("two megabytes, sent without asking first") << "POST"_ba << QByteArray(2 * 1024 * 1024, 'x');
}

void CurlTransportTest::aBodyArrivesAsItIs()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, body);
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    auto request = post(server.url(u"/v1/pages"_s), body);
    request.method = method;
    QCOMPARE(told(fetch(transport, request)), u"200 {}"_s);
    const auto &seen = server.requests.first();
    QCOMPARE(seen.line(), method + " /v1/pages HTTP/1.1");
    QCOMPARE(seen.header("Content-Length"_ba), std::optional(QByteArray::number(body.size())));
    QCOMPARE(seen.header("Content-Type"_ba), std::optional("application/json"_ba));
    QCOMPARE(seen.header("Expect"_ba), std::nullopt);
    QVERIFY(seen.body == body); // Two megabytes are not worth printing.
}

void CurlTransportTest::aRequestSaysWhatItWants()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    auto request = post(server.url(), "{}"_ba);
    request.headers = {{"Authorization"_ba, "Bearer ntn_test"_ba}, {"Notion-Version"_ba, "2022-06-28"_ba}};
    fetch(transport, request);
    const auto &seen = server.requests.first();
    QCOMPARE(seen.header("Authorization"_ba), std::optional("Bearer ntn_test"_ba));
    QCOMPARE(seen.header("Notion-Version"_ba), std::optional("2022-06-28"_ba));
    QVERIFY(seen.header("Accept-Encoding"_ba).value_or(""_ba).contains("gzip"));
    QVERIFY(seen.header("User-Agent"_ba).value_or(""_ba).startsWith("Korvo"));
    QCOMPARE(seen.header("Content-Type"_ba), std::nullopt); // Not of the client's own choice.
}

void CurlTransportTest::aPathGoesOutAsItIs()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    fetch(transport, get(server.url(u"/v1/pages/a/../b%20c[1]/?d"_s)));
    QCOMPARE(server.requests.first().line(), "GET /v1/pages/a/../b%20c[1]/?d HTTP/1.1"_ba);
}

void CurlTransportTest::aHeaderThatWouldBeginAnotherIsNotSent_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("a line break") << "Bearer key\r\nX-Injected: 1"_ba;
    QTest::newRow("a line feed at the end, as from a file") << "Bearer key\n"_ba;
    QTest::newRow("a zero byte") << QByteArray("Bearer key\0", 11);
    QTest::newRow("a control character") << "Bearer key\x1b"_ba;
}

void CurlTransportTest::aHeaderThatWouldBeginAnotherIsNotSent()
{
    QFETCH(QByteArray, value);
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    auto request = get(server.url());
    request.headers = {{"Authorization"_ba, value}};
    const auto answer = fetch(transport, request);
    QVERIFY(!answer);
    QCOMPARE(answer.error().description, u"The header Authorization holds a character that cannot be sent"_s);
    QCOMPARE(server.connectionCount, 0);
}

void CurlTransportTest::aHeaderInUtf8AndAnEmptyOneAreSent()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    auto request = get(server.url());
    request.headers = {{"Authorization"_ba, "Bearer schlüssel"_ba}, {"X-Empty"_ba, ""_ba}};
    QCOMPARE(told(fetch(transport, request)), u"200 {}"_s);
    QCOMPARE(server.requests.first().header("Authorization"_ba), std::optional("Bearer schlüssel"_ba));
    QCOMPARE(server.requests.first().header("X-Empty"_ba), std::optional(""_ba));
}

void CurlTransportTest::aRedirectIsNotFollowed()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(302, "moved"_ba, "Location: /elsewhere\r\n"_ba));
    CurlTransport transport;
    const auto answer = fetch(transport, get(server.url()));
    QCOMPARE(told(answer), u"302 moved"_s);
    QCOMPARE(answer->header("Location"_ba), std::optional("/elsewhere"_ba));
    QCOMPARE(server.requests.size(), 1);
}

void CurlTransportTest::anAnswerUpToTheLimitIsRead()
{
    RawHttpServer server;
    const QByteArray body(32 * 1024 * 1024, 'x');
    server.reply(RawHttpServer::response(200, body));
    CurlTransport transport;
    const auto answer = fetch(transport, get(server.url()));
    QVERIFY(answer);
    QVERIFY(answer->body == body);
}

void CurlTransportTest::anAnswerBeyondTheLimitIsAnError_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray body(50 * 1024 * 1024, 'x');
    QTest::newRow("fifty megabytes") << RawHttpServer::response(200, body);
    QTest::newRow("fifty megabytes, of which gzip made little")
        << RawHttpServer::response(200, gzipped(body), "Content-Encoding: gzip\r\n"_ba);
}

void CurlTransportTest::anAnswerBeyondTheLimitIsAnError()
{
    QFETCH(QByteArray, bytes);
    RawHttpServer server;
    server.reply(bytes);
    CurlTransport transport;
    QCOMPARE(told(fetch(transport, get(server.url()))), u"The answer of 127.0.0.1 is too large"_s);
    QTRY_COMPARE(server.openCount(), 0); // What is left of it is not waited for.
    QCOMPARE(server.requests.size(), 1);
}

void CurlTransportTest::headersWithoutEndAreAnError()
{
    RawHttpServer server;
    server.reply("HTTP/1.1 200 OK\r\n" + ("X-Filler: " + QByteArray(1000, 'x') + "\r\n").repeated(2000));
    CurlTransport transport;
    QVERIFY(!fetch(transport, get(server.url())));
    QCOMPARE(server.requests.size(), 1);
}

void CurlTransportTest::aRefusedConnectionIsAnError()
{
    RawHttpServer server;
    const auto url = server.url();
    server.stopListening();
    CurlTransport transport;
    QCOMPARE(told(fetch(transport, get(url))), u"Could not connect to 127.0.0.1"_s);
}

void CurlTransportTest::aNameThatDoesNotResolveIsAnError()
{
    CurlTransport transport;
    QCOMPARE(told(fetch(transport, get(QUrl(u"https://does-not-exist.invalid/"_s)))),
             u"The server does-not-exist.invalid could not be found"_s);
}

void CurlTransportTest::anotherProtocolThanHttpIsRefused()
{
    CurlTransport transport;
    const auto answer = fetch(transport, get(QUrl(u"file:///etc/hostname"_s)));
    QVERIFY(!answer);
    QVERIFY(!answer.error().description.isEmpty());
}

void CurlTransportTest::aServerThatNeverAnswersTimesOut()
{
    RawHttpServer server;
    CurlTransport transport;
    auto request = post(server.url(), "{}"_ba);
    request.timeout = std::chrono::milliseconds(200);
    const auto answer = fetch(transport, request);
    QCOMPARE(told(answer), u"The request timed out"_s);
    QVERIFY(!answer.error().isCancelled);
    QVERIFY(server.requests.size() <= 1);
}

void CurlTransportTest::aServerThatTricklesTimesOutAllTheSame()
{
    RawHttpServer server;
    server.reply("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n"_ba);
    QTimer trickle;
    connect(&trickle, &QTimer::timeout, &trickle, [&server] {
        if (!server.requests.isEmpty())
            server.write("x"_ba);
    });
    trickle.start(10);
    CurlTransport transport;
    auto request = get(server.url());
    request.timeout = std::chrono::milliseconds(200);
    QCOMPARE(told(fetch(transport, request)), u"The request timed out"_s);
    QVERIFY(server.requests.size() <= 1);
}

void CurlTransportTest::sequentialRequestsShareOneConnection_data()
{
    QTest::addColumn<bool>("isTls");
    QTest::newRow("over TLS") << true;
    QTest::newRow("without TLS") << false;
}

void CurlTransportTest::sequentialRequestsShareOneConnection()
{
    QFETCH(bool, isTls);
    const TestAuthority authority;
    RawHttpServer server(isTls ? std::optional(authority.issue(host)) : std::nullopt);
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(), authority.caFile());
    const QUrl url((isTls ? u"https://"_s : u"http://"_s) + QString::fromLatin1(host));
    for (int i = 0; i < 5; ++i)
        QCOMPARE(told(fetch(transport, get(url))), u"200 {}"_s);
    QCOMPARE(server.requests.size(), 5);
    QCOMPARE(server.connectionCount, 1);
}

void CurlTransportTest::requestsInFlightTogetherAllEnd()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    QList<Outcome<Answer>> outcomes;
    for (int i = 0; i < 20; ++i)
        outcomes.append(follow(transport.send(get(server.url()), {})));
    for (const auto &outcome : std::as_const(outcomes)) {
        QTRY_VERIFY(*outcome);
        QCOMPARE(told(**outcome), u"200 {}"_s);
    }
    QCOMPARE(server.requests.size(), 20);
}

void CurlTransportTest::aConnectionClosedWhileIdleCostsNothing_data()
{
    sequentialRequestsShareOneConnection_data();
}

void CurlTransportTest::aConnectionClosedWhileIdleCostsNothing()
{
    QFETCH(bool, isTls);
    const TestAuthority authority;
    RawHttpServer server(isTls ? std::optional(authority.issue(host)) : std::nullopt);
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(), authority.caFile());
    const QUrl url((isTls ? u"https://"_s : u"http://"_s) + QString::fromLatin1(host));
    QCOMPARE(told(fetch(transport, get(url))), u"200 {}"_s);
    server.closeConnections();
    QTRY_COMPARE(server.openCount(), 0);
    QCOMPARE(told(fetch(transport, post(url, "{}"_ba))), u"200 {}"_s);
    QCOMPARE(server.requests.size(), 2);
    QCOMPARE(server.connectionCount, 2);
}

void CurlTransportTest::aConnectionFromBeforeASuspensionIsNotUsedAgain_data()
{
    QTest::addColumn<bool>("isTls");
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<int>("connectionCount");
    QTest::newRow("three hours, over TLS") << true << 3 * 3600 * 1000 << 2;
    QTest::newRow("three hours, without TLS") << false << 3 * 3600 * 1000 << 2;
    QTest::newRow("a little over a second") << true << 1001 << 2;
    QTest::newRow("no more than two clocks may differ") << true << 900 << 1;
}

void CurlTransportTest::aConnectionFromBeforeASuspensionIsNotUsedAgain()
{
    QFETCH(bool, isTls);
    QFETCH(int, milliseconds);
    const TestAuthority authority;
    RawHttpServer server(isTls ? std::optional(authority.issue(host)) : std::nullopt);
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(), authority.caFile());
    const QUrl url((isTls ? u"https://"_s : u"http://"_s) + QString::fromLatin1(host));
    QCOMPARE(told(fetch(transport, get(url))), u"200 {}"_s);
    QCOMPARE(told(fetch(transport, get(url))), u"200 {}"_s);
    QCOMPARE(server.connectionCount, 1);

    suspendedMilliseconds += milliseconds;
    QCOMPARE(told(fetch(transport, post(url, "{}"_ba))), u"200 {}"_s);
    QTEST(server.connectionCount, "connectionCount");
    QCOMPARE(told(fetch(transport, get(url))), u"200 {}"_s);
    QTEST(server.connectionCount, "connectionCount"); // The new one stays.
    QCOMPARE(server.requests.size(), 4);
}

void CurlTransportTest::aSuspensionLeavesTheRequestsUnderWayAlone()
{
    RawHttpServer server;
    CurlTransport transport;
    const auto before = follow(transport.send(get(server.url()), {}));
    QTRY_COMPARE(server.requests.size(), 1);
    suspendedMilliseconds += 3600 * 1000;
    const auto after = follow(transport.send(get(server.url()), {}));
    QTRY_COMPARE(server.requests.size(), 2);
    server.write(RawHttpServer::response(200));
    QTRY_VERIFY(*before && *after);
    QCOMPARE(told(**before), u"200 {}"_s);
    QCOMPARE(told(**after), u"200 {}"_s);
}

void CurlTransportTest::aReusedConnectionThatEndsWithoutAnAnswerIsNotTriedAgain_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<bool>("isTls");
    for (const auto *method : {"GET", "POST", "PATCH"}) {
        QTest::addRow("%s over TLS", method) << QByteArray(method) << true;
        QTest::addRow("%s without TLS", method) << QByteArray(method) << false;
    }
}

void CurlTransportTest::aReusedConnectionThatEndsWithoutAnAnswerIsNotTriedAgain()
{
    QFETCH(QByteArray, method);
    QFETCH(bool, isTls);
    const TestAuthority authority;
    RawHttpServer server(isTls ? std::optional(authority.issue(host)) : std::nullopt);
    server.reply(RawHttpServer::response(200));
    server.reply(""_ba, After::close);
    server.reply(RawHttpServer::response(200, "again"_ba));
    CurlTransport transport;
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(), authority.caFile());
    const QUrl url((isTls ? u"https://"_s : u"http://"_s) + QString::fromLatin1(host));
    QCOMPARE(told(fetch(transport, get(url))), u"200 {}"_s);
    auto request = post(url, "{}"_ba);
    request.method = method;
    if (method == "GET")
        request.body.reset();
    const auto answer = fetch(transport, request);
    QCOMPARE(told(answer), u"api.notion.com closed the connection without an answer"_s);
    QVERIFY(!answer.error().isCancelled);
    QCOMPARE(server.requests.size(), 2);
    QCOMPARE(server.requests.last().line(), method + " / HTTP/1.1");
}

void CurlTransportTest::nextRequestAfterAFailureSucceeds()
{
    RawHttpServer server;
    server.reply("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}"_ba, After::close);
    server.reply(""_ba, After::close);
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    QVERIFY(!fetch(transport, get(server.url())));
    QVERIFY(!fetch(transport, get(server.url())));
    QCOMPARE(told(fetch(transport, get(server.url()))), u"200 {}"_s);
    QCOMPARE(server.requests.size(), 3);
}

void CurlTransportTest::aStopEndsATransferAtOnce()
{
    RawHttpServer server;
    CurlTransport transport;
    std::stop_source stop;
    const auto outcome = follow(transport.send(get(server.url()), stop.get_token()));
    QTRY_COMPARE(server.requests.size(), 1);
    stop.request_stop();
    QVERIFY(!*outcome); // Never within the call.
    QTRY_VERIFY(*outcome);
    QVERIFY((*outcome)->error().isCancelled);
    QCOMPARE(told(**outcome), u"The operation was cancelled"_s);
    QTRY_COMPARE(server.openCount(), 0);
}

void CurlTransportTest::aStopBeforehandSendsNothing()
{
    RawHttpServer server;
    CurlTransport transport;
    std::stop_source stop;
    stop.request_stop();
    const auto answer = await(transport.send(get(server.url()), stop.get_token()));
    QVERIFY(answer.error().isCancelled);
    server.reply(RawHttpServer::response(200));
    QVERIFY(fetch(transport, get(server.url())));
    QCOMPARE(server.requests.size(), 1);
}

void CurlTransportTest::aStopAfterTheAnswerChangesNothing()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    std::stop_source stop;
    const auto answer = await(transport.send(get(server.url()), stop.get_token()));
    stop.request_stop();
    QCOMPARE(told(answer), u"200 {}"_s);
    QCOMPARE(told(fetch(transport, get(server.url()))), u"200 {}"_s);
    QCOMPARE(server.connectionCount, 1);
}

void CurlTransportTest::aSlowNameServerHoldsUpNeitherTheLoopNorAStop()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    const QUrl url(u"http://%1/"_s.arg(QString::fromLatin1(slowName)));
    std::stop_source stop;
    const auto stopped = follow(transport.send(get(url), stop.get_token()));
    auto request = get(url);
    request.timeout = std::chrono::milliseconds(100);
    const auto late = follow(transport.send(request, {}));
    QTRY_COMPARE(lookupsUnderWay, 2);

    // All this happens while both look-ups hang.
    QCOMPARE(told(fetch(transport, get(server.url()))), u"200 {}"_s);
    stop.request_stop();
    QTRY_VERIFY(*stopped);
    QTRY_VERIFY(*late);
    QVERIFY((*stopped)->error().isCancelled);
    QCOMPARE(told(**late), u"The request timed out"_s);
    QCOMPARE(lookupsUnderWay, 2);

    slowLookups.release(2);
    QTRY_COMPARE(lookupsUnderWay, 0);
}

void CurlTransportTest::transfersUnderWayAreCancelledWhenTheTransportGoes()
{
    RawHttpServer server;
    auto transport = std::make_unique<CurlTransport>();
    std::stop_source stop;
    const auto first = follow(transport->send(get(server.url()), stop.get_token()));
    const auto second = follow(transport->send(get(server.url()), {}));
    QTRY_COMPARE(server.requests.size(), 2);
    transport.reset();
    stop.request_stop(); // Finds nothing left to stop.
    QTRY_VERIFY(*first && *second);
    QVERIFY((*first)->error().isCancelled);
    QVERIFY((*second)->error().isCancelled);
    QTRY_COMPARE(server.openCount(), 0);
}

void CurlTransportTest::aCertificateOfATrustedAuthorityIsAccepted()
{
    const TestAuthority authority;
    RawHttpServer server(authority.issue(host));
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(), authority.caFile());
    QCOMPARE(told(fetch(transport, get(QUrl(u"https://api.notion.com/v1/users/me"_s)))), u"200 {}"_s);
    QCOMPARE(server.requests.first().line(), "GET /v1/users/me HTTP/1.1"_ba);
    QCOMPARE(server.requests.first().header("Host"_ba), std::optional("api.notion.com"_ba));
}

void CurlTransportTest::theAuthoritiesOfTheFolderAreTrustedIfTheyCanBeLookedUp_data()
{
    QTest::addColumn<bool>("isFolderOfServersAuthority");
    QTest::addColumn<bool>("isHashed");
    QTest::addColumn<bool>("isTrusted");
    QTest::newRow("a hashed folder with its authority") << true << true << true;
    QTest::newRow("a hashed folder with another authority of the same name") << false << true << false;
    QTest::newRow("a folder with its authority that is not hashed") << true << false << false;
}

void CurlTransportTest::theAuthoritiesOfTheFolderAreTrustedIfTheyCanBeLookedUp()
{
    QFETCH(bool, isFolderOfServersAuthority);
    QFETCH(bool, isHashed);
    QFETCH(bool, isTrusted);
    const TestAuthority authority;
    const TestAuthority other;
    RawHttpServer server(authority.issue(host));
    server.reply(RawHttpServer::response(200));
    const auto &inFolder = isFolderOfServersAuthority ? authority : other;
    CurlTransport transport(isHashed ? inFolder.hashedFolder() : QFileInfo(inFolder.caFile()).path());
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port());
    const auto words = told(fetch(transport, get(QUrl(u"https://api.notion.com/"_s))));
    QVERIFY2(isTrusted ? words == u"200 {}"_s
                       : words.startsWith(u"The certificate of api.notion.com is not trusted ("_s),
             qPrintable(words));
    QCOMPARE(server.requests.size(), isTrusted ? 1 : 0);
}

void CurlTransportTest::aCertificateThatIsNotRightIsRefused_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("daysLeft");
    QTest::addColumn<bool>("isAuthorityTrusted");
    QTest::newRow("of an authority that is not trusted") << QByteArray(host) << 1 << false;
    QTest::newRow("for another host") << "www.example.org"_ba << 1 << true;
    QTest::newRow("for a host whose name only begins alike") << "api.notion.com.example.org"_ba << 1 << true;
    QTest::newRow("expired") << QByteArray(host) << -1 << true;
}

void CurlTransportTest::aCertificateThatIsNotRightIsRefused()
{
    QFETCH(QByteArray, name);
    QFETCH(int, daysLeft);
    QFETCH(bool, isAuthorityTrusted);
    const TestAuthority authority;
    RawHttpServer server(authority.issue(name, QDateTime::currentDateTimeUtc().addDays(daysLeft)));
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(),
                           isAuthorityTrusted ? authority.caFile() : QString());
    auto request = get(QUrl(u"https://api.notion.com/"_s));
    request.headers = {{"Authorization"_ba, "Bearer ntn_secret"_ba}};
    const auto words = told(fetch(transport, request));
    QVERIFY2(words.startsWith(u"The certificate of api.notion.com is not trusted (SSL"_s), qPrintable(words));
    QVERIFY(!words.contains(u"ntn_secret"_s));
    QCOMPARE(server.requests.size(), 0);
}

void CurlTransportTest::aSelfSignedCertificateIsRefused()
{
    const TestAuthority authority;
    RawHttpServer server(authority.issueSelfSigned(host));
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(), authority.caFile());
    const auto words = told(fetch(transport, get(QUrl(u"https://api.notion.com/"_s))));
    QVERIFY2(words.startsWith(u"The certificate of api.notion.com is not trusted (SSL"_s), qPrintable(words));
    QCOMPARE(server.requests.size(), 0);
}

void CurlTransportTest::onlyTheRedirectedHostIsLedElsewhere()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200, "ours"_ba));
    RawHttpServer other;
    other.reply(RawHttpServer::response(200, "other"_ba));
    CurlTransport transport;
    transport.redirectHost(u"API.notion.com"_s, u"127.0.0.1"_s, server.port());
    QCOMPARE(told(fetch(transport, get(QUrl(u"http://api.notion.com/"_s)))), u"200 ours"_s);
    QCOMPARE(told(fetch(transport, get(other.url()))), u"200 other"_s);
    transport.redirectHost(u"api.notion.com"_s, u"127.0.0.1"_s, other.port());
    QCOMPARE(told(fetch(transport, get(QUrl(u"http://api.notion.com/"_s)))), u"200 other"_s);
}

void CurlTransportTest::aRedirectedHostIsReachedPastTheProxyOfTheEnvironment_data()
{
    sequentialRequestsShareOneConnection_data();
}

void CurlTransportTest::aRedirectedHostIsReachedPastTheProxyOfTheEnvironment()
{
    QFETCH(bool, isTls);
    QTcpServer free;
    QVERIFY(free.listen(QHostAddress::LocalHost));
    const auto proxy = "http://127.0.0.1:" + QByteArray::number(free.serverPort());
    free.close();
    const EnvironmentVariable http("http_proxy", proxy);
    const EnvironmentVariable https("https_proxy", proxy);
    const EnvironmentVariable all("all_proxy", proxy);
    const EnvironmentVariable direct("no_proxy", "");

    const TestAuthority authority;
    RawHttpServer server(isTls ? std::optional(authority.issue(host)) : std::nullopt);
    server.reply(RawHttpServer::response(200));
    CurlTransport transport;
    const auto scheme = isTls ? u"https://"_s : u"http://"_s;
    QVERIFY(!fetch(transport, get(QUrl(scheme + u"127.0.0.1:%1/"_s.arg(server.port()))))); // By way of the proxy.
    QCOMPARE(server.connectionCount, 0);
    transport.redirectHost(QString::fromLatin1(host), u"127.0.0.1"_s, server.port(), authority.caFile());
    QCOMPARE(told(fetch(transport, get(QUrl(scheme + QString::fromLatin1(host))))), u"200 {}"_s);
}

void CurlTransportTest::theProcessHasOneSessionThatOutlivesItsRequests()
{
    RawHttpServer server;
    server.reply(RawHttpServer::response(200));
    QCOMPARE(&HttpTransport::shared(), &CurlTransport::shared());
    for (int i = 0; i < 2; ++i)
        QCOMPARE(told(await(HttpTransport::shared().send(get(server.url()), {}))), u"200 {}"_s);
    QCOMPARE(server.connectionCount, 1); // Closed only after the last test, with the application.
}

} // namespace korvo

QTEST_GUILESS_MAIN(korvo::CurlTransportTest)
#include "CurlTransportTest.moc"
