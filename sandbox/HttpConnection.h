#pragma once

#include "sandbox/HttpMessage.h"
#include "sandbox/HttpParser.h"

#include <QObject>

#include <functional>

class QTcpSocket;

namespace korvo::sandbox {

/// One connection of a client: reads requests one after another and frames the answers to them. Never blocks.
class HttpConnection : public QObject {
    Q_OBJECT
public:
    /// How much of an answer goes out before the connection is closed.
    enum class Extent { whole, halfBody, halfHeaders };

    /// Takes over the socket, which may still be in its TLS handshake.
    HttpConnection(QTcpSocket *socket, int number, QObject *parent);

    int number() const { return m_number; } ///< Counts the connections of a server from 1.

    /// Asked when bytes of a request arrive and none is under way; true closes the connection instead of reading them.
    std::function<bool()> refusesToRead;

    /// Sends the answer to the request at hand: chunked for HTTP/1.1, gzipped if the client accepts it.
    void send(const Reply &reply, Extent extent = Extent::whole);
    /// Sends an answer with about `bytes` of valid JSON as its body, made as the client takes it.
    void stream(const Reply &reply, qint64 bytes);
    /// Closes at once, whatever is under way.
    void drop();

signals:
    /// A whole request was read. The next one waits until this is answered.
    void requestRead(const korvo::sandbox::Request &request);
    void closed();

private:
    void readMore();
    void readNext();
    void refuse(int status);
    QByteArray head(const Reply &reply, bool isGzipped) const;
    void streamMore();
    void finishAnswer();

    QTcpSocket *m_socket;
    int m_number;
    HttpParser m_parser;
    Request m_request;
    bool m_isAnswering = false; ///< A request was handed out and not answered yet.
    qint64 m_bytesToStream = 0;
    bool m_isStreaming = false;
};

} // namespace korvo::sandbox
