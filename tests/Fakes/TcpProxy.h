#pragma once

#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>

#include <chrono>

namespace korvo {

/// Stands on loopback between a client and a server on the same machine: hands bytes on as they are, counts them, and
/// can hold each back for a while, as a long way does.
class TcpProxy : public QObject {
    Q_OBJECT
public:
    /// Leads to `targetPort`; each byte takes `oneWay` in either direction.
    explicit TcpProxy(quint16 targetPort, std::chrono::milliseconds oneWay = {}, QObject *parent = nullptr);

    quint16 port() const { return m_server.serverPort(); }
    qint64 byteCount() const { return m_byteCount; } ///< In both directions together.
    int connectionCount() const { return m_connectionCount; }

private:
    void accept();
    void handOn(QTcpSocket *from, QTcpSocket *to);

    QTcpServer m_server;
    quint16 m_targetPort;
    std::chrono::milliseconds m_oneWay;
    qint64 m_byteCount = 0;
    int m_connectionCount = 0;
};

} // namespace korvo
