#include "Services/NotionAPIService.h"

#include "Utilities/DiagnosticLogger.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

using APIError = NotionAPIService::APIError;
using Answer = NotionAPIService::Result<QJsonObject>;

constexpr auto baseURL = "https://api.notion.com/v1"_L1;
constexpr auto notionVersion = "2022-06-28";
constexpr int retryCount = 3; ///< Sends of one operation at most.

/// The number in a Retry-After header. None unless the whole text is one, a finite one: "7", "7.5", "+3", "1e1" and
/// "0x1p3" are, a date, a word, "inf" and " 7" are not.
std::optional<double> retryAfterSeconds(const QByteArray &text)
{
    const char *first = text.constData();
    const char *const last = first + text.size();
    const auto isNegative = first != last && *first == '-';
    if (first != last && (*first == '-' || *first == '+'))
        ++first;
    if (first == last || *first == '-')
        return std::nullopt;
    const auto isHex = last - first > 2 && first[0] == '0' && (first[1] == 'x' || first[1] == 'X');
    if (isHex)
        first += 2;
    double value = 0;
    const auto [end, error]
        = std::from_chars(first, last, value, isHex ? std::chars_format::hex : std::chars_format::general);
    if (error != std::errc() || end != last || !std::isfinite(value))
        return std::nullopt;
    return isNegative ? -value : value;
}

/// The shortest text that reads back as the same number, with a fraction always: "1.0", "30.0", "7.25".
QString roundTripText(double number)
{
    const auto magnitude = std::abs(number);
    const auto isPlain = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e16);
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                   isPlain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    auto text = QString::fromLatin1(buffer.data(), end - buffer.data());
    if (isPlain && !text.contains(u'.'))
        text += ".0"_L1;
    return text;
}

/// A URL's text as it goes out: only what is not ASCII is escaped, the rest stays letter by letter.
QByteArray withAsciiOnly(const QString &url)
{
    QByteArray text;
    for (const char byte : url.toUtf8()) {
        if (static_cast<unsigned char>(byte) < 0x80)
            text += byte;
        else
            text += '%' + QByteArray(1, byte).toHex().toUpper();
    }
    return text;
}

/// The request for a path below the base URL, with the headers of every request and the key as it is now.
NotionAPIService::Result<HttpRequest> makeRequest(const AppSettings &settings, const QByteArray &method,
                                                  const QString &path, const std::optional<QJsonObject> &body)
{
    const auto key = settings.apiKey();
    if (key.isEmpty())
        return APIError(APIError::NoAPIKey{});
    const QString text = baseURL + path;
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
        return APIError(APIError::InvalidResponse{});

    HttpRequest request{.method = method,
                        .url = url,
                        .exactUrl = withAsciiOnly(text),
                        .headers = {{"Authorization"_ba, "Bearer " + key.toUtf8()},
                                    {"Content-Type"_ba, "application/json"_ba},
                                    {"Notion-Version"_ba, notionVersion}},
                        .body = std::nullopt};
    if (body)
        request.body = QJsonDocument(*body).toJson(QJsonDocument::Compact);
    return request;
}

/// Sends one request until it succeeds, fails for good, or has been sent `retryCount` times. The same request goes out
/// each time, whatever its method. Uses nothing of a service, which may go meanwhile.
QCoro::Task<Answer> sendWithRetries(HttpTransport &transport, Clock &clock,
                                    NotionAPIService::Result<HttpRequest> request, QString path, std::stop_token stop)
{
    if (!request)
        co_return request.error();
    const auto cancelled = u"The operation was cancelled"_s;

    APIError lastError = APIError::InvalidResponse{};
    double delay = 1;
    for (int attempt = 0; attempt < retryCount; ++attempt) {
        const auto isLast = attempt == retryCount - 1;
        const auto ordinal = u"attempt %1/%2"_s.arg(attempt + 1).arg(retryCount);
        QString failure; // What is neither an answer of Notion nor of ours: the network, a broken body, a stop.

        auto sending = transport.send(*request, stop);
        const auto response = co_await sending;
        if (!response) {
            failure = response.error().description;
        } else if (const auto status = response->status; status == 0) {
            co_return APIError(APIError::InvalidResponse{});
        } else if (status >= 200 && status <= 299) {
            QJsonParseError parsing{};
            const auto document = QJsonDocument::fromJson(response->body, &parsing);
            if (document.isObject())
                co_return document.object();
            if (parsing.error == QJsonParseError::NoError)
                co_return APIError(APIError::InvalidResponse{});
            failure = u"The answer is not valid JSON (%1)"_s.arg(parsing.errorString());
        } else if (status == 401) {
            co_return APIError(APIError::Unauthorized{});
        } else if (status == 404) {
            co_return APIError(APIError::NotFound{});
        } else if (status == 429) {
            const auto asked = retryAfterSeconds(response->header("Retry-After"_ba).value_or(QByteArray()));
            const auto retryAfter = asked.value_or(delay);
            Log::error(u"API rate limited (429), %1, retry after %2s"_s.arg(ordinal, roundTripText(retryAfter)));
            lastError = APIError::RateLimited{retryAfter};
            if (isLast)
                continue;
            const auto hasSlept = co_await clock.pauseFor(Clock::Seconds(retryAfter), stop);
            if (hasSlept) {
                delay *= 2;
                continue;
            }
            failure = cancelled;
        } else {
            const auto &body = response->body;
            lastError = APIError::ServerError{status, body.isValidUtf8() ? QString::fromUtf8(body) : u"Unknown"_s};
            if (status < 500 || status > 599)
                continue; // At once and in silence, also for an error that will come again.
            Log::error(u"API server error %1, %2"_s.arg(QString::number(status), ordinal));
            if (isLast)
                continue;
            const auto hasSlept = co_await clock.pauseFor(Clock::Seconds(delay), stop);
            if (hasSlept) {
                delay *= 2;
                continue;
            }
            failure = cancelled;
        }

        Log::error(u"API network error on %1, %2: %3"_s.arg(path, ordinal, failure));
        lastError = APIError::NetworkError{failure};
        if (!isLast) {
            co_await clock.pauseFor(Clock::Seconds(delay), stop); // Stopped or not: the next send will tell.
            delay *= 2;
        }
    }
    co_return lastError;
}

QCoro::Task<NotionAPIService::Result<QList<QJsonObject>>> rowsOf(QCoro::Task<Answer> answering)
{
    const auto answer = co_await answering;
    if (!answer)
        co_return answer.error();
    QList<QJsonObject> rows;
    const auto results = answer->value("results"_L1).toArray();
    for (const auto &row : results) {
        if (!row.isObject())
            co_return QList<QJsonObject>(); // One that is no object spoils the whole array.
        rows.append(row.toObject());
    }
    co_return rows;
}

} // namespace

QString NotionAPIService::APIError::errorDescription() const
{
    struct Describe {
        QString operator()(const RateLimited &) const { return u"Rate limited, retrying..."_s; }
        QString operator()(const ServerError &error) const
        {
            return u"Server error %1: "_s.arg(error.statusCode) + error.message;
        }
        QString operator()(const NetworkError &error) const { return u"Network error: "_s + error.description; }
        QString operator()(const Unauthorized &) const { return u"Invalid API key"_s; }
        QString operator()(const NotFound &) const { return u"Resource not found"_s; }
        QString operator()(const InvalidResponse &) const { return u"Invalid response from Notion"_s; }
        QString operator()(const NoAPIKey &) const { return u"No API key configured"_s; }
    };
    return std::visit(Describe{}, m_case);
}

NotionAPIService::NotionAPIService(HttpTransport &transport, const AppSettings &settings, Clock &clock) :
    m_transport(transport),
    m_settings(settings),
    m_clock(clock)
{
}

QCoro::Task<Answer> NotionAPIService::execute(const QByteArray &method, const QString &path,
                                              const std::optional<QJsonObject> &body, std::stop_token stop)
{
    return sendWithRetries(m_transport, m_clock, makeRequest(m_settings, method, path, body), path, std::move(stop));
}

QCoro::Task<Answer> NotionAPIService::getDatabase(QString id, std::stop_token stop)
{
    return execute("GET"_ba, "/databases/"_L1 + id, std::nullopt, std::move(stop));
}

QCoro::Task<NotionAPIService::Result<QList<QJsonObject>>>
NotionAPIService::queryDatabase(QString id, std::optional<QJsonObject> filter, std::optional<QJsonArray> sorts,
                                int pageSize, std::stop_token stop)
{
    QJsonObject body{{u"page_size"_s, pageSize}};
    if (filter)
        body.insert("filter"_L1, *filter);
    if (sorts)
        body.insert("sorts"_L1, *sorts);
    return rowsOf(execute("POST"_ba, "/databases/"_L1 + id + "/query"_L1, body, std::move(stop)));
}

QCoro::Task<Answer> NotionAPIService::getPage(QString id, std::stop_token stop)
{
    return execute("GET"_ba, "/pages/"_L1 + id, std::nullopt, std::move(stop));
}

QCoro::Task<Answer> NotionAPIService::createPage(QJsonObject parent, QJsonObject properties, std::stop_token stop)
{
    const QJsonObject body{{u"parent"_s, parent}, {u"properties"_s, properties}};
    return execute("POST"_ba, u"/pages"_s, body, std::move(stop));
}

QCoro::Task<Answer> NotionAPIService::updatePage(QString id, QJsonObject properties, std::stop_token stop)
{
    return execute("PATCH"_ba, "/pages/"_L1 + id, QJsonObject{{u"properties"_s, properties}}, std::move(stop));
}

QCoro::Task<Answer> NotionAPIService::getMe(std::stop_token stop)
{
    return execute("GET"_ba, u"/users/me"_s, std::nullopt, std::move(stop));
}

} // namespace korvo
