#pragma once

#include "Models/AppSettings.h"
#include "Services/HttpTransport.h"
#include "Utilities/Clock.h"
#include "Utilities/Result.h"

#include <QCoroTask>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <stop_token>
#include <variant>

namespace korvo {

/// The six operations of the Notion REST API that the program uses, with their retries and their one error type. Knows
/// nothing of tasks and timers. The key is read from the settings as each operation begins; one that holds a control
/// character, such as a line break, is never sent: the operation fails as by the network. A stop shows up as a failed
/// send or pause and takes the retries' course, which then runs through without waiting.
class NotionAPIService {
public:
    /// What an operation fails with. `errorDescription` is the text for the user.
    class APIError {
    public:
        struct RateLimited {
            double retryAfter; ///< Seconds.
            bool operator==(const RateLimited &) const = default;
        };
        struct ServerError {
            int statusCode;
            QString message; ///< The whole body as text.
            bool operator==(const ServerError &) const = default;
        };
        struct NetworkError {
            QString description; ///< Of the error underneath.
            bool operator==(const NetworkError &) const = default;
        };
        struct Unauthorized {
            bool operator==(const Unauthorized &) const = default;
        };
        struct NotFound {
            bool operator==(const NotFound &) const = default;
        };
        struct InvalidResponse {
            bool operator==(const InvalidResponse &) const = default;
        };
        struct NoAPIKey {
            bool operator==(const NoAPIKey &) const = default;
        };
        using Case
            = std::variant<RateLimited, ServerError, NetworkError, Unauthorized, NotFound, InvalidResponse, NoAPIKey>;

        template <typename C> APIError(C which) : m_case(std::move(which)) { }

        const Case &which() const { return m_case; }
        QString errorDescription() const;
        bool operator==(const APIError &) const = default;

    private:
        Case m_case;
    };

    template <typename T> using Result = korvo::Result<T, APIError>;

    /// All three must outlive it.
    explicit NotionAPIService(HttpTransport &transport = HttpTransport::shared(),
                              const AppSettings &settings = AppSettings::shared(), Clock &clock = Clock::shared());

    /// The whole JSON object of database `id`. Identifiers go into the path as they are.
    /// Source: Notion API 2022-06-28, GET /v1/databases/{id}.
    QCoro::Task<Result<QJsonObject>> getDatabase(QString id, std::stop_token stop = {});

    /// The rows under "results", at most `pageSize` of them; no row if the answer has none. An absent filter or sort is
    /// left out. Source: Notion API 2022-06-28, POST /v1/databases/{id}/query.
    QCoro::Task<Result<QList<QJsonObject>>> queryDatabase(QString id, std::optional<QJsonObject> filter = std::nullopt,
                                                          std::optional<QJsonArray> sorts = std::nullopt,
                                                          int pageSize = 100, std::stop_token stop = {});

    /// The whole JSON object of page `id`. Source: Notion API 2022-06-28, GET /v1/pages/{id}.
    QCoro::Task<Result<QJsonObject>> getPage(QString id, std::stop_token stop = {});

    /// The new page. A repeated send can create it twice. Source: Notion API 2022-06-28, POST /v1/pages.
    QCoro::Task<Result<QJsonObject>> createPage(QJsonObject parent, QJsonObject properties, std::stop_token stop = {});

    /// The updated page. Source: Notion API 2022-06-28, PATCH /v1/pages/{id}.
    QCoro::Task<Result<QJsonObject>> updatePage(QString id, QJsonObject properties, std::stop_token stop = {});

    /// The integration that the key belongs to. Source: Notion API 2022-06-28, GET /v1/users/me.
    QCoro::Task<Result<QJsonObject>> getMe(std::stop_token stop = {});

private:
    QCoro::Task<Result<QJsonObject>> execute(const QByteArray &method, const QString &path,
                                             const std::optional<QJsonObject> &body, std::stop_token stop);

    HttpTransport &m_transport;
    const AppSettings &m_settings;
    Clock &m_clock;
};

} // namespace korvo
