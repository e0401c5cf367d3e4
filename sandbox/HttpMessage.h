#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <utility>

namespace korvo::sandbox {

using Headers = QList<std::pair<QByteArray, QByteArray>>;

/// The value of the first header of that name in any case; null if there is none.
QByteArray headerValue(const Headers &headers, const QByteArray &name);

/// A request as it was read.
struct Request {
    QByteArray method;
    QByteArray target;    ///< Path and query as sent.
    int minorVersion = 1; ///< Of HTTP/1.
    Headers headers;
    QByteArray body;

    QByteArray header(const QByteArray &name) const { return headerValue(headers, name); }
    QByteArray path() const { return target.split('?').first(); }
    /// False if the connection ends with the answer.
    bool keepsAlive() const;
};

/// An answer before it is framed: no Content-Length, Transfer-Encoding or Content-Encoding.
struct Reply {
    int status = 200;
    Headers headers;
    QByteArray body;
};

/// The words of a status line.
QByteArray reasonPhrase(int status);

} // namespace korvo::sandbox
