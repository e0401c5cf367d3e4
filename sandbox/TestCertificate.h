#pragma once

#include <QByteArray>

namespace korvo::sandbox {

/// What a TLS server needs, in PEM form.
struct TestCertificate {
    QByteArray authority;   ///< The certificate of the authority, which a client has to trust.
    QByteArray certificate; ///< For "api.notion.com", "localhost" and 127.0.0.1, signed by the authority.
    QByteArray key;         ///< The private key of `certificate`.

    bool isValid() const { return !key.isEmpty(); }
};

/// Makes an authority and a certificate with new keys, good for some days. The authority's own key is forgotten, so
/// that nothing else can ever be signed by it. Invalid if OpenSSL fails.
TestCertificate makeTestCertificate();

} // namespace korvo::sandbox
