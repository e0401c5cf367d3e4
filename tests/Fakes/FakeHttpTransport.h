#pragma once

#include "Services/HttpTransport.h"
#include "Utilities/Completion.h"

#include <QList>
#include <QObject>

#include <stop_token>
#include <utility>

namespace korvo {

/// Answers requests from a script, in order and in a later turn of the event loop. A request for which there is no
/// answer yet waits for one, or for its stop.
class FakeHttpTransport final : public HttpTransport {
public:
    using Answer = Result<HttpResponse, HttpError>;

    FakeHttpTransport() = default;
    ~FakeHttpTransport() override
    {
        for (const auto &waiting : std::as_const(m_waiting))
            waiting.complete(cancelled());
    }
    Q_DISABLE_COPY_MOVE(FakeHttpTransport)

    QCoro::Task<Answer> send(HttpRequest request, std::stop_token stop) override
    {
        requests.append(std::move(request));
        if (stop.stop_requested())
            co_return cancelled();
        Completion<Answer> done;
        m_waiting.append(done);
        deliverLater();
        const std::stop_callback onStop(stop, [done] { done.complete(cancelled()); });
        co_return co_await done;
    }

    /// The next answer. A status of 0 is an answer that is no HTTP.
    void answer(int status, const QByteArray &body = "{}", const HttpHeaders &headers = {})
    {
        HttpResponse response;
        response.status = status;
        response.headers = headers;
        response.body = body;
        m_answers.append(std::move(response));
        deliverLater();
    }

    /// The next request fails on its way.
    void fail(const QString &description)
    {
        m_answers.append(HttpError{description});
        deliverLater();
    }

    /// How many requests wait for an answer.
    int waitingCount()
    {
        m_waiting.removeIf([](const Completion<Answer> &waiting) { return waiting.isComplete(); });
        return int(m_waiting.size());
    }

    int answersLeft() const { return int(m_answers.size()); }

    QList<HttpRequest> requests; ///< Each that was sent, in order.

private:
    static HttpError cancelled() { return HttpError{QStringLiteral("The operation was cancelled"), true}; }

    void deliverLater()
    {
        QMetaObject::invokeMethod(
            &m_context, [this] { deliver(); }, Qt::QueuedConnection);
    }

    void deliver()
    {
        while (!m_answers.isEmpty() && waitingCount() > 0)
            m_waiting.takeFirst().complete(m_answers.takeFirst());
    }

    QObject m_context;
    QList<Answer> m_answers;
    QList<Completion<Answer>> m_waiting;
};

} // namespace korvo
