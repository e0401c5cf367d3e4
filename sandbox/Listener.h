#pragma once

#include <QSslConfiguration>
#include <QTcpServer>

#include <functional>
#include <optional>

class QTcpSocket;

namespace korvo::sandbox {

/// Accepts connections, with TLS if it was given a configuration, and hands each on before its handshake.
class Listener : public QTcpServer {
    Q_OBJECT
public:
    Listener();

    /// Given each accepted socket, which the receiver then owns.
    std::function<void(QTcpSocket *)> onConnection;

    void setTls(const QSslConfiguration &configuration) { m_tls = configuration; }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    std::optional<QSslConfiguration> m_tls; ///< Made with the first need: Qt wants an application object for it.
};

} // namespace korvo::sandbox
