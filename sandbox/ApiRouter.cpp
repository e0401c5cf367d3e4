#include "sandbox/ApiRouter.h"

#include "sandbox/ApiError.h"
#include "sandbox/JsonText.h"
#include "sandbox/PageRequests.h"
#include "sandbox/Query.h"
#include "sandbox/Uuid.h"
#include "sandbox/Workspace.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QUrlQuery>

#include <optional>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

enum class Operation { getMe, getDatabase, queryDatabase, getPage, createPage, updatePage };

struct Route {
    Operation operation;
    QString id; ///< As it stands in the path.
};

constexpr qsizetype largestBody = 500 * 1000;
const QString spokenVersion = u"2022-06-28"_s;

ApiError invalidUrl()
{
    return {.code = u"invalid_request_url"_s,
            .message = u"Invalid request URL."_s,
            .additionalData = {},
            .hasRequestId = false};
}

Route routeOf(const Request &request)
{
    QStringList parts = QString::fromUtf8(request.path()).split(u'/').mid(1);
    for (QString &part : parts)
        part = QUrl::fromPercentEncoding(part.toUtf8());
    const QByteArray &method = request.method;
    if (parts.value(0) == "v1"_L1 && parts.size() >= 2) {
        const QString kind = parts[1];
        if (kind == "users"_L1 && parts.size() == 3 && parts[2] == "me"_L1 && method == "GET")
            return {Operation::getMe, {}};
        if (kind == "databases"_L1 && parts.size() == 3 && method == "GET")
            return {Operation::getDatabase, parts[2]};
        if (kind == "databases"_L1 && parts.size() == 4 && parts[3] == "query"_L1 && method == "POST")
            return {Operation::queryDatabase, parts[2]};
        if (kind == "pages"_L1 && parts.size() == 3 && method == "GET")
            return {Operation::getPage, parts[2]};
        if (kind == "pages"_L1 && parts.size() == 2 && method == "POST")
            return {Operation::createPage, {}};
        if (kind == "pages"_L1 && parts.size() == 3 && method == "PATCH")
            return {Operation::updatePage, parts[2]};
    }
    throw invalidUrl();
}

/// The body, if its type says that it is JSON; what it is otherwise is not read.
std::optional<QJsonValue> parseBody(const Request &request)
{
    if (request.body.isEmpty() || !request.header("Content-Type").toLower().startsWith("application/json"))
        return std::nullopt;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(request.body, &error);
    if (error.error != QJsonParseError::NoError)
        throw ApiError{.code = u"invalid_json"_s, .message = u"Error parsing JSON body."_s, .additionalData = {}};
    return document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array());
}

void checkToken(const Request &request, const QString &apiKey)
{
    const QByteArray authorization = request.header("Authorization");
    const QString prefix = u"Bearer "_s;
    const QString text = QString::fromUtf8(authorization);
    if (!authorization.isEmpty() && !text.startsWith(prefix, Qt::CaseInsensitive)) {
        throw ApiError{.status = 401,
                       .code = u"unauthorized"_s,
                       .message = u"Authorization header must use the format \"Bearer <token>\"."_s,
                       .additionalData = {}};
    }
    if (text.mid(prefix.size()) != apiKey || apiKey.isEmpty())
        throw documentedError(401);
}

void checkVersion(const Request &request)
{
    const QByteArray version = request.header("Notion-Version");
    const QString start = u"Notion-Version header failed validation: Notion-Version header should be "_s;
    const auto error = [](const QString &message) {
        return ApiError{.code = u"missing_version"_s, .message = message, .additionalData = {}};
    };
    if (version.isNull())
        throw error(start + u"defined, instead was `undefined`."_s);
    const QString text = QString::fromUtf8(version);
    const QStringList others{u"2021-05-11"_s, u"2021-05-13"_s, u"2021-08-16"_s,
                             u"2022-02-22"_s, u"2025-09-03"_s, u"2026-03-11"_s};
    if (others.contains(text))
        throw validationError(u"This sample workspace speaks Notion-Version %1 only."_s.arg(spokenVersion));
    if (text != spokenVersion) {
        throw error(start
                    + u"`\"2021-05-11\"`, `\"2021-05-13\"`, `\"2021-08-16\"`, `\"2022-02-22\"`, `\"2022-06-28\"`, "
                      "`\"2025-09-03\"`, or `\"2026-03-11\"`, instead was `\"%1\"`."_s.arg(text));
    }
}

QString requireUuid(const QString &id, const QString &name)
{
    const auto uuid = normalisedUuid(id);
    if (!uuid) {
        throw validationError(
            u"path failed validation: path.%1 should be a valid uuid, instead was `\"%2\"`."_s.arg(name, id));
    }
    return *uuid;
}

/// The members of a request's body, which is an object if there is one.
QJsonObject membersOf(const std::optional<QJsonValue> &body)
{
    if (body && !body->isObject())
        throw bodyError(u"body should be an object"_s, *body);
    return body ? body->toObject() : QJsonObject();
}

QStringList filterProperties(const Request &request)
{
    QStringList ids;
    const QUrlQuery query(QUrl::fromEncoded(request.target));
    for (const QString &name : {u"filter_properties"_s, u"filter_properties[]"_s})
        ids += query.allQueryItemValues(name, QUrl::FullyDecoded);
    return ids;
}

QJsonObject perform(Workspace &workspace, const Route &route, const std::optional<QJsonValue> &body,
                    const QStringList &onlyProperties)
{
    switch (route.operation) {
    case Operation::getMe:
        return workspace.meJson();
    case Operation::getDatabase:
        return databaseJson(workspace, requireDatabase(workspace, requireUuid(route.id, u"database_id"_s)));
    case Operation::queryDatabase: {
        const QString id = requireUuid(route.id, u"database_id"_s);
        const QJsonObject members = membersOf(body);
        return queryDatabase(workspace, requireDatabase(workspace, id), members, onlyProperties);
    }
    case Operation::getPage:
        return pageJson(workspace, requirePage(workspace, requireUuid(route.id, u"page_id"_s)), onlyProperties);
    case Operation::createPage:
        return createPage(workspace, membersOf(body));
    case Operation::updatePage:
        return updatePage(workspace, requireUuid(route.id, u"page_id"_s), membersOf(body));
    }
    throw invalidUrl();
}

} // namespace

Reply ApiRouter::handle(const Request &request)
{
    const QString requestId = newRandomId(*QRandomGenerator::global());
    Reply reply{.status = 200,
                .headers
                = {{"Content-Type", "application/json; charset=utf-8"}, {"x-notion-request-id", requestId.toLatin1()}},
                .body = {}};
    try {
        // In this order: a wrong path and broken JSON are told even to those without a token.
        const Route route = routeOf(request);
        const auto body = parseBody(request);
        checkToken(request, m_apiKey);
        checkVersion(request);
        if (request.body.size() > largestBody)
            throw validationError(u"Request body is larger than 500 kB."_s);
        QJsonObject json = perform(m_workspace, route, body, filterProperties(request));
        json.insert(u"request_id"_s, requestId);
        reply.body = jsonText(json);
    } catch (const ApiError &error) {
        reply.status = error.status;
        reply.body = jsonText(toJson(error, requestId));
    }
    return reply;
}

} // namespace korvo::sandbox
