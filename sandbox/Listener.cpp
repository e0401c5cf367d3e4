#include "sandbox/Listener.h"

#include <QSslSocket>
#include <QTcpSocket>

#include <memory>

namespace korvo::sandbox {

void Listener::incomingConnection(qintptr descriptor)
{
    if (m_tls.isNull()) {
        auto socket = std::make_unique<QTcpSocket>();
        if (socket->setSocketDescriptor(descriptor))
            onConnection(socket.release());
        return;
    }
    auto socket = std::make_unique<QSslSocket>();
    socket->setSslConfiguration(m_tls);
    if (!socket->setSocketDescriptor(descriptor))
        return;
    QSslSocket *tlsSocket = socket.get();
    onConnection(socket.release());
    tlsSocket->startServerEncryption();
}

} // namespace korvo::sandbox
