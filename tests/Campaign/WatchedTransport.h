#pragma once

#include "Services/CurlTransport.h"

#include <QList>

namespace korvo::campaign {

/// The program's own transport, with an account of what goes through it.
class WatchedTransport final : public HttpTransport {
public:
    struct Send {
        QByteArray method;
        QString path;
        QByteArray body;
        int status = 0; ///< 0 if no whole answer came back.
        bool isOver = false;
    };

    QCoro::Task<Result<HttpResponse, HttpError>> send(HttpRequest request, std::stop_token stop) override
    {
        const int index = int(sends.size());
        const int account = m_account;
        sends.append({request.method, request.url.path(), request.body.value_or(QByteArray())});
        ++total;
        ++m_underWay;
        if (timeout)
            request.timeout = *timeout;
        auto sending = transport.send(std::move(request), stop);
        auto result = co_await sending;
        --m_underWay;
        if (account == m_account) {
            sends[index].isOver = true;
            sends[index].status = result ? result->status : 0;
        }
        co_return result;
    }

    int underWay() const { return m_underWay; }
    /// Begins a new account.
    void clear()
    {
        sends.clear();
        ++m_account;
    }

    CurlTransport transport;
    QList<Send> sends;                                ///< Since `clear`.
    qint64 total = 0;                                 ///< Sends since the beginning.
    std::optional<std::chrono::milliseconds> timeout; ///< In place of the program's own, if set.

private:
    int m_underWay = 0;
    int m_account = 0;
};

} // namespace korvo::campaign
