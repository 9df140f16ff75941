/*
 * A certificate authority made at run time (elliptic keys: milliseconds), and the certificates it
 * issues. It writes nothing outside the private world.
 */
#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>
#include <vector>

#include "testing/http_message.h"

namespace world {

template <auto Free>
struct FreeWith {
    template <class T>
    void operator()(T *object) const {
        Free(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, FreeWith<X509_free>>;
using SslContext = std::unique_ptr<SSL_CTX, FreeWith<SSL_CTX_free>>;

struct Identity {
    Key key;
    Certificate certificate;
    std::string key_pem() const;
    std::string certificate_pem() const;
};

class CertificateAuthority {
  public:
    explicit CertificateAuthority(const std::string &common_name = "Virtual Device Test CA");

    // A server identity valid for these host names (and for 127.0.0.1).
    Identity issue_server(const std::vector<std::string> &hosts) const;
    // One for that host which a client must not trust: other_authority, self_signed, expired,
    // not_yet_valid or other_host.
    Identity issue_flawed_server(Fault::Kind flaw, const std::string &host) const;
    // A client identity under that common name.
    Identity issue_client(const std::string &common_name) const;

    // Puts a client identity, as the files CRT and KEY, into `folder`.
    void write_client_files(const std::string &folder,
                            const std::string &common_name = "virtual-device") const;
    // Makes the world trust this authority: its certificate goes into /etc/ssl/certs under its
    // hashed name.
    void install() const;

    const Identity &identity() const { return self_; }

  private:
    // Valid from and to so many seconds from now.
    Identity issue(const std::vector<std::string> &hosts, bool self_signed, long from,
                   long to) const;

    Identity self_;
};

// The default authority of this program's servers, made at first use.
CertificateAuthority &authority();

// A TLS server's settings. On demand, the handshake fails without a client certificate of `issuer`.
SslContext server_context(const Identity &server, const CertificateAuthority &issuer,
                          bool demand_client_certificate);

}  // namespace world
