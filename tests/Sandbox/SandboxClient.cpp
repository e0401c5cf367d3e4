#include "Sandbox/SandboxClient.h"

#include "sandbox/Gzip.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr int patience = 30000; ///< Milliseconds until a test gives an answer up; none ever takes so long.

/// Puts chunks together. False while the last one is missing.
bool joinChunks(const QByteArray &bytes, QByteArray &body)
{
    qsizetype at = 0;
    for (;;) {
        const qsizetype lineEnd = bytes.indexOf("\r\n", at);
        if (lineEnd < 0)
            return false;
        const qsizetype size = bytes.mid(at, lineEnd - at).toLongLong(nullptr, 16);
        if (bytes.size() < lineEnd + 2 + size + 2)
            return false;
        body += bytes.mid(lineEnd + 2, size);
        at = lineEnd + 2 + size + 2;
        if (size == 0)
            return true;
    }
}

/// Turns the event loop until the condition holds, looking again whenever something happened on the socket.
template <typename Condition> bool waitFor(QTcpSocket &socket, Condition condition)
{
    QEventLoop loop;
    QObject::connect(&socket, &QTcpSocket::readyRead, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QTcpSocket::stateChanged, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QTcpSocket::errorOccurred, &loop, &QEventLoop::quit);
    if (auto *tls = qobject_cast<QSslSocket *>(&socket))
        QObject::connect(tls, &QSslSocket::encrypted, &loop, &QEventLoop::quit);
    bool isLate = false;
    QTimer::singleShot(patience, &loop, [&] {
        isLate = true;
        loop.quit();
    });
    while (!condition() && !isLate)
        loop.exec();
    return !isLate;
}

ClientAnswer parse(const QByteArray &raw, bool isClosed)
{
    ClientAnswer answer;
    answer.raw = raw;
    const qsizetype headEnd = raw.indexOf("\r\n\r\n");
    QList<QByteArray> lines = raw.left(headEnd < 0 ? raw.size() : headEnd).split('\n');
    answer.status = lines.takeFirst().split(' ').value(1).toInt();
    for (const QByteArray &line : std::as_const(lines)) {
        const qsizetype colon = line.indexOf(':');
        answer.headers.append(std::pair(line.left(colon), line.mid(colon + 1).trimmed()));
    }
    if (headEnd < 0)
        return answer;
    answer.hasWholeHead = true;
    const QByteArray rest = raw.mid(headEnd + 4);
    if (answer.header("Transfer-Encoding") == "chunked") {
        answer.isComplete = joinChunks(rest, answer.body);
    } else if (const QByteArray length = answer.header("Content-Length"); !length.isNull()) {
        answer.body = rest;
        answer.isComplete = rest.size() >= length.toLongLong();
    } else {
        answer.body = rest;
        answer.isComplete = isClosed;
    }
    if (answer.isComplete && answer.header("Content-Encoding") == "gzip")
        answer.body = gunzip(answer.body);
    return answer;
}

} // namespace

QJsonObject ClientAnswer::json() const
{
    return QJsonDocument::fromJson(body).object();
}

SandboxClient::SandboxClient(SandboxServer &server) :
    headers{{"Authorization", "Bearer ntn_sandbox"},
            {"Notion-Version", "2022-06-28"},
            {"Content-Type", "application/json"}},
    m_server(server)
{
}

bool SandboxClient::connectToServer()
{
    if (m_socket && m_socket->state() == QAbstractSocket::ConnectedState)
        return true;
    if (!m_server.isTls()) {
        m_socket = std::make_unique<QTcpSocket>();
        m_socket->connectToHost(QHostAddress(QHostAddress::LocalHost), m_server.port());
        return waitFor(*m_socket, [this] { return m_socket->state() == QAbstractSocket::ConnectedState; });
    }
    auto socket = std::make_unique<QSslSocket>();
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(m_server.caFile()));
    socket->setSslConfiguration(configuration);
    socket->setPeerVerifyName(u"api.notion.com"_s);
    socket->connectToHostEncrypted(u"127.0.0.1"_s, m_server.port());
    const QSslSocket *tls = socket.get();
    m_socket = std::move(socket);
    return waitFor(*m_socket,
                   [tls] { return tls->isEncrypted() || tls->error() != QAbstractSocket::UnknownSocketError; })
        && tls->isEncrypted();
}

QByteArray SandboxClient::requestBytes(const QByteArray &method, const QByteArray &target,
                                       const std::optional<QByteArray> &body) const
{
    QByteArray bytes = method + ' ' + target + " HTTP/1.1\r\nHost: api.notion.com\r\n";
    for (const auto &[name, value] : headers)
        bytes += name + ": " + value + "\r\n";
    if (body)
        bytes += "Content-Length: " + QByteArray::number(body->size()) + "\r\n";
    return bytes + "\r\n" + body.value_or(QByteArray());
}

ClientAnswer SandboxClient::sendBytes(const QByteArray &bytes)
{
    if (!connectToServer())
        return {};
    QByteArray raw;
    QTcpSocket *socket = m_socket.get();
    socket->write(bytes);
    ClientAnswer answer;
    const bool hasEnded = waitFor(*socket, [&] {
        const bool isClosed = socket->state() != QAbstractSocket::ConnectedState;
        const QByteArray more = socket->readAll();
        raw += more;
        if (isClosed || !more.isEmpty())
            answer = parse(raw, isClosed);
        return isClosed || answer.isComplete;
    });
    if (!hasEnded)
        qWarning("No answer came");
    return answer;
}

void SandboxClient::start(const QByteArray &method, const QByteArray &target, const std::optional<QJsonObject> &body)
{
    std::optional<QByteArray> bytes;
    if (body)
        bytes = QJsonDocument(*body).toJson(QJsonDocument::Compact);
    if (connectToServer())
        m_socket->write(requestBytes(method, target, bytes));
}

ClientAnswer SandboxClient::call(const QByteArray &method, const QByteArray &target,
                                 const std::optional<QJsonObject> &body)
{
    if (body)
        return callRaw(method, target, QJsonDocument(*body).toJson(QJsonDocument::Compact));
    return sendBytes(requestBytes(method, target, std::nullopt));
}

ClientAnswer SandboxClient::callRaw(const QByteArray &method, const QByteArray &target, const QByteArray &body)
{
    return sendBytes(requestBytes(method, target, body));
}

ClientAnswer SandboxClient::query(const QString &databaseId, const QJsonObject &body)
{
    return call("POST", "/v1/databases/" + databaseId.toLatin1() + "/query", body);
}

ClientAnswer SandboxClient::getPage(const QString &id)
{
    return call("GET", "/v1/pages/" + id.toLatin1());
}

ClientAnswer SandboxClient::createPage(const QString &databaseId, const QJsonObject &properties)
{
    return call("POST", "/v1/pages",
                QJsonObject{{u"parent"_s, QJsonObject{{u"database_id"_s, databaseId}}}, {u"properties"_s, properties}});
}

ClientAnswer SandboxClient::updatePage(const QString &id, const QJsonObject &properties)
{
    return call("PATCH", "/v1/pages/" + id.toLatin1(), QJsonObject{{u"properties"_s, properties}});
}

} // namespace korvo::sandbox
