#pragma once

#include "sandbox/HttpMessage.h"
#include "sandbox/SandboxServer.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTcpSocket>

#include <memory>
#include <optional>

namespace korvo::sandbox {

/// What came back for a request.
struct ClientAnswer {
    int status = 0; ///< 0 if not even a status line came.
    Headers headers;
    QByteArray body; ///< With chunks put together and unzipped.
    QByteArray raw;  ///< All bytes as they came.
    bool hasWholeHead = false;
    bool isComplete = false;

    QByteArray header(const QByteArray &name) const { return headerValue(headers, name); }
    QJsonObject json() const;
    QString code() const { return json().value(QStringLiteral("code")).toString(); }
    QString message() const { return json().value(QStringLiteral("message")).toString(); }
    QJsonArray results() const { return json().value(QStringLiteral("results")).toArray(); }
};

/// A client of the tests on a plain socket, so that they see every byte and no request is ever sent twice. It keeps its
/// connection while the server does.
class SandboxClient {
public:
    explicit SandboxClient(SandboxServer &server);

    /// Headers that are sent with every request of `call`; those of a well-behaved client at first.
    Headers headers;

    /// Sends a request of the API with `headers` and waits for the answer or the end of the connection.
    ClientAnswer call(const QByteArray &method, const QByteArray &target,
                      const std::optional<QJsonObject> &body = std::nullopt);
    /// The same with the body's bytes as they are.
    ClientAnswer callRaw(const QByteArray &method, const QByteArray &target, const QByteArray &body);
    /// Sends bytes as they are.
    ClientAnswer sendBytes(const QByteArray &bytes);
    /// Sends a request and does not wait.
    void start(const QByteArray &method, const QByteArray &target,
               const std::optional<QJsonObject> &body = std::nullopt);

    ClientAnswer query(const QString &databaseId, const QJsonObject &body = {});
    ClientAnswer getPage(const QString &id);
    ClientAnswer createPage(const QString &databaseId, const QJsonObject &properties);
    ClientAnswer updatePage(const QString &id, const QJsonObject &properties);

    QTcpSocket *socket() { return m_socket.get(); }

private:
    bool connectToServer();
    QByteArray requestBytes(const QByteArray &method, const QByteArray &target,
                            const std::optional<QByteArray> &body) const;

    SandboxServer &m_server;
    std::unique_ptr<QTcpSocket> m_socket;
};

} // namespace korvo::sandbox
