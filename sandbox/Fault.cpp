#include "sandbox/Fault.h"

#include "sandbox/ApiError.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {

Fault Fault::error(int status, const QByteArray &retryAfter)
{
    const QJsonObject json = toJson(documentedError(status), u"00000000-0000-4000-8000-000000000000"_s);
    Fault fault = answer(status, QJsonDocument(json).toJson(QJsonDocument::Compact));
    // The words of an undocumented status are those of an internal error, the status is still the one asked for.
    if (!retryAfter.isNull())
        fault.reply.headers.append(std::pair(QByteArray("Retry-After"), retryAfter));
    return fault;
}

Fault Fault::answer(int status, const QByteArray &body, const Headers &headers)
{
    Fault fault;
    fault.reply = {.status = status, .headers = headers, .body = body};
    if (headerValue(headers, "Content-Type").isNull())
        fault.reply.headers.append(
            std::pair(QByteArray("Content-Type"), QByteArray("application/json; charset=utf-8")));
    return fault;
}

Fault Fault::html(int status)
{
    const QByteArray title = QByteArray::number(status) + ' ' + reasonPhrase(status);
    return answer(status,
                  "<html>\r\n<head><title>" + title + "</title></head>\r\n<body>\r\n<center><h1>" + title
                      + "</h1></center>\r\n<hr><center>cloudflare</center>\r\n</body>\r\n</html>\r\n",
                  {{"Content-Type", "text/html"}});
}

Fault Fault::notUtf8(int status)
{
    return answer(status, "{\"object\":\"page\",\"id\":\"\xff\xfe\xc3\x28\"}");
}

Fault Fault::nested(int depth)
{
    return answer(200, QByteArray("{\"a\":").repeated(depth) + "{}" + QByteArray(depth, '}'));
}

Fault Fault::streamed(qint64 bytes)
{
    Fault fault = answer(200, {});
    fault.streamedBytes = bytes;
    return fault;
}

Fault Fault::slow(std::chrono::milliseconds delay)
{
    Fault fault = of(Kind::slow);
    fault.delay = delay;
    return fault;
}

Fault Fault::of(Kind kind)
{
    Fault fault;
    fault.kind = kind;
    return fault;
}

std::optional<Fault> FaultPlan::take(const QByteArray &method, const QByteArray &path)
{
    for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
        FaultMatch &match = it->match;
        if ((!match.method.isEmpty() && match.method != method) || !path.startsWith(match.pathPrefix))
            continue;
        if (match.nth > 1) {
            --match.nth;
            continue;
        }
        const Fault fault = it->fault;
        if (match.times > 0 && --match.times == 0)
            m_entries.erase(it);
        return fault;
    }
    return std::nullopt;
}

bool FaultPlan::takeCloseBeforeReading()
{
    if (m_entries.empty() || m_entries.front().fault.kind != Fault::Kind::closeBeforeReading)
        return false;
    FaultMatch &match = m_entries.front().match;
    if (match.nth > 1) {
        --match.nth;
        return false;
    }
    if (match.times > 0 && --match.times == 0)
        m_entries.pop_front();
    return true;
}

} // namespace korvo::sandbox
