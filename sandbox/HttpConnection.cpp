#include "sandbox/HttpConnection.h"

#include "sandbox/Gzip.h"

#include <QDateTime>
#include <QLocale>
#include <QTcpSocket>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr qsizetype largestChunk = 16 * 1024;
constexpr qint64 streamAhead = 256 * 1024; ///< So much waits in the socket while a long body is streamed.

QByteArray chunk(const QByteArray &bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

/// The body in at least two chunks, so that a client meets more than one even in a small answer.
QByteArray chunked(const QByteArray &body)
{
    const qsizetype size = std::clamp(body.size() / 2 + 1, qsizetype{1}, largestChunk);
    QByteArray bytes;
    for (qsizetype at = 0; at < body.size(); at += size)
        bytes += chunk(body.mid(at, size));
    return bytes + "0\r\n\r\n";
}

bool acceptsGzip(const Request &request)
{
    return request.header("Accept-Encoding").toLower().contains("gzip");
}

} // namespace

HttpConnection::HttpConnection(QTcpSocket *socket, int number, QObject *parent) :
    QObject(parent),
    m_socket(socket),
    m_number(number)
{
    socket->setParent(this);
    connect(socket, &QTcpSocket::readyRead, this, &HttpConnection::readMore);
    connect(socket, &QTcpSocket::bytesWritten, this, &HttpConnection::streamMore);
    connect(socket, &QTcpSocket::disconnected, this, &HttpConnection::closed);
}

void HttpConnection::readMore()
{
    if (!m_isAnswering && refusesToRead && refusesToRead()) {
        drop();
        return;
    }
    m_parser.feed(m_socket->readAll());
    readNext();
}

void HttpConnection::readNext()
{
    if (m_isAnswering)
        return;
    const auto request = m_parser.next();
    if (m_parser.errorStatus() != 0) {
        refuse(m_parser.errorStatus());
        return;
    }
    const bool isContinueExpected = m_parser.takeContinueExpected();
    if (!request) {
        if (isContinueExpected)
            m_socket->write("HTTP/1.1 100 Continue\r\n\r\n");
        return;
    }
    m_request = *request;
    m_isAnswering = true;
    emit requestRead(m_request);
}

void HttpConnection::refuse(int status)
{
    m_socket->write("HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status)
                    + "\r\nContent-Type: text/plain\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    m_isAnswering = true; // Nothing more is read.
    m_socket->disconnectFromHost();
}

QByteArray HttpConnection::head(const Reply &reply, bool isGzipped) const
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' + reasonPhrase(reply.status) + "\r\n";
    const auto add = [&head](const QByteArray &name, const QByteArray &value) { head += name + ": " + value + "\r\n"; };
    add("Date",
        QLocale::c().toString(QDateTime::currentDateTimeUtc(), u"ddd, dd MMM yyyy hh:mm:ss 'GMT'"_s).toLatin1());
    for (const auto &[name, value] : reply.headers)
        add(name, value);
    add("Vary", "Accept-Encoding");
    if (isGzipped)
        add("Content-Encoding", "gzip");
    if (m_request.minorVersion >= 1)
        add("Transfer-Encoding", "chunked");
    add("Connection", m_request.keepsAlive() && m_request.minorVersion >= 1 ? "keep-alive" : "close");
    return head + "\r\n";
}

void HttpConnection::send(const Reply &reply, Extent extent)
{
    const bool isGzipped = acceptsGzip(m_request);
    const QByteArray headers = head(reply, isGzipped);
    const QByteArray body = isGzipped ? gzip(reply.body) : reply.body;
    const QByteArray framed = m_request.minorVersion >= 1 ? chunked(body) : body;
    switch (extent) {
    case Extent::whole:
        m_socket->write(headers + framed);
        finishAnswer();
        return;
    case Extent::halfBody:
        m_socket->write(headers + framed.left(framed.size() / 2));
        break;
    case Extent::halfHeaders:
        m_socket->write(headers.left(headers.size() / 2));
        break;
    }
    m_socket->disconnectFromHost();
}

void HttpConnection::stream(const Reply &reply, qint64 bytes)
{
    m_socket->write(head(reply, false));
    m_socket->write(m_request.minorVersion >= 1 ? chunk("{\"filler\":\"") : "{\"filler\":\"");
    m_bytesToStream = bytes;
    m_isStreaming = true;
    streamMore();
}

void HttpConnection::streamMore()
{
    if (!m_isStreaming)
        return;
    const bool isChunked = m_request.minorVersion >= 1;
    while (m_bytesToStream > 0 && m_socket->bytesToWrite() < streamAhead) {
        const QByteArray piece(std::min<qint64>(m_bytesToStream, largestChunk), 'x');
        m_socket->write(isChunked ? chunk(piece) : piece);
        m_bytesToStream -= piece.size();
    }
    if (m_bytesToStream > 0)
        return;
    m_isStreaming = false;
    m_socket->write(isChunked ? chunk("\"}") + "0\r\n\r\n" : QByteArray("\"}"));
    finishAnswer();
}

void HttpConnection::finishAnswer()
{
    // Into the system's hands now, so that an answer is out even if the connection is dropped next.
    m_socket->flush();
    m_isAnswering = false;
    if (!m_request.keepsAlive() || m_request.minorVersion < 1) {
        m_isAnswering = true; // Nothing more is read.
        m_socket->disconnectFromHost();
        return;
    }
    // Not from here: whoever answers may be in the middle of the signal of this request.
    QMetaObject::invokeMethod(this, &HttpConnection::readNext, Qt::QueuedConnection);
}

void HttpConnection::drop()
{
    m_isStreaming = false;
    m_socket->abort();
}

} // namespace korvo::sandbox
