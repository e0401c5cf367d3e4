#include "Fakes/RawHttpServer.h"

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

std::optional<QByteArray> RawHttpServer::Request::header(const QByteArray &name) const
{
    for (const auto &text : head.split('\n')) {
        const auto colon = text.indexOf(':');
        if (colon > 0 && text.first(colon).compare(name, Qt::CaseInsensitive) == 0)
            return text.sliced(colon + 1).trimmed();
    }
    return std::nullopt;
}

RawHttpServer::RawHttpServer(const std::optional<TestAuthority::Identity> &identity)
{
    if (identity) {
        auto configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(QSslCertificate(identity->certificate));
        configuration.setPrivateKey(QSslKey(identity->key, QSsl::Ec));
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
        auto server = std::make_unique<QSslServer>();
        server->setSslConfiguration(configuration);
        m_server = std::move(server);
    } else {
        m_server = std::make_unique<QTcpServer>();
    }
    QObject::connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, m_server.get(), [this] {
        while (auto *const socket = m_server->nextPendingConnection())
            take(socket);
    });
    if (!m_server->listen(QHostAddress::LocalHost))
        qFatal("The test server cannot listen");
}

RawHttpServer::~RawHttpServer()
{
    for (const auto &connection : std::as_const(m_connections))
        connection.socket->disconnect();
}

QUrl RawHttpServer::url(const QString &path) const
{
    return QUrl(u"http://127.0.0.1:%1"_s.arg(port()) + path);
}

void RawHttpServer::reply(const QByteArray &bytes, After after)
{
    m_replies.append(Reply{bytes, after});
}

QByteArray RawHttpServer::response(int status, const QByteArray &body, const QByteArray &headers)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Status\r\nContent-Type: application/json\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body;
}

void RawHttpServer::write(const QByteArray &bytes)
{
    for (const auto &connection : std::as_const(m_connections))
        connection.socket->write(bytes);
}

void RawHttpServer::closeConnections()
{
    const auto connections = m_connections;
    for (const auto &connection : connections)
        connection.socket->disconnectFromHost();
}

void RawHttpServer::take(QTcpSocket *socket)
{
    ++connectionCount;
    m_connections.append(Connection{socket, {}});
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { read(socket); });
    QObject::connect(socket, &QTcpSocket::disconnected, socket, [this, socket] {
        m_connections.removeIf([socket](const Connection &one) { return one.socket == socket; });
        socket->deleteLater();
    });
    read(socket);
}

void RawHttpServer::read(QTcpSocket *socket)
{
    const auto connection = std::find_if(m_connections.begin(), m_connections.end(),
                                         [socket](const Connection &one) { return one.socket == socket; });
    if (connection == m_connections.end())
        return;
    auto &received = connection->received;
    received += socket->readAll();
    const auto end = received.indexOf("\r\n\r\n");
    if (end < 0)
        return;
    Request request{received.first(end), {}};
    const auto length = request.header("Content-Length"_ba).value_or("0"_ba).toLongLong();
    const auto start = end + 4;
    if (received.size() < start + length)
        return;
    request.body = received.sliced(start, length);
    received.remove(0, start + length);
    requests.append(request);
    answer(socket);
}

void RawHttpServer::answer(QTcpSocket *socket)
{
    if (m_replies.isEmpty())
        return;
    const auto reply = m_replies.size() > 1 ? m_replies.takeFirst() : m_replies.first();
    socket->write(reply.bytes);
    if (reply.after == After::close)
        socket->disconnectFromHost();
}

} // namespace korvo
