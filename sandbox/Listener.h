#pragma once

#include <QSslConfiguration>
#include <QTcpServer>

#include <functional>
#include <optional>
#include <utility>

class QTcpSocket;

namespace korvo::sandbox {

/// Accepts connections, with TLS if it was given a configuration, and hands each on before its handshake.
class Listener : public QTcpServer {
    Q_OBJECT
public:
    Listener();

    /// Given each accepted socket, which the receiver then owns.
    std::function<void(QTcpSocket *)> onConnection;

    void setTls(std::optional<QSslConfiguration> configuration) { m_tls = std::move(configuration); } ///< None: plain.

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    std::optional<QSslConfiguration> m_tls; ///< None at first: Qt wants an application object for one.
};

} // namespace korvo::sandbox
