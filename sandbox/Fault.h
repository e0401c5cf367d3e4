#pragma once

#include "sandbox/HttpMessage.h"

#include <QJsonObject>
#include <QString>

#include <chrono>
#include <list>
#include <optional>

namespace korvo::sandbox {

/// What goes wrong with a request.
struct Fault {
    enum class Kind {
        answer,             ///< `reply` is the answer; the request has no effect.
        slow,               ///< The request has its effect and its true answer, after the delay.
        loseAnswer,         ///< The request has its effect, then the connection is closed without a byte of an answer.
        cutBody,            ///< The request has its effect; its answer ends in the middle of the chunked body.
        cutHeaders,         ///< The request has its effect; its answer ends in the middle of the headers.
        closeWithoutAnswer, ///< The connection is closed; the request has no effect.
        closeBeforeReading, ///< The connection is closed as the request arrives; it is neither parsed nor recorded.
        neverAnswer,        ///< The connection stays open and silent; the request has no effect.
    };

    Kind kind = Kind::answer;
    Reply reply;
    qint64 streamedBytes = 0; ///< With `answer`: this many bytes of valid JSON in place of the body, made as they go.
    std::chrono::milliseconds delay{0}; ///< Before anything is sent or closed.

    /// The API's documented error of that status. `retryAfter` becomes the header Retry-After, if given.
    static Fault error(int status, const QByteArray &retryAfter = {});
    /// Any answer at all.
    static Fault answer(int status, const QByteArray &body, const Headers &headers = {});
    /// A page of a gateway in front of the API: HTML, not JSON.
    static Fault html(int status);
    /// JSON text with a byte in it that is not UTF-8.
    static Fault notUtf8(int status = 200);
    /// An object in an object and so on, `depth` deep.
    static Fault nested(int depth);
    /// An object of about that many bytes.
    static Fault streamed(qint64 bytes);
    /// The true answer, later.
    static Fault slow(std::chrono::milliseconds delay);
    /// One of the kinds that need nothing else.
    static Fault of(Kind kind);
};

/// Which requests a fault is for.
struct FaultMatch {
    QByteArray method;     ///< Empty for any.
    QByteArray pathPrefix; ///< Empty for any.
    int nth = 1;           ///< The first request to meet it, counted among those that match.
    int times = 1;         ///< How many requests in all; -1 for ever.
};

/// The faults to come. Of those that match a request, the first that was added meets it.
class FaultPlan {
public:
    /// The next `times` requests of any kind meet it; -1 for ever. Faults added one after another come in that order.
    void add(const Fault &fault, int times = 1)
    {
        add(fault, FaultMatch{.method = {}, .pathPrefix = {}, .times = times});
    }
    void add(const Fault &fault, const FaultMatch &match) { m_entries.push_back({fault, match}); }
    void clear() { m_entries.clear(); }
    bool isEmpty() const { return m_entries.empty(); }

    /// The fault that meets this request, which counts it.
    std::optional<Fault> take(const QByteArray &method, const QByteArray &path);

    /// True, and counted, if the next request is to be met by closeBeforeReading. Such a fault knows neither method nor
    /// path, so it is only looked for at the head of the plan.
    bool takeCloseBeforeReading();

private:
    struct Entry {
        Fault fault;
        FaultMatch match;
    };

    std::list<Entry> m_entries;
};

/// Adds a fault told in JSON to a plan: {"kind": "error", "status": 503, "times": 2, "path": "/v1/pages"}.
/// Gives what is wrong with it, empty if nothing is. The members are those of `korvo-sandbox --help`.
QString addFault(FaultPlan &plan, const QJsonObject &json);

} // namespace korvo::sandbox
