#pragma once

#include "sandbox/HttpMessage.h"

#include <optional>

namespace korvo::sandbox {

/// Reads HTTP/1.1 requests out of the bytes of a connection. It is this small one of our own and no library's because
/// faults are made at the level of bytes: an answer cut in the middle of a header must stay exactly that.
class HttpParser {
public:
    static constexpr qsizetype largestHead = 64 * 1024;
    static constexpr qsizetype largestBody = 8 * 1024 * 1024;

    /// Takes the next bytes of the connection.
    void feed(const QByteArray &bytes) { m_buffer += bytes; }

    /// The next whole request, with a chunked body put together; none while bytes are missing or after an error.
    std::optional<Request> next();

    /// The status to refuse the connection with after bytes that are no request or exceed a limit; 0 if all is well.
    int errorStatus() const { return m_errorStatus; }

    /// True once for each request whose sender waits for "100 Continue" before it sends the body.
    bool takeContinueExpected();

private:
    bool readHead();
    bool readBody();
    bool readChunks();
    bool fail(int status);

    QByteArray m_buffer;
    std::optional<Request> m_request; ///< Its head has been read.
    qint64 m_bodyLength = 0;
    bool m_isChunked = false;
    bool m_expectsContinue = false;
    int m_errorStatus = 0;
};

} // namespace korvo::sandbox
