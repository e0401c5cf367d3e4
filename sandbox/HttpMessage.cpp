#include "sandbox/HttpMessage.h"

namespace korvo::sandbox {

QByteArray headerValue(const Headers &headers, const QByteArray &name)
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

bool Request::keepsAlive() const
{
    const QByteArray connection = header("Connection").toLower();
    return minorVersion >= 1 ? !connection.contains("close") : connection.contains("keep-alive");
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 409:
        return "Conflict";
    case 413:
        return "Payload Too Large";
    case 429:
        return "Too Many Requests";
    case 500:
        return "Internal Server Error";
    case 502:
        return "Bad Gateway";
    case 503:
        return "Service Unavailable";
    case 504:
        return "Gateway Timeout";
    default:
        return "Status";
    }
}

} // namespace korvo::sandbox
