#include "sandbox/ControlRouter.h"

#include "sandbox/ApiError.h"
#include "sandbox/JsonText.h"
#include "sandbox/SandboxServer.h"
#include "sandbox/Workspace.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

struct Answer {
    int status = 200;
    QJsonObject json;
};

Answer problem(int status, const QString &message)
{
    return {status, {{u"error"_s, message}}};
}

Answer listRequests(const SandboxServer &server)
{
    QJsonArray list;
    for (const RecordedRequest &request : server.requests()) {
        QJsonArray headers;
        for (const auto &[name, value] : request.headers)
            headers.append(QJsonArray{QString::fromLatin1(name), QString::fromLatin1(value)});
        list.append(QJsonObject{{u"index"_s, request.index},
                                {u"connection"_s, request.connection},
                                {u"method"_s, QString::fromLatin1(request.method)},
                                {u"target"_s, QString::fromLatin1(request.target)},
                                {u"headers"_s, headers},
                                {u"body"_s, request.body},
                                {u"status"_s, request.status}});
    }
    return {200, {{u"requests"_s, list}, {u"connections"_s, server.connectionCount()}}};
}

Answer listPages(const SandboxServer &, const Workspace &workspace, const QString &databaseId)
{
    QJsonArray list;
    for (const QJsonObject &page : workspace.pages(databaseId))
        list.append(page);
    return {200, {{u"pages"_s, list}}};
}

Answer startTimer(Workspace &workspace, const QString &task)
{
    const QString entry = workspace.startTimer(task);
    return entry.isEmpty() ? problem(404, u"There is no task of that name."_s) : Answer{200, {{u"entry"_s, entry}}};
}

Answer setProperty(Workspace &workspace, const QUrlQuery &query, const QJsonObject &value)
{
    const QString page = query.queryItemValue(u"page"_s, QUrl::FullyDecoded);
    try {
        workspace.setProperty(page, query.queryItemValue(u"property"_s, QUrl::FullyDecoded), value);
    } catch (const ApiError &error) {
        return problem(error.status, error.message);
    }
    return {200, workspace.pageById(page)};
}

Answer answer(SandboxServer &server, const Request &request)
{
    const QByteArray call = request.method + ' ' + request.path();
    const QUrlQuery query(QUrl::fromEncoded(request.target));
    const QJsonObject body = QJsonDocument::fromJson(request.body).object();
    if (call == "GET /sandbox/info")
        return {200, serverInfo(server)};
    if (call == "GET /sandbox/requests")
        return listRequests(server);
    if (call == "DELETE /sandbox/requests") {
        server.clearRequests();
        return {};
    }
    if (call == "POST /sandbox/faults") {
        const QString wrong = addFault(server.faults(), body);
        return wrong.isEmpty() ? Answer() : problem(400, wrong);
    }
    if (call == "DELETE /sandbox/faults") {
        server.faults().clear();
        return {};
    }
    if (call == "GET /sandbox/pages")
        return listPages(server, server.workspace(), query.queryItemValue(u"database"_s, QUrl::FullyDecoded));
    if (call == "POST /sandbox/start-timer")
        return startTimer(server.workspace(), query.queryItemValue(u"task"_s, QUrl::FullyDecoded));
    if (call == "POST /sandbox/stop-timers") {
        server.workspace().stopTimers();
        return {};
    }
    if (call == "POST /sandbox/set")
        return setProperty(server.workspace(), query, body);
    if (call == "POST /sandbox/drop-connections") {
        // After this answer: its own connection is one of them.
        QMetaObject::invokeMethod(&server, &SandboxServer::dropConnections, Qt::QueuedConnection);
        return {};
    }
    return problem(404, u"There is no such control path."_s);
}

} // namespace

bool isControlRequest(const Request &request)
{
    return request.target.startsWith("/sandbox/");
}

Reply handleControl(SandboxServer &server, const Request &request)
{
    const Answer result = answer(server, request);
    return {.status = result.status,
            .headers = {{"Content-Type", "application/json; charset=utf-8"}},
            .body = jsonText(result.json)};
}

const char *controlHelp()
{
    return R"(Control paths, without a key, on the same port:
  GET    /sandbox/info                     what the program printed at its start
  GET    /sandbox/requests                 the requests so far, oldest first
  DELETE /sandbox/requests                 forget them
  GET    /sandbox/pages?database=ID        the rows of a database
  POST   /sandbox/start-timer?task=NAME    start a timer as from another device
  POST   /sandbox/stop-timers              stop all timers as from another device
  POST   /sandbox/set?page=ID&property=NAME  write a property; the body is its value as in the API
  POST   /sandbox/drop-connections         close all connections
  POST   /sandbox/faults                   let coming requests fail; the body tells how
  DELETE /sandbox/faults                   let no more requests fail

A fault is a JSON object:
  kind      "error" (with status, retry_after), "answer" (status, headers, body), "html" (status), "not-utf8" (status),
            "nested" (depth), "streamed" (megabytes), "slow", "lose-answer", "cut-body", "cut-headers",
            "close-without-answer", "close-before-reading", "never-answer"
  delay_ms  wait so long before the answer or the end of the connection
  method    only requests of this method
  path      only requests whose path begins so, "/v1/pages"
  nth       begin with the nth such request; 1 if left out
  times     for so many requests; 1 if left out, -1 for ever
The effect of a request stays with "slow", "lose-answer", "cut-body" and "cut-headers"; with the others it has none.
)";
}

QJsonObject serverInfo(SandboxServer &server)
{
    const Workspace &workspace = server.workspace();
    return {{u"url"_s, u"%1://localhost:%2/v1"_s.arg(server.isTls() ? u"https"_s : u"http"_s).arg(server.port())},
            {u"port"_s, server.port()},
            {u"caFile"_s, server.caFile()},
            {u"apiKey"_s, server.apiKey()},
            {u"timeTrackerDBId"_s, workspace.timeTrackerId()},
            {u"tasksDBId"_s, workspace.tasksId()},
            {u"projectsDBId"_s, workspace.projectsId()},
            {u"clientsDBId"_s, workspace.clientsId()},
            {u"fieldMapping"_s, Workspace::fieldMapping()}};
}

} // namespace korvo::sandbox
