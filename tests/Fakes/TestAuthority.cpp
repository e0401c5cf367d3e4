#include "Fakes/TestAuthority.h"

#include <QDir>
#include <QFile>

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

template <typename Write> QByteArray pem(Write write)
{
    const std::unique_ptr<BIO, decltype(&BIO_free_all)> buffer(BIO_new(BIO_s_mem()), &BIO_free_all);
    write(buffer.get());
    QByteArray text(BIO_ctrl_pending(buffer.get()), '\0');
    BIO_read(buffer.get(), text.data(), int(text.size()));
    return text;
}

QByteArray pemOf(X509 *certificate)
{
    return pem([certificate](BIO *buffer) { PEM_write_bio_X509(buffer, certificate); });
}

void addExtension(X509 *certificate, int kind, const QByteArray &value)
{
    X509_EXTENSION *const extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.constData());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

} // namespace

void TestAuthority::KeyCleanup::operator()(evp_pkey_st *key) const
{
    EVP_PKEY_free(key);
}

void TestAuthority::CertificateCleanup::operator()(x509_st *certificate) const
{
    X509_free(certificate);
}

TestAuthority::TestAuthority() : m_key(EVP_EC_gen("P-256"))
{
    const auto notAfter = QDateTime::currentDateTimeUtc().addDays(2);
    m_certificate = make("Korvo test authority"_ba, "critical,CA:TRUE"_ba, {}, notAfter, m_key.get());
    QFile file(caFile());
    if (!file.open(QFile::WriteOnly) || file.write(pemOf(m_certificate.get())) < 0)
        qFatal("The test authority cannot be written");
}

TestAuthority::~TestAuthority() = default;

QString TestAuthority::caFile() const
{
    return m_folder.filePath(u"authority.pem"_s);
}

QString TestAuthority::hashedFolder() const
{
    const auto hash = QString::number(X509_subject_name_hash(m_certificate.get()), 16).rightJustified(8, u'0');
    const QDir folder(m_folder.filePath(u"hashed"_s));
    if (!folder.mkpath(u"."_s) || !QFile::link(caFile(), folder.filePath(hash + u".0"_s)))
        qFatal("The folder of the test authority cannot be made");
    return folder.path();
}

TestAuthority::Identity TestAuthority::issue(const QByteArray &host, const QDateTime &notAfter) const
{
    const Key key(EVP_EC_gen("P-256"));
    const auto certificate = make(host, "critical,CA:FALSE"_ba, "DNS:" + host, notAfter, key.get());
    return {pemOf(certificate.get()), pem([&key](BIO *buffer) {
                PEM_write_bio_PrivateKey(buffer, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
            })};
}

TestAuthority::Identity TestAuthority::issueSelfSigned(const QByteArray &host) const
{
    const auto certificate
        = make(host, "critical,CA:FALSE"_ba, "DNS:" + host, QDateTime::currentDateTimeUtc().addDays(1), m_key.get());
    return {pemOf(certificate.get()), pem([this](BIO *buffer) {
                PEM_write_bio_PrivateKey(buffer, m_key.get(), nullptr, nullptr, 0, nullptr, nullptr);
            })};
}

TestAuthority::Certificate TestAuthority::make(const QByteArray &name, const QByteArray &constraints,
                                               const QByteArray &alternativeName, const QDateTime &notAfter,
                                               evp_pkey_st *key) const
{
    Certificate certificate(X509_new());
    X509 *const x509 = certificate.get();
    X509_set_version(x509, X509_VERSION_3);
    quint64 serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char *>(&serial), sizeof serial);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(x509), serial >> 1);
    ASN1_TIME_set(X509_getm_notBefore(x509), QDateTime::currentDateTimeUtc().addDays(-10).toSecsSinceEpoch());
    ASN1_TIME_set(X509_getm_notAfter(x509), notAfter.toSecsSinceEpoch());
    X509_set_pubkey(x509, key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(x509), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>(name.constData()), -1, -1, 0);
    const auto isOwn = key == m_key.get();
    X509_set_issuer_name(x509, X509_get_subject_name(isOwn ? x509 : m_certificate.get()));
    addExtension(x509, NID_basic_constraints, constraints);
    if (!alternativeName.isEmpty())
        addExtension(x509, NID_subject_alt_name, alternativeName);
    X509_sign(x509, m_key.get(), EVP_sha256());
    return certificate;
}

} // namespace korvo
