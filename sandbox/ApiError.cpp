#include "sandbox/ApiError.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {

ApiError validationError(const QString &message)
{
    return {.code = u"validation_error"_s, .message = message, .additionalData = {}};
}

ApiError bodyError(const QString &what, const QJsonValue &value)
{
    return validationError(u"body failed validation: "_s + what + u", instead was "_s + quoted(value) + u'.');
}

ApiError notFoundError(const QString &kind, const QString &id)
{
    return {.status = 404,
            .code = u"object_not_found"_s,
            .message = u"Could not find %1 with ID: %2. Make sure the relevant pages and databases are shared with "
                       "your integration \"Korvo\"."_s.arg(kind, id),
            .additionalData = {}};
}

ApiError documentedError(int status)
{
    const auto make = [status](const QString &code, const QString &message) {
        return ApiError{.status = status, .code = code, .message = message, .additionalData = {}};
    };
    switch (status) {
    case 400:
        return make(u"validation_error"_s, u"body failed validation."_s);
    case 401:
        return make(u"unauthorized"_s, u"API token is invalid."_s);
    case 403:
        return make(u"restricted_resource"_s, u"Insufficient permissions for this endpoint."_s);
    case 404:
        return make(u"object_not_found"_s,
                    u"Could not find object. Make sure the relevant pages and databases are shared with your "
                    "integration."_s);
    case 409:
        return make(u"conflict_error"_s, u"Conflict occurred while saving. Please try again."_s);
    case 429:
        return make(u"rate_limited"_s, u"You have been rate limited. Please try again in a few minutes."_s);
    case 502:
        return make(u"bad_gateway"_s, u"Bad Gateway"_s);
    case 503:
        return make(u"service_unavailable"_s, u"Notion is unavailable, please try again later."_s);
    case 504:
        return make(u"gateway_timeout"_s, u"Gateway Timeout"_s);
    case 529:
        return make(u"service_overload"_s, u"The service is overloaded, please try again later."_s);
    default:
        return make(u"internal_server_error"_s, u"Unexpected error occurred."_s);
    }
}

QJsonObject toJson(const ApiError &error, const QString &requestId)
{
    QJsonObject json{
        {u"object"_s, u"error"_s}, {u"status"_s, error.status}, {u"code"_s, error.code}, {u"message"_s, error.message}};
    if (!error.additionalData.isEmpty())
        json.insert(u"additional_data"_s, error.additionalData);
    if (error.hasRequestId)
        json.insert(u"request_id"_s, requestId);
    return json;
}

QString quoted(const QJsonValue &value)
{
    if (value.isUndefined())
        return u"`undefined`"_s;
    // A document holds objects and arrays only, so the value is written inside an array and taken out of it.
    const QByteArray text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return u'`' + QString::fromUtf8(text.mid(1, text.size() - 2)) + u'`';
}

} // namespace korvo::sandbox
