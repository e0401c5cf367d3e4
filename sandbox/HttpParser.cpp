#include "sandbox/HttpParser.h"

#include <algorithm>

namespace korvo::sandbox {
namespace {

constexpr qsizetype longestChunkLine = 256;

bool isToken(const QByteArray &text)
{
    return !text.isEmpty() && std::ranges::all_of(text, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')
            || QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
    });
}

std::optional<Request> parseHead(const QByteArray &head)
{
    QList<QByteArray> lines = head.split('\n');
    for (QByteArray &line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    const QList<QByteArray> parts = lines.takeFirst().split(' ');
    if (parts.size() != 3 || !isToken(parts[0]) || !parts[1].startsWith('/'))
        return std::nullopt;
    if (parts[2] != "HTTP/1.1" && parts[2] != "HTTP/1.0")
        return std::nullopt;
    Request request{.method = parts[0],
                    .target = parts[1],
                    .minorVersion = parts[2].endsWith('1') ? 1 : 0,
                    .headers = {},
                    .body = {}};
    for (const QByteArray &line : std::as_const(lines)) {
        const qsizetype colon = line.indexOf(':');
        if (colon < 0 || !isToken(line.left(colon)))
            return std::nullopt;
        request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    return request;
}

} // namespace

std::optional<Request> HttpParser::next()
{
    if (m_errorStatus != 0 || (!m_request && !readHead()) || !readBody())
        return std::nullopt;
    std::optional<Request> request;
    request.swap(m_request);
    return request;
}

bool HttpParser::takeContinueExpected()
{
    return std::exchange(m_expectsContinue, false);
}

bool HttpParser::readHead()
{
    // Empty lines before a request are allowed.
    while (m_buffer.startsWith("\r\n"))
        m_buffer.remove(0, 2);
    const qsizetype end = m_buffer.indexOf("\r\n\r\n");
    if (end < 0)
        return m_buffer.size() > largestHead ? fail(413) : false;
    if (end > largestHead)
        return fail(413);
    m_request = parseHead(m_buffer.left(end));
    if (!m_request)
        return fail(400);
    m_buffer.remove(0, end + 4);

    const QByteArray coding = m_request->header("Transfer-Encoding").toLower();
    const QByteArray length = m_request->header("Content-Length");
    m_isChunked = coding == "chunked";
    if ((!coding.isEmpty() && !m_isChunked) || (m_isChunked && !length.isNull()))
        return fail(400);
    m_bodyLength = 0;
    if (!length.isNull()) {
        bool isNumber = false;
        m_bodyLength = length.toLongLong(&isNumber);
        if (!isNumber || m_bodyLength < 0)
            return fail(400);
        if (m_bodyLength > largestBody)
            return fail(413);
    }
    m_expectsContinue = m_request->header("Expect").toLower() == "100-continue";
    return true;
}

bool HttpParser::readBody()
{
    if (m_isChunked)
        return readChunks();
    if (m_buffer.size() < m_bodyLength)
        return false;
    m_request->body = m_buffer.left(m_bodyLength);
    m_buffer.remove(0, m_bodyLength);
    return true;
}

bool HttpParser::readChunks()
{
    for (;;) {
        const qsizetype lineEnd = m_buffer.indexOf("\r\n");
        if (lineEnd < 0)
            return m_buffer.size() > longestChunkLine ? fail(400) : false;
        const QByteArray size = m_buffer.left(lineEnd).split(';').first().trimmed();
        bool isNumber = false;
        const qint64 length = size.toLongLong(&isNumber, 16);
        if (!isNumber || length < 0)
            return fail(400);
        if (m_request->body.size() + length > largestBody)
            return fail(413);
        // A chunk ends with a line end of its own; the last, empty one with the line end after the (absent) trailers.
        if (m_buffer.size() < lineEnd + 2 + length + 2)
            return false;
        if (m_buffer.mid(lineEnd + 2 + length, 2) != "\r\n")
            return fail(400);
        m_request->body += m_buffer.mid(lineEnd + 2, length);
        m_buffer.remove(0, lineEnd + 2 + length + 2);
        if (length == 0)
            return true;
    }
}

bool HttpParser::fail(int status)
{
    m_errorStatus = status;
    m_request.reset();
    m_buffer.clear();
    return false;
}

} // namespace korvo::sandbox
