#pragma once

#include "Services/HttpTransport.h"

#include <curl/curl.h>

#include <array>
#include <memory>

namespace korvo {

/// One request on its way through libcurl: its options, what has come back so far, and its result. The caller adds
/// `handle()` to a multi handle, and removes it before the transfer goes.
class CurlTransfer {
public:
    explicit CurlTransfer(HttpRequest request);
    Q_DISABLE_COPY_MOVE(CurlTransfer)

    /// Connects elsewhere, by an entry as for CURLOPT_CONNECT_TO, and trusts the authorities in `caFile` alone unless
    /// that is empty.
    void connectTo(const QByteArray &entry, const QByteArray &caFile);

    /// Trusts the authorities in a folder in which OpenSSL can look them up one by one, and no others.
    void trustFolder(const QByteArray &folder);

    /// Why the request cannot be sent as it is; none if it can.
    std::optional<HttpError> refusal() const { return m_refusal; }

    CURL *handle() const { return m_easy.get(); }

    /// What came of the transfer that ended with `code`. To be asked for once.
    Result<HttpResponse, HttpError> takeResult(CURLcode code);

private:
    struct EasyCleanup {
        void operator()(CURL *easy) const { curl_easy_cleanup(easy); }
    };
    struct ListCleanup {
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };
    using List = std::unique_ptr<curl_slist, ListCleanup>;

    static void append(List &list, const QByteArray &line);
    static int beforeSending(void *self, char *, char *, int, int);
    static size_t headerArrived(char *data, size_t size, size_t count, void *self);
    static size_t bodyArrived(char *data, size_t size, size_t count, void *self);

    void setOptions();
    void setBody();
    void setHeaders();
    void readHeader(const QByteArray &line);
    int status() const; ///< Of the last head that began.
    QString describe(CURLcode code) const;

    HttpRequest m_request;
    HttpResponse m_response;
    std::optional<HttpError> m_refusal;
    std::array<char, CURL_ERROR_SIZE> m_errorText{};
    int m_sends = 0;
    qsizetype m_headSize = 0;
    bool m_hasFinalHead = false; ///< Whole, and not of an interim answer.
    bool m_isTooLarge = false;
    List m_headers;
    List m_connectTo;
    std::unique_ptr<CURL, EasyCleanup> m_easy; ///< Last, so that it goes before what it points to.
};

} // namespace korvo
