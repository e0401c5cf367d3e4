#include "sandbox/TestCertificate.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace korvo::sandbox {
namespace {

template <auto function> struct Deleter {
    template <typename T> void operator()(T *object) const { function(object); }
};

using Key = std::unique_ptr<EVP_PKEY, Deleter<&EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<&X509_free>>;
using Bio = std::unique_ptr<BIO, Deleter<&BIO_free_all>>;
using Extension = std::unique_ptr<X509_EXTENSION, Deleter<&X509_EXTENSION_free>>;
using BigNumber = std::unique_ptr<BIGNUM, Deleter<&BN_free>>;

constexpr long secondsOfDay = 24 * 3600;
constexpr int serialBits = 127;

bool setSerial(X509 *certificate)
{
    const BigNumber number(BN_new());
    return number && BN_rand(number.get(), serialBits, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY)
        && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate));
}

bool addName(X509_NAME *name, const char *text)
{
    return X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char *>(text), -1, -1,
                                      0)
        == 1;
}

bool addExtension(X509 *certificate, X509 *issuer, int nid, const char *value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value));
    return extension && X509_add_ext(certificate, extension.get(), -1) == 1;
}

/// A certificate without extensions, not yet signed.
Certificate newCertificate(EVP_PKEY *key, const char *commonName, const X509 *issuer)
{
    Certificate certificate(X509_new());
    X509 *x509 = certificate.get();
    const bool isMade = x509 && X509_set_version(x509, 2) && setSerial(x509)
        && X509_gmtime_adj(X509_getm_notBefore(x509), -secondsOfDay)
        && X509_gmtime_adj(X509_getm_notAfter(x509), 30 * secondsOfDay) && X509_set_pubkey(x509, key)
        && addName(X509_get_subject_name(x509), commonName)
        && X509_set_issuer_name(x509, issuer ? X509_get_subject_name(issuer) : X509_get_subject_name(x509));
    if (!isMade)
        certificate.reset();
    return certificate;
}

template <typename Write> QByteArray pem(Write write)
{
    const Bio bio(BIO_new(BIO_s_mem()));
    if (!bio || write(bio.get()) != 1)
        return {};
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return QByteArray(data, size);
}

} // namespace

TestCertificate makeTestCertificate()
{
    const Key authorityKey(EVP_EC_gen("P-256"));
    const Key key(EVP_EC_gen("P-256"));
    if (!authorityKey || !key)
        return {};
    const Certificate authority = newCertificate(authorityKey.get(), "Korvo sample workspace authority", nullptr);
    const bool hasAuthority = authority
        && addExtension(authority.get(), authority.get(), NID_basic_constraints, "critical,CA:TRUE")
        && addExtension(authority.get(), authority.get(), NID_key_usage, "critical,keyCertSign,cRLSign")
        && addExtension(authority.get(), authority.get(), NID_subject_key_identifier, "hash")
        && X509_sign(authority.get(), authorityKey.get(), EVP_sha256()) > 0;
    if (!hasAuthority)
        return {};
    const Certificate certificate = newCertificate(key.get(), "api.notion.com", authority.get());
    const bool hasCertificate = certificate
        && addExtension(certificate.get(), authority.get(), NID_basic_constraints, "critical,CA:FALSE")
        && addExtension(certificate.get(), authority.get(), NID_key_usage, "critical,digitalSignature")
        && addExtension(certificate.get(), authority.get(), NID_ext_key_usage, "serverAuth")
        && addExtension(certificate.get(), authority.get(), NID_authority_key_identifier, "keyid")
        && addExtension(certificate.get(), authority.get(), NID_subject_alt_name,
                        "DNS:api.notion.com,DNS:localhost,IP:127.0.0.1")
        && X509_sign(certificate.get(), authorityKey.get(), EVP_sha256()) > 0;
    if (!hasCertificate)
        return {};
    return {
        .authority = pem([&](BIO *bio) { return PEM_write_bio_X509(bio, authority.get()); }),
        .certificate = pem([&](BIO *bio) { return PEM_write_bio_X509(bio, certificate.get()); }),
        .key = pem(
            [&](BIO *bio) { return PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr, nullptr); }),
    };
}

} // namespace korvo::sandbox
