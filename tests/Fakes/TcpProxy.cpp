#include "Fakes/TcpProxy.h"

#include <QHostAddress>
#include <QPointer>
#include <QTimer>

namespace korvo {

TcpProxy::TcpProxy(quint16 targetPort, std::chrono::milliseconds oneWay, QObject *parent) :
    QObject(parent),
    m_targetPort(targetPort),
    m_oneWay(oneWay)
{
    connect(&m_server, &QTcpServer::newConnection, this, &TcpProxy::accept);
    m_server.listen(QHostAddress::LocalHost);
}

void TcpProxy::accept()
{
    while (auto *client = m_server.nextPendingConnection()) {
        ++m_connectionCount;
        auto *server = new QTcpSocket(client);
        for (auto *socket : {client, server})
            socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        server->connectToHost(QHostAddress(QHostAddress::LocalHost), m_targetPort);
        handOn(client, server);
        handOn(server, client);
        connect(server, &QTcpSocket::disconnected, client, &QTcpSocket::disconnectFromHost);
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    }
}

void TcpProxy::handOn(QTcpSocket *from, QTcpSocket *to)
{
    connect(from, &QTcpSocket::readyRead, this, [this, from, to = QPointer(to)] {
        const auto bytes = from->readAll();
        m_byteCount += bytes.size();
        QTimer::singleShot(m_oneWay, Qt::PreciseTimer, this, [to, bytes] {
            if (to)
                to->write(bytes);
        });
    });
}

} // namespace korvo
