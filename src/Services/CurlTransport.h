#pragma once

#include "Services/HttpTransport.h"

#include <QMap>
#include <QString>

#include <memory>

namespace korvo {

/// HTTP/1.1 over libcurl on the main loop, which it never blocks. Connections stay open between requests and are used
/// again; between requests nothing goes over the network. Belongs to the main thread.
class CurlTransport final : public HttpTransport {
public:
    /// Trusts the authorities in `certificateFolder` if OpenSSL can look them up there one by one, else those that
    /// libcurl was built to trust.
    explicit CurlTransport(const QString &certificateFolder = QStringLiteral("/etc/ssl/certs"));
    ~CurlTransport() override; ///< Requests under way fail as cancelled.
    Q_DISABLE_COPY_MOVE(CurlTransport)

    QCoro::Task<Result<HttpResponse, HttpError>> send(HttpRequest request, std::stop_token stop) override;

    /// From now on connects to `address` (a name, an IPv4 address, or an IPv6 address in brackets) and `port` for every
    /// request to `host`, and trusts the authorities in `caFile` alone for it, a PEM file. The server still has to show
    /// a certificate for `host`. This leads the demonstration and the tests to a server on this machine.
    void redirectHost(const QString &host, const QString &address, quint16 port, const QString &caFile = {});

    /// The session of the process. Its connections are closed when the application object goes.
    static CurlTransport &shared();

private:
    class Session;
    struct Route {
        QByteArray connectTo;
        QByteArray caFile;
    };

    const QString m_certificateFolder;
    QByteArray m_hashedFolder; ///< The same if it can be used, known from the first request on.
    QMap<QString, Route> m_routes;
    std::unique_ptr<Session> m_session; ///< Made by the first request.
};

} // namespace korvo
