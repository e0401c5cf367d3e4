#include "sandbox/Listener.h"

#include <QSslSocket>
#include <QTcpSocket>

#include <memory>

namespace korvo::sandbox {
namespace {

constexpr int backlog = 512; ///< A full one makes clients wait for seconds before they try again.

} // namespace

Listener::Listener()
{
    setListenBacklogSize(backlog);
}

void Listener::incomingConnection(qintptr descriptor)
{
    if (!m_tls) {
        auto socket = std::make_unique<QTcpSocket>();
        if (socket->setSocketDescriptor(descriptor))
            onConnection(socket.release());
        return;
    }
    auto socket = std::make_unique<QSslSocket>();
    socket->setSslConfiguration(*m_tls);
    if (!socket->setSocketDescriptor(descriptor))
        return;
    QSslSocket *tlsSocket = socket.get();
    onConnection(socket.release());
    tlsSocket->startServerEncryption();
}

} // namespace korvo::sandbox
