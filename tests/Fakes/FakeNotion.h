#pragma once

#include "Fakes/EventList.h"
#include "Services/HttpTransport.h"
#include "Utilities/Completion.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QStringList>

#include <stdexcept>
#include <stop_token>
#include <utility>

namespace korvo {

/// A workspace at the edge of the process: answers by method and path, keeps what it was asked, and can hold answers
/// back until a test lets them go. What it was not told of is a 404, as with the real one.
class FakeNotion final : public HttpTransport {
public:
    struct Asked {
        QString call; ///< As "POST /databases/tracker/query".
        QJsonObject body;
    };

    QCoro::Task<Result<HttpResponse, HttpError>> send(HttpRequest request, std::stop_token stop) override
    {
        const auto call = QString::fromLatin1(request.method) + u' ' + request.url.path().mid(3); // Without "/v1".
        if (std::exchange(throwsNext, false))
            throw std::runtime_error("no memory for it");
        note(events, call);
        asked.append({call, QJsonDocument::fromJson(request.body.value_or(QByteArray())).object()});
        Completion<bool> go;
        if (isHolding)
            m_held.append(go);
        else
            go.complete(true);
        const std::stop_callback onStop(stop, [go] { go.complete(false); });
        const bool isAnswered = co_await go;
        if (!isAnswered || isOffline) {
            HttpError error{isAnswered ? QStringLiteral("The Internet connection appears to be offline.")
                                       : QStringLiteral("cancelled"),
                            !isAnswered};
            co_return error;
        }
        HttpResponse response;
        response.status = 404;
        const auto found = m_answers.find(call);
        if (found != m_answers.end()) {
            response = found->first();
            if (found->size() > 1)
                found->removeFirst(); // The last answer stays for all that follow.
        }
        co_return response;
    }

    /// Answers `call` with a JSON object, after what was already told for it.
    void answer(const QString &call, const QJsonObject &body, int status = 200)
    {
        HttpResponse response;
        response.status = status;
        response.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
        m_answers[call].append(response);
    }
    /// Answers with these rows from now on.
    void answerRows(const QString &call, const QList<QJsonObject> &rows)
    {
        QJsonArray results;
        for (const auto &row : rows)
            results.append(row);
        m_answers.remove(call);
        answer(call, {{QStringLiteral("results"), results}});
    }
    /// Forgets what it was told for `call`, which is a 404 from then on.
    void forget(const QString &call) { m_answers.remove(call); }

    /// Lets all answers go that are held back.
    void release()
    {
        const auto held = std::exchange(m_held, {});
        for (const auto &go : held)
            go.complete(true);
    }
    int heldCount() const { return int(m_held.size()); }

    QStringList calls() const
    {
        QStringList calls;
        for (const auto &one : asked)
            calls.append(one.call);
        return calls;
    }

    QList<Asked> asked;
    bool isHolding = false;
    bool isOffline = false;
    bool throwsNext = false;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.

private:
    QMap<QString, QList<HttpResponse>> m_answers;
    QList<Completion<bool>> m_held;
};

} // namespace korvo
