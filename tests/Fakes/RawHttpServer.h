#pragma once

#include "Fakes/TestAuthority.h"

#include <QByteArray>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <memory>
#include <optional>

namespace korvo {

/// A server on this machine that answers each request with bytes given beforehand, right or wrong, and counts what
/// comes. Over TLS if it is given an identity.
class RawHttpServer {
public:
    enum class After { keepOpen, close }; ///< What becomes of the connection after a reply.

    struct Request {
        QByteArray head; ///< Request line and headers, without the empty line.
        QByteArray body;

        QByteArray line() const { return head.left(head.indexOf("\r\n")); }
        /// The value of the header of that name; none if there is none.
        std::optional<QByteArray> header(const QByteArray &name) const;
    };

    explicit RawHttpServer(const std::optional<TestAuthority::Identity> &identity = std::nullopt);
    ~RawHttpServer();
    Q_DISABLE_COPY_MOVE(RawHttpServer)

    quint16 port() const { return m_server->serverPort(); }
    QUrl url(const QString &path = QStringLiteral("/")) const; ///< At the server's address, without TLS.

    /// What the next request gets. The last of them is given again and again; without any there is no answer.
    void reply(const QByteArray &bytes, After after = After::keepOpen);

    /// A whole response with its length.
    static QByteArray response(int status, const QByteArray &body = "{}", const QByteArray &headers = {});

    void write(const QByteArray &bytes); ///< Now, to all who are connected.
    void closeConnections();             ///< Now, whatever is under way.
    void stopListening() { m_server->close(); }

    QList<Request> requests;
    int connectionCount = 0; ///< Connections made in all, over TLS those whose handshake went through.
    int openCount() const { return int(m_connections.size()); }

private:
    struct Connection {
        QTcpSocket *socket;
        QByteArray received;
    };
    struct Reply {
        QByteArray bytes;
        After after;
    };

    void take(QTcpSocket *socket);
    void read(QTcpSocket *socket);
    void answer(QTcpSocket *socket);

    std::unique_ptr<QTcpServer> m_server;
    QList<Connection> m_connections;
    QList<Reply> m_replies;
};

} // namespace korvo
