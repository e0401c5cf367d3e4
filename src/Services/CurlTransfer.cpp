#include "Services/CurlTransfer.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

constexpr qsizetype bodyLimit = 32 * 1024 * 1024;
constexpr qsizetype headLimit = 1024 * 1024;

QByteArray userAgent()
{
    const auto version = QCoreApplication::applicationVersion().toLatin1();
    return version.isEmpty() ? "Korvo"_ba : "Korvo/" + version;
}

/// Whether the bytes can stand in a header without ending it.
bool fitsHeader(const QByteArray &text)
{
    return std::none_of(text.begin(), text.end(), [](char byte) {
        const auto code = static_cast<unsigned char>(byte);
        return (code < 0x20 && byte != '\t') || code == 0x7f;
    });
}

} // namespace

CurlTransfer::CurlTransfer(HttpRequest request) : m_request(std::move(request)), m_easy(curl_easy_init())
{
    if (!m_easy) {
        m_refusal = HttpError{u"The request could not be set up"_s};
        return;
    }
    setOptions();
    setBody();
    setHeaders();
}

void CurlTransfer::connectTo(const QByteArray &entry, const QByteArray &caFile)
{
    append(m_connectTo, entry);
    curl_easy_setopt(handle(), CURLOPT_CONNECT_TO, m_connectTo.get());
    curl_easy_setopt(handle(), CURLOPT_PROXY, ""); // The way is given: no proxy of the environment.
    if (!caFile.isEmpty()) {
        curl_easy_setopt(handle(), CURLOPT_CAINFO, caFile.constData());
        curl_easy_setopt(handle(), CURLOPT_CAPATH, nullptr);
    }
}

void CurlTransfer::trustFolder(const QByteArray &folder)
{
    curl_easy_setopt(handle(), CURLOPT_CAPATH, folder.constData());
    curl_easy_setopt(handle(), CURLOPT_CAINFO, nullptr);
}

void CurlTransfer::setOptions()
{
    CURL *const easy = handle();
    const auto url = m_request.exactUrl.isEmpty() ? m_request.url.toEncoded() : m_request.exactUrl;
    curl_easy_setopt(easy, CURLOPT_URL, url.constData());
    curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    curl_easy_setopt(easy, CURLOPT_HTTP09_ALLOWED, 0L);
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 0L); // An idle connection keeps the machine asleep.
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, ""); // All that libcurl can decode.
    curl_easy_setopt(easy, CURLOPT_USERAGENT, userAgent().constData());
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(std::max<qint64>(1, m_request.timeout.count())));
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // Without it a transfer that ends while its name is looked up waits for the resolver's thread on the main loop.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);

    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_errorText.data());
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &CurlTransfer::beforeSending);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &CurlTransfer::headerArrived);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &CurlTransfer::bodyArrived);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
}

void CurlTransfer::setBody()
{
    if (m_request.body) {
        curl_easy_setopt(handle(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body->size()));
        curl_easy_setopt(handle(), CURLOPT_POSTFIELDS, m_request.body->constData()); // Not copied: lives as long as we.
    } else if (m_request.method == "HEAD") {
        curl_easy_setopt(handle(), CURLOPT_NOBODY, 1L);
    } else {
        curl_easy_setopt(handle(), CURLOPT_HTTPGET, 1L);
    }
    curl_easy_setopt(handle(), CURLOPT_CUSTOMREQUEST, m_request.method.constData());
}

void CurlTransfer::setHeaders()
{
    append(m_headers, "Expect:"_ba); // A large body goes out at once, without asking first.
    auto hasType = false;
    for (const auto &[name, value] : std::as_const(m_request.headers)) {
        if (!fitsHeader(name) || !fitsHeader(value)) {
            // It would end the header there and begin another. The value may be a secret, so it stays unsaid.
            m_refusal = HttpError{u"The header %1 holds a character that cannot be sent"_s.arg(
                fitsHeader(name) ? QString::fromUtf8(name) : u"name"_s)};
            return;
        }
        append(m_headers, value.isEmpty() ? name + ';' : name + ": " + value);
        hasType = hasType || name.compare("Content-Type", Qt::CaseInsensitive) == 0;
    }
    if (!hasType)
        append(m_headers, "Content-Type:"_ba); // None of libcurl's own choice.
    curl_easy_setopt(handle(), CURLOPT_HTTPHEADER, m_headers.get());
}

void CurlTransfer::append(List &list, const QByteArray &line)
{
    if (auto *const longer = curl_slist_append(list.get(), line.constData())) {
        static_cast<void>(list.release());
        list.reset(longer);
    }
}

/// Called when a connection is there, before the request goes out. A second time means that libcurl wants to send the
/// request again because the first connection ended without an answer; but the server may have acted on it.
int CurlTransfer::beforeSending(void *self, char *, char *, int, int)
{
    return ++static_cast<CurlTransfer *>(self)->m_sends == 1 ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

size_t CurlTransfer::headerArrived(char *data, size_t size, size_t count, void *self)
{
    auto *const transfer = static_cast<CurlTransfer *>(self);
    const auto length = static_cast<qsizetype>(size * count);
    transfer->m_headSize += length;
    if (transfer->m_headSize > headLimit) {
        transfer->m_isTooLarge = true;
        return 0; // Ends the transfer.
    }
    transfer->readHeader(QByteArray(data, length));
    return size * count;
}

void CurlTransfer::readHeader(const QByteArray &line)
{
    if (m_hasFinalHead)
        return;                     // A trailer after the body.
    if (line.startsWith("HTTP/")) { // The answer, or the next after an interim one such as 100.
        m_response.headers.clear();
    } else if (line.trimmed().isEmpty()) {
        constexpr int switchingProtocols = 101; // The one status below 200 that no other follows.
        m_hasFinalHead = status() >= 200 || status() == switchingProtocols;
    } else if ((line.startsWith(' ') || line.startsWith('\t')) && !m_response.headers.isEmpty()) {
        m_response.headers.last().second += ' ' + line.trimmed(); // A folded header.
    } else if (const auto colon = line.indexOf(':'); colon > 0) {
        m_response.headers.append({line.first(colon).trimmed(), line.sliced(colon + 1).trimmed()});
    }
}

int CurlTransfer::status() const
{
    long status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
}

size_t CurlTransfer::bodyArrived(char *data, size_t size, size_t count, void *self)
{
    auto *const transfer = static_cast<CurlTransfer *>(self);
    const auto length = static_cast<qsizetype>(size * count);
    if (transfer->m_response.body.size() + length > bodyLimit) {
        transfer->m_isTooLarge = true;
        return 0; // Ends the transfer.
    }
    transfer->m_response.body.append(data, length);
    return size * count;
}

Result<HttpResponse, HttpError> CurlTransfer::takeResult(CURLcode code)
{
    // libcurl takes half a head for a whole one when the connection ends there.
    if (code == CURLE_OK && !m_hasFinalHead)
        code = CURLE_GOT_NOTHING;
    if (code != CURLE_OK)
        return HttpError{describe(code)};
    m_response.status = status();
    return std::move(m_response);
}

QString CurlTransfer::describe(CURLcode code) const
{
    const auto host = m_request.url.host();
    const auto detail = m_errorText.front() != '\0' ? QString::fromUtf8(m_errorText.data())
                                                    : QString::fromUtf8(curl_easy_strerror(code));
    if (m_isTooLarge)
        return u"The answer of %1 is too large"_s.arg(host);
    if (m_sends > 1)
        code = CURLE_GOT_NOTHING;
    long verifyResult = 0;
    curl_easy_getinfo(handle(), CURLINFO_SSL_VERIFYRESULT, &verifyResult);
    if (code == CURLE_SSL_CONNECT_ERROR && verifyResult != 0)
        code = CURLE_PEER_FAILED_VERIFICATION; // libcurl does not see every bad signature as one.
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return u"The server %1 could not be found"_s.arg(host);
    case CURLE_COULDNT_CONNECT:
        return u"Could not connect to %1"_s.arg(host);
    case CURLE_OPERATION_TIMEDOUT:
        return u"The request timed out"_s;
    case CURLE_GOT_NOTHING:
        return u"%1 closed the connection without an answer"_s.arg(host);
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
        return u"The connection to %1 was lost"_s.arg(host);
    case CURLE_PEER_FAILED_VERIFICATION:
        return u"The certificate of %1 is not trusted (%2)"_s.arg(host, detail);
    case CURLE_SSL_CONNECT_ERROR:
        return u"Could not connect securely to %1 (%2)"_s.arg(host, detail);
    default:
        return detail;
    }
}

} // namespace korvo
