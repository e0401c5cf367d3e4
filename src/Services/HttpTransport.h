#pragma once

#include "Utilities/Result.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>
#include <stop_token>
#include <utility>

namespace korvo {

using HttpHeaders = QList<std::pair<QByteArray, QByteArray>>;

struct HttpRequest {
    QByteArray method;
    QUrl url;
    QByteArray exactUrl{}; ///< What goes out for `url`, if not QUrl's own spelling, which undoes needless escapes.
    HttpHeaders headers;
    std::optional<QByteArray> body;
    std::chrono::milliseconds timeout{60000}; ///< For the whole transfer.
};

struct HttpResponse {
    int status = 0; ///< 0 if what came back was no HTTP response.
    HttpHeaders headers;
    QByteArray body; ///< With any content coding undone.

    /// The value of the first header of that name in any case; none if there is no such header.
    std::optional<QByteArray> header(const QByteArray &name) const;
};

/// Why no complete response came back.
struct HttpError {
    QString description; ///< For the user, in a sentence without credentials.
    bool isCancelled = false;
};

/// Sends HTTP requests. Each request is sent once at most and never again on its own; redirects are not followed.
class HttpTransport {
public:
    virtual ~HttpTransport() = default;

    /// Sends and waits for the whole response. A status of any value is a response; a connection, certificate, time-out
    /// or size failure is an error, and so is a stop, which ends the transfer.
    virtual QCoro::Task<Result<HttpResponse, HttpError>> send(HttpRequest request, std::stop_token stop) = 0;

    /// The session of the process.
    static HttpTransport &shared();
};

} // namespace korvo
