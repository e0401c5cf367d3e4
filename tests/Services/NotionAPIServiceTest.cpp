#include "Services/NotionAPIService.h"

#include "Fakes/Await.h"
#include "Fakes/FakeClock.h"
#include "Fakes/FakeHttpTransport.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/TestSettings.h"

#include <QCoroTask>
#include <QJsonDocument>
#include <QTest>

#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

using APIError = NotionAPIService::APIError;
using Answer = NotionAPIService::Result<QJsonObject>;

/// A service on a scripted network and a clock whose waits end at once.
struct Bench {
    Bench()
    {
        TestSettings::configure(settings.settings);
        clock.isInstant = true;
    }

    QList<double> waits() const
    {
        QList<double> seconds;
        for (const auto &wait : clock.waits)
            seconds.append(wait.kind == FakeClock::Kind::pause ? wait.seconds : -1);
        return seconds;
    }
    QStringList errors() const { return log.messages(SystemLog::Level::error); }

    FakeSystemLog log;
    FakeHttpTransport transport;
    FakeClock clock;
    TestSettings settings;
    NotionAPIService api{transport, settings.settings, clock};
};

QJsonObject json(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

/// What an operation came to, as the text of an object or the error's description.
QString told(const Answer &answer)
{
    return answer ? QString::fromUtf8(QJsonDocument(*answer).toJson(QJsonDocument::Compact))
                  : answer.error().errorDescription();
}

/// One scripted answer. With a failure the request never gets one.
struct Step {
    int status = 200;
    QByteArray body = "{}";
    std::optional<QByteArray> retryAfter = std::nullopt;
    QString failure = {};
};

Step failing(const QString &description)
{
    Step step;
    step.failure = description;
    return step;
}

Step limited(const std::optional<QByteArray> &retryAfter)
{
    return {429, "{}"_ba, retryAfter};
}

void play(FakeHttpTransport &transport, const QList<Step> &steps)
{
    for (const auto &step : steps) {
        HttpHeaders headers;
        if (step.retryAfter)
            headers.append({"retry-AFTER"_ba, *step.retryAfter});
        if (step.failure.isEmpty())
            transport.answer(step.status, step.body, headers);
        else
            transport.fail(step.failure);
    }
}

} // namespace

class NotionAPIServiceTest : public QObject {
    Q_OBJECT
private slots:
    void anEmptyKeyFailsAtOnceWithoutTrafficOrLogLine();
    void aKeyThatChangesIsUsedByTheNextOperation();
    void aRetryStillCarriesTheKeyThatTheOperationBeganWith();
    void eachOperationHasItsMethodPathAndBody_data();
    void eachOperationHasItsMethodPathAndBody();
    void everyRequestCarriesTheSameHeaders();
    void aGetCarriesTheContentTypeHeaderAndNoBody();
    void aRequestHasSixtySeconds();
    void identifiersGoIntoThePathAsTheyAre_data();
    void identifiersGoIntoThePathAsTheyAre();
    void onlyWhatIsNotAsciiIsEscapedInAnIdentifier();
    void anEmptyKeyIsToldBeforeAnIdentifierThatMakesNoUrl();
    void anIdentifierThatMakesNoUrlIsAnInvalidResponseWithoutTraffic();
    void aQueryGivesTheObjectsUnderResults_data();
    void aQueryGivesTheObjectsUnderResults();
    void aQueryThatFailsGivesTheError();
    void errorDescriptionIsTheTextForTheUser_data();
    void errorDescriptionIsTheTextForTheUser();
    void anOperationIsRetriedAsItsAnswersSay_data();
    void anOperationIsRetriedAsItsAnswersSay();
    void retryAfterIsReadAsANumber_data();
    void retryAfterIsReadAsANumber();
    void theMessageOfAServerErrorIsTheWholeBody_data();
    void theMessageOfAServerErrorIsTheWholeBody();
    void nextSendWaitsUntilThePauseIsOver();
    void aStopWhileSendingTakesTheWayOfANetworkError();
    void aStopInAPauseTakesTheWayOfANetworkError_data();
    void aStopInAPauseTakesTheWayOfANetworkError();
    void anOperationThatIsStoppedBeforehandSendsNothingThatArrives();
    void aStopInThePauseAfterANetworkErrorIsNotLogged();
    void anOperationEndsAlsoIfTheServiceIsGone();
    void twoOperationsInterleave();
    void aRetriedOperationSendsTheSameRequestAgain();
    void nextOperationStartsWithAFreshDelay();
    void theKeyIsInNoLogLineAndNoError();
};

void NotionAPIServiceTest::anEmptyKeyFailsAtOnceWithoutTrafficOrLogLine()
{
    Bench bench;
    bench.settings.settings.setApiKey({});
    const auto outcome = follow(bench.api.getMe());
    QVERIFY(*outcome); // Without a turn of the event loop.
    QVERIFY((*outcome)->error() == APIError(APIError::NoAPIKey{}));
    QVERIFY(bench.transport.requests.isEmpty());
    QVERIFY(bench.log.lines.isEmpty());
    QVERIFY(bench.clock.waits.isEmpty());
}

void NotionAPIServiceTest::aKeyThatChangesIsUsedByTheNextOperation()
{
    Bench bench;
    play(bench.transport, {{200}, {200}});
    await(bench.api.getMe());
    bench.settings.settings.setApiKey(u"ntn_other"_s);
    await(bench.api.getMe());
    QCOMPARE(bench.transport.requests.at(0).headers.first().second, "Bearer ntn_test"_ba);
    QCOMPARE(bench.transport.requests.at(1).headers.first().second, "Bearer ntn_other"_ba);
}

void NotionAPIServiceTest::aRetryStillCarriesTheKeyThatTheOperationBeganWith()
{
    Bench bench;
    const auto outcome = follow(bench.api.getMe());
    bench.settings.settings.setApiKey(u"ntn_other"_s);
    play(bench.transport, {{500}, {200}});
    QTRY_VERIFY(*outcome);
    QCOMPARE(bench.transport.requests.at(1).headers.first().second, "Bearer ntn_test"_ba);
}

using Operation = QCoro::Task<> (*)(NotionAPIService &);

void NotionAPIServiceTest::eachOperationHasItsMethodPathAndBody_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");

    const Operation getDatabase = [](NotionAPIService &api) -> QCoro::Task<> { co_await api.getDatabase(u"d1"_s); };
    const Operation bareQuery = [](NotionAPIService &api) -> QCoro::Task<> { co_await api.queryDatabase(u"d1"_s); };
    const Operation fullQuery = [](NotionAPIService &api) -> QCoro::Task<> {
        const auto filter = json(R"({"property":"Status"})");
        const QJsonArray sorts{json(R"({"property":"Start"})")};
        auto task = api.queryDatabase(u"d1"_s, filter, sorts, 1);
        co_await task;
    };
    const Operation emptyQuery = [](NotionAPIService &api) -> QCoro::Task<> {
        auto task = api.queryDatabase(u"d1"_s, QJsonObject(), QJsonArray(), 0);
        co_await task;
    };
    const Operation getPage = [](NotionAPIService &api) -> QCoro::Task<> { co_await api.getPage(u"p1"_s); };
    const Operation createPage = [](NotionAPIService &api) -> QCoro::Task<> {
        auto task = api.createPage(json(R"({"database_id":"d1"})"), json(R"({"Name":{"title":[]}})"));
        co_await task;
    };
    const Operation updatePage = [](NotionAPIService &api) -> QCoro::Task<> {
        auto task = api.updatePage(u"p1"_s, json(R"({"Größe":{"select":null}})"));
        co_await task;
    };
    const Operation getMe = [](NotionAPIService &api) -> QCoro::Task<> { co_await api.getMe(); };

    QTest::newRow("getDatabase") << getDatabase << "GET"_ba << u"/databases/d1"_s << QByteArray();
    QTest::newRow("queryDatabase without filter and sorts sends only the page size of 100")
        << bareQuery << "POST"_ba << u"/databases/d1/query"_s << R"({"page_size":100})"_ba;
    QTest::newRow("queryDatabase with all of them")
        << fullQuery << "POST"_ba << u"/databases/d1/query"_s
        << R"({"filter":{"property":"Status"},"page_size":1,"sorts":[{"property":"Start"}]})"_ba;
    QTest::newRow("queryDatabase with an empty filter and empty sorts sends these")
        << emptyQuery << "POST"_ba << u"/databases/d1/query"_s << R"({"filter":{},"page_size":0,"sorts":[]})"_ba;
    QTest::newRow("getPage") << getPage << "GET"_ba << u"/pages/p1"_s << QByteArray();
    QTest::newRow("createPage") << createPage << "POST"_ba << u"/pages"_s
                                << R"({"parent":{"database_id":"d1"},"properties":{"Name":{"title":[]}}})"_ba;
    QTest::newRow("updatePage keeps a null and a name in UTF-8")
        << updatePage << "PATCH"_ba << u"/pages/p1"_s << R"({"properties":{"Größe":{"select":null}}})"_ba;
    QTest::newRow("getMe") << getMe << "GET"_ba << u"/users/me"_s << QByteArray();
}

void NotionAPIServiceTest::eachOperationHasItsMethodPathAndBody()
{
    QFETCH(Operation, operation);
    QFETCH(QString, path);
    Bench bench;
    bench.transport.answer(200, R"({"results":[]})");
    QCoro::waitFor(operation(bench.api));
    QCOMPARE(bench.transport.requests.size(), 1);
    const auto &request = bench.transport.requests.first();
    QTEST(request.method, "method");
    QCOMPARE(request.url, QUrl(u"https://api.notion.com/v1"_s + path));
    QTEST(request.body.value_or(QByteArray()), "body");
}

void NotionAPIServiceTest::everyRequestCarriesTheSameHeaders()
{
    Bench bench;
    play(bench.transport, {{200}, {200}});
    await(bench.api.getPage(u"p1"_s));
    await(bench.api.updatePage(u"p1"_s, {}));
    const HttpHeaders expected{{"Authorization"_ba, "Bearer ntn_test"_ba},
                               {"Content-Type"_ba, "application/json"_ba},
                               {"Notion-Version"_ba, "2022-06-28"_ba}};
    QCOMPARE(bench.transport.requests.at(0).headers, expected);
    QCOMPARE(bench.transport.requests.at(1).headers, expected);
}

void NotionAPIServiceTest::aGetCarriesTheContentTypeHeaderAndNoBody()
{
    Bench bench;
    bench.transport.answer(200);
    await(bench.api.getPage(u"p1"_s));
    const auto &request = bench.transport.requests.first();
    QVERIFY(!request.body);
    QVERIFY(request.headers.contains({"Content-Type"_ba, "application/json"_ba}));
}

void NotionAPIServiceTest::aRequestHasSixtySeconds()
{
    Bench bench;
    bench.transport.answer(200);
    await(bench.api.getMe());
    QCOMPARE(bench.transport.requests.first().timeout, std::chrono::seconds(60));
}

void NotionAPIServiceTest::identifiersGoIntoThePathAsTheyAre_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("dashes stay") << u"12345678-1234-4234-8234-123456789abc"_s;
    QTest::newRow("no dashes are added, and letters keep their case") << u"12345678123442348234123456789ABC"_s;
    QTest::newRow("a slash passes through") << u"a/../b"_s;
    QTest::newRow("an escape is not escaped again") << u"a%20b"_s;
    QTest::newRow("an escape that none needs stays") << u"%41%2D%7e"_s;
    QTest::newRow("an escape in small letters stays") << u"a%2fb%c3%a9"_s;
    QTest::newRow("a question mark begins a query") << u"a?b=%41"_s;
    QTest::newRow("a hash sign begins a fragment") << u"a#b"_s;
    QTest::newRow("an empty identifier") << QString();
}

void NotionAPIServiceTest::identifiersGoIntoThePathAsTheyAre()
{
    QFETCH(QString, id);
    Bench bench;
    bench.transport.answer(200);
    await(bench.api.getPage(id));
    QCOMPARE(bench.transport.requests.first().exactUrl, "https://api.notion.com/v1/pages/" + id.toUtf8());
}

void NotionAPIServiceTest::onlyWhatIsNotAsciiIsEscapedInAnIdentifier()
{
    Bench bench;
    bench.transport.answer(200);
    await(bench.api.getPage(u"Größe%41日"_s));
    const auto &request = bench.transport.requests.first();
    QCOMPARE(request.exactUrl, "https://api.notion.com/v1/pages/Gr%C3%B6%C3%9Fe%41%E6%97%A5"_ba);
    QCOMPARE(request.url.host(), u"api.notion.com"_s);
}

void NotionAPIServiceTest::anEmptyKeyIsToldBeforeAnIdentifierThatMakesNoUrl()
{
    Bench bench;
    bench.settings.settings.setApiKey({});
    const auto answer = await(bench.api.getPage(u"not an identifier"_s));
    QVERIFY(answer.error() == APIError(APIError::NoAPIKey{}));
    QVERIFY(bench.transport.requests.isEmpty());
    QVERIFY(bench.log.lines.isEmpty());
}

void NotionAPIServiceTest::anIdentifierThatMakesNoUrlIsAnInvalidResponseWithoutTraffic()
{
    Bench bench;
    const auto answer = await(bench.api.getPage(u"not an identifier"_s));
    QVERIFY(answer.error() == APIError(APIError::InvalidResponse{}));
    QVERIFY(bench.transport.requests.isEmpty());
    QVERIFY(bench.log.lines.isEmpty());
}

void NotionAPIServiceTest::aQueryGivesTheObjectsUnderResults_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("ids");
    QTest::newRow("two rows in order") << R"({"results":[{"id":"b"},{"id":"a"}],"has_more":true})"_ba
                                       << QStringList{u"b"_s, u"a"_s};
    QTest::newRow("no row") << R"({"results":[]})"_ba << QStringList();
    QTest::newRow("no such key") << R"({"object":"list"})"_ba << QStringList();
    QTest::newRow("null") << R"({"results":null})"_ba << QStringList();
    QTest::newRow("an object") << R"({"results":{"id":"a"}})"_ba << QStringList();
    QTest::newRow("one element is no object") << R"({"results":[{"id":"a"},"b"]})"_ba << QStringList();
}

void NotionAPIServiceTest::aQueryGivesTheObjectsUnderResults()
{
    QFETCH(QByteArray, body);
    Bench bench;
    bench.transport.answer(200, body);
    const auto rows = await(bench.api.queryDatabase(u"d1"_s));
    QVERIFY(rows);
    QStringList ids;
    for (const auto &row : *rows)
        ids.append(row.value("id"_L1).toString());
    QTEST(ids, "ids");
    QCOMPARE(bench.transport.requests.size(), 1);
}

void NotionAPIServiceTest::aQueryThatFailsGivesTheError()
{
    Bench bench;
    bench.transport.answer(401);
    const auto rows = await(bench.api.queryDatabase(u"d1"_s));
    QVERIFY(rows.error() == APIError(APIError::Unauthorized{}));
}

void NotionAPIServiceTest::errorDescriptionIsTheTextForTheUser_data()
{
    QTest::addColumn<std::shared_ptr<APIError>>("error");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *name, const APIError &error, const QString &text) {
        QTest::newRow(name) << std::make_shared<APIError>(error) << text;
    };
    add("rateLimited", APIError::RateLimited{7}, u"Rate limited, retrying..."_s);
    add("serverError", APIError::ServerError{500, u"%1 oops"_s}, u"Server error 500: %1 oops"_s);
    add("networkError", APIError::NetworkError{u"The request timed out"_s}, u"Network error: The request timed out"_s);
    add("unauthorized", APIError::Unauthorized{}, u"Invalid API key"_s);
    add("notFound", APIError::NotFound{}, u"Resource not found"_s);
    add("invalidResponse", APIError::InvalidResponse{}, u"Invalid response from Notion"_s);
    add("noAPIKey", APIError::NoAPIKey{}, u"No API key configured"_s);
}

void NotionAPIServiceTest::errorDescriptionIsTheTextForTheUser()
{
    QFETCH(std::shared_ptr<APIError>, error);
    QTEST(error->errorDescription(), "text");
}

void NotionAPIServiceTest::anOperationIsRetriedAsItsAnswersSay_data()
{
    QTest::addColumn<QList<Step>>("steps"); // All of them are used.
    QTest::addColumn<QString>("result");
    QTest::addColumn<QList<double>>("waits");
    QTest::addColumn<QStringList>("lines");

    const auto networkLine = [](int attempt, const QString &description) {
        return u"API network error on /pages/p1, attempt %1/3: "_s.arg(attempt) + description;
    };
    const auto serverLine
        = [](int status, int attempt) { return u"API server error %1, attempt %2/3"_s.arg(status).arg(attempt); };
    const auto limitLine = [](int attempt, const QString &wait) {
        return u"API rate limited (429), attempt %1/3, retry after %2s"_s.arg(attempt).arg(wait);
    };
    const auto notJson = u"The answer is not valid JSON (illegal value)"_s;
    const auto ok = u"{}"_s;
    using Steps = QList<Step>;
    using Waits = QList<double>;

    QTest::newRow("a 200 succeeds at once")
        << Steps{{200, R"({"a":1})"}} << uR"({"a":1})"_s << Waits{} << QStringList{};
    QTest::newRow("a 201 succeeds") << Steps{{201}} << ok << Waits{} << QStringList{};
    QTest::newRow("a 299 succeeds") << Steps{{299}} << ok << Waits{} << QStringList{};
    QTest::newRow("a body that begins with a byte order mark succeeds")
        << Steps{{200, "\xef\xbb\xbf{}"}} << ok << Waits{} << QStringList{};
    QTest::newRow("an empty JSON array is an invalid response after one send")
        << Steps{{200, "[]"}} << u"Invalid response from Notion"_s << Waits{} << QStringList{};
    QTest::newRow("what is no HTTP is an invalid response after one send")
        << Steps{{0}} << u"Invalid response from Notion"_s << Waits{} << QStringList{};
    QTest::newRow("a 401 is sent once and not logged")
        << Steps{{401}} << u"Invalid API key"_s << Waits{} << QStringList{};
    QTest::newRow("a 404 is sent once and not logged")
        << Steps{{404}} << u"Resource not found"_s << Waits{} << QStringList{};

    QTest::newRow("an HTML page with status 200 is sent three times")
        << Steps{{200, "<html>"}, {200, "<html>"}, {200, "<html>"}} << "Network error: "_L1 + notJson << Waits{1, 2}
        << QStringList{networkLine(1, notJson), networkLine(2, notJson), networkLine(3, notJson)};
    QTest::newRow("a 204 without a body is no JSON either")
        << Steps{{204, ""}, {200}} << ok << Waits{1} << QStringList{networkLine(1, notJson)};
    QTest::newRow("a bare scalar is no JSON")
        << Steps{{200, "1"}, {200}} << ok << Waits{1} << QStringList{networkLine(1, notJson)};
    QTest::newRow("a body that is not UTF-8 is no JSON")
        << Steps{{200, "\xff{}"}, {200}} << ok << Waits{1} << QStringList{networkLine(1, notJson)};
    QTest::newRow("a body with a zero byte after the object is no JSON")
        << Steps{{200, QByteArray("{}\0", 3)}, {200}} << ok << Waits{1}
        << QStringList{networkLine(1, u"The answer is not valid JSON (garbage at the end of the document)"_s)};
    QTest::newRow("a body nested ten thousand deep is refused")
        << Steps{{200, QByteArray(10000, '[') + QByteArray(10000, ']')}, {200}} << ok << Waits{1}
        << QStringList{networkLine(1, u"The answer is not valid JSON (too deeply nested document)"_s)};

    QTest::newRow("a 429 that asks for 7 seconds leaves the delay at 2 for the 503 after it")
        << Steps{limited("7"_ba), {503}, {200}} << ok << Waits{7, 2}
        << QStringList{limitLine(1, u"7.0"_s), serverLine(503, 2)};
    QTest::newRow("a 429 whose Retry-After is a word waits one second")
        << Steps{limited("soon"_ba), {200}} << ok << Waits{1} << QStringList{limitLine(1, u"1.0"_s)};
    QTest::newRow("a 429 without Retry-After waits one second")
        << Steps{limited(std::nullopt), {200}} << ok << Waits{1} << QStringList{limitLine(1, u"1.0"_s)};
    QTest::newRow("a second 429 without Retry-After waits two seconds")
        << Steps{limited(std::nullopt), limited(std::nullopt), {200}} << ok << Waits{1, 2}
        << QStringList{limitLine(1, u"1.0"_s), limitLine(2, u"2.0"_s)};
    QTest::newRow("three times 429 logs three lines, waits twice and is rate limited")
        << Steps{limited("30"_ba), limited("0.5"_ba), limited("60"_ba)} << u"Rate limited, retrying..."_s
        << Waits{30, 0.5} << QStringList{limitLine(1, u"30.0"_s), limitLine(2, u"0.5"_s), limitLine(3, u"60.0"_s)};

    QTest::newRow("three times 400 is sent three times without a wait or a line")
        << Steps{{400, "{}"}, {400, "{}"}, {400, R"({"code":"validation_error"})"}}
        << uR"(Server error 400: {"code":"validation_error"})"_s << Waits{} << QStringList{};
    QTest::newRow("three times 403 is sent three times without a wait or a line")
        << Steps{{403, "a"}, {403, "b"}, {403, "<html>"}} << u"Server error 403: <html>"_s << Waits{} << QStringList{};
    QTest::newRow("a redirect is an error like any other")
        << Steps{{302}, {302}, {302, "there"}} << u"Server error 302: there"_s << Waits{} << QStringList{};
    QTest::newRow("a 101 and a 600 are errors like any other")
        << Steps{{101}, {409}, {600, "?"}} << u"Server error 600: ?"_s << Waits{} << QStringList{};
    QTest::newRow("a 400 before a 200 is not seen") << Steps{{400}, {200}} << ok << Waits{} << QStringList{};
    QTest::newRow("a 400 leaves the delay at one second")
        << Steps{{400}, {500}, {200}} << ok << Waits{1} << QStringList{serverLine(500, 2)};

    QTest::newRow("three times 500 waits one second and two")
        << Steps{{500, "a"}, {502, "b"}, {599, "c"}} << u"Server error 599: c"_s << Waits{1, 2}
        << QStringList{serverLine(500, 1), serverLine(502, 2), serverLine(599, 3)};
    QTest::newRow("a 529 is a server error, whatever it asks for")
        << Steps{{529, "{}", "60"_ba}, {200}} << ok << Waits{1} << QStringList{serverLine(529, 1)};
    QTest::newRow("three failures on the way")
        << Steps{failing(u"a %1"_s), failing(u"b"_s), failing(u"c"_s)} << u"Network error: c"_s << Waits{1, 2}
        << QStringList{networkLine(1, u"a %1"_s), networkLine(2, u"b"_s), networkLine(3, u"c"_s)};

    QTest::newRow("the last attempt's error is the one: 500, 429, 400")
        << Steps{{500}, limited("3"_ba), {400, "last"}} << u"Server error 400: last"_s << Waits{1, 3}
        << QStringList{serverLine(500, 1), limitLine(2, u"3.0"_s)};
    QTest::newRow("the last attempt's error is the one: 400, failure, 401")
        << Steps{{400}, failing(u"lost"_s), {401}} << u"Invalid API key"_s << Waits{1}
        << QStringList{networkLine(2, u"lost"_s)};
    QTest::newRow("the last attempt's error is the one: 400, 400, failure")
        << Steps{{400}, {400}, failing(u"lost"_s)} << u"Network error: lost"_s << Waits{}
        << QStringList{networkLine(3, u"lost"_s)};
    QTest::newRow("the last attempt's error is the one: failure, 503, array")
        << Steps{failing(u"lost"_s), {503}, {200, "[]"}} << u"Invalid response from Notion"_s << Waits{1, 2}
        << QStringList{networkLine(1, u"lost"_s), serverLine(503, 2)};
}

void NotionAPIServiceTest::anOperationIsRetriedAsItsAnswersSay()
{
    QFETCH(QList<Step>, steps);
    Bench bench;
    play(bench.transport, steps);
    const auto answer = await(bench.api.getPage(u"p1"_s));
    QTEST(told(answer), "result");
    QTEST(bench.waits(), "waits");
    QTEST(bench.errors(), "lines");
    QCOMPARE(bench.log.lines.size(), bench.errors().size());
    QCOMPARE(bench.transport.requests.size(), steps.size());
}

void NotionAPIServiceTest::retryAfterIsReadAsANumber_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<double>("wait");
    QTest::addColumn<QString>("logged");
    QTest::newRow("a whole number") << "7"_ba << 7.0 << u"7.0"_s;
    QTest::newRow("a fraction") << "7.5"_ba << 7.5 << u"7.5"_s;
    QTest::newRow("a fraction that is not exact in binary") << "0.1"_ba << 0.1 << u"0.1"_s;
    QTest::newRow("an exponent") << "1e1"_ba << 10.0 << u"10.0"_s;
    QTest::newRow("a round number is not written with an exponent") << "100000"_ba << 100000.0 << u"100000.0"_s;
    QTest::newRow("a plus sign") << "+3"_ba << 3.0 << u"3.0"_s;
    QTest::newRow("no digit before the point") << ".5"_ba << 0.5 << u"0.5"_s;
    QTest::newRow("hexadecimal") << "0x1p3"_ba << 8.0 << u"8.0"_s;
    QTest::newRow("more than a minute has no cap") << "3600"_ba << 3600.0 << u"3600.0"_s;
    QTest::newRow("zero") << "0"_ba << 0.0 << u"0.0"_s;
    QTest::newRow("a negative wait ends at once") << "-2"_ba << -2.0 << u"-2.0"_s;
    QTest::newRow("nothing but the delay: empty") << ""_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: a date") << "Fri, 31 Dec 2027 23:59:59 GMT"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: a unit") << "7s"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: a blank before") << " 7"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: a blank after") << "7 "_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: a comma") << "7,5"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: two signs") << "+-7"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: a sign alone") << "-"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: without end") << "inf"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: not a number") << "nan"_ba << 1.0 << u"1.0"_s;
    QTest::newRow("nothing but the delay: too large") << "1e999"_ba << 1.0 << u"1.0"_s;
}

void NotionAPIServiceTest::retryAfterIsReadAsANumber()
{
    QFETCH(QByteArray, header);
    QFETCH(double, wait);
    QFETCH(QString, logged);
    Bench bench;
    play(bench.transport, {limited(header), {200}});
    QVERIFY(await(bench.api.getMe()));
    QCOMPARE(bench.waits(), QList<double>{wait});
    QCOMPARE(bench.errors(), QStringList{u"API rate limited (429), attempt 1/3, retry after %1s"_s.arg(logged)});
}

void NotionAPIServiceTest::theMessageOfAServerErrorIsTheWholeBody_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("message");
    QTest::newRow("JSON stays as it is") << R"({"a": 1})"_ba << uR"({"a": 1})"_s;
    QTest::newRow("text in UTF-8") << "Größe ✓"_ba << u"Größe ✓"_s;
    QTest::newRow("no body is no message") << ""_ba << QString();
    QTest::newRow("a million characters are not cut") << QByteArray(1000000, 'x') << QString(1000000, u'x');
    QTest::newRow("what is not UTF-8 is unknown") << "\xff"_ba << u"Unknown"_s;
    QTest::newRow("a character that is cut is not UTF-8") << "abc\xe2\x82"_ba << u"Unknown"_s;
    QTest::newRow("a half of a surrogate pair is not UTF-8") << "\xed\xa0\x80"_ba << u"Unknown"_s;
}

void NotionAPIServiceTest::theMessageOfAServerErrorIsTheWholeBody()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, message);
    Bench bench;
    play(bench.transport, {{400, body}, {400, body}, {400, body}});
    const auto answer = await(bench.api.getMe());
    QVERIFY((answer.error() == APIError(APIError::ServerError{400, message})));
}

void NotionAPIServiceTest::nextSendWaitsUntilThePauseIsOver()
{
    Bench bench;
    bench.clock.isInstant = false;
    play(bench.transport, {{503}, {503}, {200}});
    const auto outcome = follow(bench.api.getMe());
    QTRY_COMPARE(bench.clock.sleeperCount(), 1);
    QCOMPARE(bench.transport.requests.size(), 1);
    bench.clock.advance(1);
    QTRY_COMPARE(bench.clock.waits.size(), 2);
    QCOMPARE(bench.transport.requests.size(), 2);
    bench.clock.advance(1.5);
    QCOMPARE(bench.clock.sleeperCount(), 1);
    bench.clock.advance(0.5);
    QTRY_VERIFY(*outcome);
    QVERIFY(**outcome);
    QCOMPARE(bench.transport.requests.size(), 3);
}

void NotionAPIServiceTest::aStopWhileSendingTakesTheWayOfANetworkError()
{
    Bench bench;
    std::stop_source stop;
    const auto outcome = follow(bench.api.getPage(u"p1"_s, stop.get_token()));
    QCOMPARE(bench.transport.waitingCount(), 1);
    stop.request_stop();
    QTRY_VERIFY(*outcome);
    QCOMPARE(told(**outcome), u"Network error: The operation was cancelled"_s);
    QCOMPARE(bench.errors(),
             (QStringList{u"API network error on /pages/p1, attempt 1/3: The operation was cancelled"_s,
                          u"API network error on /pages/p1, attempt 2/3: The operation was cancelled"_s,
                          u"API network error on /pages/p1, attempt 3/3: The operation was cancelled"_s}));
    QCOMPARE(bench.waits(), (QList<double>{1, 2})); // Asked for; a stopped wait ends at once.
}

void NotionAPIServiceTest::aStopInAPauseTakesTheWayOfANetworkError_data()
{
    QTest::addColumn<QList<Step>>("steps");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QList<double>>("waits");
    // The pause that fails doubles nothing: the one after the network error is still the first delay.
    QTest::newRow("after a 503") << QList<Step>{{503}} << u"API server error 503, attempt 1/3"_s
                                 << QList<double>{1, 1, 2};
    QTest::newRow("after a 429") << QList<Step>{limited("30"_ba)}
                                 << u"API rate limited (429), attempt 1/3, retry after 30.0s"_s
                                 << QList<double>{30, 1, 2};
}

void NotionAPIServiceTest::aStopInAPauseTakesTheWayOfANetworkError()
{
    QFETCH(QList<Step>, steps);
    QFETCH(QString, line);
    Bench bench;
    bench.clock.isInstant = false;
    play(bench.transport, steps);
    std::stop_source stop;
    const auto outcome = follow(bench.api.getPage(u"p1"_s, stop.get_token()));
    QTRY_COMPARE(bench.clock.sleeperCount(), 1);
    stop.request_stop();
    QTRY_VERIFY(*outcome);
    QCOMPARE(told(**outcome), u"Network error: The operation was cancelled"_s);
    QCOMPARE(bench.errors(),
             (QStringList{line, u"API network error on /pages/p1, attempt 1/3: The operation was cancelled"_s,
                          u"API network error on /pages/p1, attempt 2/3: The operation was cancelled"_s,
                          u"API network error on /pages/p1, attempt 3/3: The operation was cancelled"_s}));
    QTEST(bench.waits(), "waits");
}

void NotionAPIServiceTest::anOperationThatIsStoppedBeforehandSendsNothingThatArrives()
{
    Bench bench;
    std::stop_source stop;
    stop.request_stop();
    const auto outcome = follow(bench.api.getMe(stop.get_token()));
    QTRY_VERIFY(*outcome);
    QCOMPARE(told(**outcome), u"Network error: The operation was cancelled"_s);
    QCOMPARE(bench.errors().size(), 3);
}

void NotionAPIServiceTest::aStopInThePauseAfterANetworkErrorIsNotLogged()
{
    Bench bench;
    bench.clock.isInstant = false;
    bench.transport.fail(u"lost"_s);
    std::stop_source stop;
    const auto outcome = follow(bench.api.getPage(u"p1"_s, stop.get_token()));
    QTRY_COMPARE(bench.clock.sleeperCount(), 1);
    stop.request_stop();
    QTRY_VERIFY(*outcome);
    QCOMPARE(bench.errors(),
             (QStringList{u"API network error on /pages/p1, attempt 1/3: lost"_s,
                          u"API network error on /pages/p1, attempt 2/3: The operation was cancelled"_s,
                          u"API network error on /pages/p1, attempt 3/3: The operation was cancelled"_s}));
}

void NotionAPIServiceTest::anOperationEndsAlsoIfTheServiceIsGone()
{
    Bench bench;
    auto api = std::make_unique<NotionAPIService>(bench.transport, bench.settings.settings, bench.clock);
    const auto outcome = follow(api->getMe());
    api.reset();
    play(bench.transport, {{500}, {200, R"({"id":"me"})"}});
    QTRY_VERIFY(*outcome);
    QCOMPARE(told(**outcome), uR"({"id":"me"})"_s);
}

void NotionAPIServiceTest::twoOperationsInterleave()
{
    Bench bench;
    const auto first = follow(bench.api.getPage(u"first"_s));
    const auto second = follow(bench.api.getPage(u"second"_s));
    QCOMPARE(bench.transport.waitingCount(), 2);
    play(bench.transport, {{500}, {200, R"({"id":"second"})"}, {200, R"({"id":"first"})"}});
    QTRY_VERIFY(*first && *second);
    QCOMPARE(told(**first), uR"({"id":"first"})"_s);
    QCOMPARE(told(**second), uR"({"id":"second"})"_s);
}

void NotionAPIServiceTest::aRetriedOperationSendsTheSameRequestAgain()
{
    Bench bench;
    play(bench.transport, {{500}, {400}, {200}});
    QVERIFY(await(bench.api.createPage(json(R"({"database_id":"d1"})"), {})));
    QCOMPARE(bench.transport.requests.size(), 3);
    for (const auto &request : std::as_const(bench.transport.requests)) {
        QCOMPARE(request.method, "POST"_ba);
        QCOMPARE(request.url, bench.transport.requests.first().url);
        QCOMPARE(request.headers, bench.transport.requests.first().headers);
        QCOMPARE(*request.body, R"({"parent":{"database_id":"d1"},"properties":{}})"_ba);
    }
}

void NotionAPIServiceTest::nextOperationStartsWithAFreshDelay()
{
    Bench bench;
    play(bench.transport, {{500}, {500}, {500}, {500}, {200}});
    QVERIFY(!await(bench.api.getMe()));
    QVERIFY(await(bench.api.getMe()));
    QCOMPARE(bench.waits(), (QList<double>{1, 2, 1}));
}

void NotionAPIServiceTest::theKeyIsInNoLogLineAndNoError()
{
    Bench bench;
    const auto key = u"ntn_secret"_s;
    bench.settings.settings.setApiKey(key);
    const QList<QList<Step>> all{{{500}, limited(std::nullopt), failing(u"lost"_s)}, {{401}}, {{400}, {400}, {400}}};
    for (const auto &steps : all) {
        play(bench.transport, steps);
        QVERIFY(!told(await(bench.api.getMe())).contains(key));
    }
    QCOMPARE(bench.errors().size(), 3);
    for (const auto &line : bench.errors())
        QVERIFY(!line.contains(key));
}

} // namespace korvo

QTEST_GUILESS_MAIN(korvo::NotionAPIServiceTest)
#include "NotionAPIServiceTest.moc"
