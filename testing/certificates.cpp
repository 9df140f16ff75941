#include "testing/certificates.h"

#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>

#include "testing/files.h"

namespace world {
namespace {

using Bio = std::unique_ptr<BIO, FreeWith<BIO_free_all>>;
using Extension = std::unique_ptr<X509_EXTENSION, FreeWith<X509_EXTENSION_free>>;

constexpr long kDay = 24L * 60 * 60;
constexpr long kMonth = 30 * kDay;

void demand(bool good, const char *what) {
    if (!good)
        throw std::runtime_error(std::string("certificates: ") + what);
}

std::string text_of(BIO *memory) {
    char *data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    return {data, static_cast<size_t>(size)};
}

void add_extension(X509 *certificate, X509 *issuer, int nid, const std::string &value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    demand(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value.c_str());
}

void set_name(X509 *certificate, const std::string &common_name) {
    X509_NAME *name = X509_get_subject_name(certificate);
    demand(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                      reinterpret_cast<const unsigned char *>(common_name.c_str()),
                                      -1, -1, 0) == 1,
           "name");
}

// A certificate ready for its extensions and signature.
Identity start_identity(const std::string &common_name, const Identity *issuer) {
    Identity made{Key(EVP_EC_gen("P-256")), Certificate(X509_new())};
    demand(made.key && made.certificate, "out of memory");
    X509 *certificate = made.certificate.get();
    int64_t serial = 0;
    demand(RAND_bytes(reinterpret_cast<unsigned char *>(&serial), sizeof serial) == 1, "random");
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set_int64(X509_get_serialNumber(certificate), serial & INT64_MAX);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -kDay);
    X509_gmtime_adj(X509_getm_notAfter(certificate), kMonth);
    X509_set_pubkey(certificate, made.key.get());
    set_name(certificate, common_name);
    X509_set_issuer_name(certificate,
                         X509_get_subject_name(issuer ? issuer->certificate.get() : certificate));
    return made;
}

void sign(const Identity &made, const Identity &issuer) {
    demand(X509_sign(made.certificate.get(), issuer.key.get(), EVP_sha256()) > 0, "signature");
}

Identity make_authority(const std::string &common_name) {
    Identity made = start_identity(common_name, nullptr);
    X509 *certificate = made.certificate.get();
    add_extension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE");
    add_extension(certificate, certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
    add_extension(certificate, certificate, NID_subject_key_identifier, "hash");
    sign(made, made);
    return made;
}

}  // namespace

std::string Identity::key_pem() const {
    const Bio memory(BIO_new(BIO_s_mem()));
    demand(PEM_write_bio_PrivateKey(memory.get(), key.get(), nullptr, nullptr, 0, nullptr,
                                    nullptr) == 1,
           "key text");
    return text_of(memory.get());
}

std::string Identity::certificate_pem() const {
    const Bio memory(BIO_new(BIO_s_mem()));
    demand(PEM_write_bio_X509(memory.get(), certificate.get()) == 1, "certificate text");
    return text_of(memory.get());
}

CertificateAuthority::CertificateAuthority(const std::string &common_name)
    : self_(make_authority(common_name)) {}

Identity CertificateAuthority::issue_server(const std::vector<std::string> &hosts) const {
    return issue(hosts, false, -kDay, kMonth);
}

Identity CertificateAuthority::issue_flawed_server(Fault::Kind flaw,
                                                   const std::string &host) const {
    if (flaw == Fault::Kind::other_authority)
        return CertificateAuthority("stranger").issue_server({host});
    if (flaw == Fault::Kind::other_host)
        return issue_server({"other.example.com"});
    return issue({host}, flaw == Fault::Kind::self_signed,
                 flaw == Fault::Kind::not_yet_valid ? kDay : -kDay,
                 flaw == Fault::Kind::expired ? -1 : kMonth);
}

Identity CertificateAuthority::issue(const std::vector<std::string> &hosts, bool self_signed,
                                     long from, long to) const {
    Identity made =
        start_identity(hosts.empty() ? "localhost" : hosts.front(), self_signed ? nullptr : &self_);
    const Identity &issuer = self_signed ? made : self_;
    X509_gmtime_adj(X509_getm_notBefore(made.certificate.get()), from);
    X509_gmtime_adj(X509_getm_notAfter(made.certificate.get()), to);
    std::string names = "IP:127.0.0.1";
    for (const std::string &host : hosts)
        names += ",DNS:" + host;
    add_extension(made.certificate.get(), issuer.certificate.get(), NID_subject_alt_name, names);
    add_extension(made.certificate.get(), issuer.certificate.get(), NID_ext_key_usage,
                  "serverAuth");
    sign(made, issuer);
    return made;
}

Identity CertificateAuthority::issue_client(const std::string &common_name) const {
    Identity made = start_identity(common_name, &self_);
    add_extension(made.certificate.get(), self_.certificate.get(), NID_ext_key_usage, "clientAuth");
    sign(made, self_);
    return made;
}

void CertificateAuthority::write_client_files(const std::string &folder,
                                              const std::string &common_name) const {
    const Identity client = issue_client(common_name);
    write_file(folder + "/CRT", client.certificate_pem());
    write_file(folder + "/KEY", client.key_pem());
}

void CertificateAuthority::install() const {
    char name[16];
    std::snprintf(name, sizeof name, "%08lx.0", X509_subject_name_hash(self_.certificate.get()));
    write_file(std::string("/etc/ssl/certs/") + name, self_.certificate_pem());
}

CertificateAuthority &authority() {
    static CertificateAuthority only;
    return only;
}

SslContext server_context(const Identity &server, const CertificateAuthority &issuer,
                          bool demand_client_certificate) {
    SslContext context(SSL_CTX_new(TLS_server_method()));
    demand(context != nullptr, "context");
    demand(SSL_CTX_use_certificate(context.get(), server.certificate.get()) == 1 &&
               SSL_CTX_use_PrivateKey(context.get(), server.key.get()) == 1,
           "identity");
    X509_STORE_add_cert(SSL_CTX_get_cert_store(context.get()), issuer.identity().certificate.get());
    SSL_CTX_set_verify(context.get(),
                       demand_client_certificate ? SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT
                                                 : SSL_VERIFY_PEER,
                       nullptr);
    return context;
}

}  // namespace world
