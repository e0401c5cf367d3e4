#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QTemporaryDir>

#include <memory>

struct evp_pkey_st;
struct x509_st;

namespace korvo {

/// A certificate authority that lives as long as a test, and the certificates that it issues.
class TestAuthority {
public:
    struct Identity {
        QByteArray certificate; ///< PEM.
        QByteArray key;         ///< PEM.
    };

    TestAuthority();
    ~TestAuthority();
    Q_DISABLE_COPY_MOVE(TestAuthority)

    /// A PEM file with the authority's own certificate.
    QString caFile() const;

    /// A folder that holds the same certificate under its hash, as the system's folder of authorities does.
    QString hashedFolder() const;

    /// A server's certificate for `host`.
    Identity issue(const QByteArray &host,
                   const QDateTime &notAfter = QDateTime::currentDateTimeUtc().addDays(1)) const;

    /// A certificate for `host` that nobody but itself vouches for.
    Identity issueSelfSigned(const QByteArray &host) const;

private:
    struct KeyCleanup {
        void operator()(evp_pkey_st *key) const;
    };
    struct CertificateCleanup {
        void operator()(x509_st *certificate) const;
    };
    using Key = std::unique_ptr<evp_pkey_st, KeyCleanup>;
    using Certificate = std::unique_ptr<x509_st, CertificateCleanup>;

    Certificate make(const QByteArray &name, const QByteArray &constraints, const QByteArray &alternativeName,
                     const QDateTime &notAfter, evp_pkey_st *key) const;

    QTemporaryDir m_folder;
    Key m_key;
    Certificate m_certificate;
};

} // namespace korvo
