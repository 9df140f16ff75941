/* One accepted connection, plain or TLS, for blocking reads and writes on a thread of its own. */
#pragma once

#include <openssl/ssl.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "testing/certificates.h"

namespace world {

struct Admission {
    enum Kind {
        cut,                       // closed before the first byte of a reply
        welcome,                   // as the server's context says
        welcome_with_certificate,  // the TLS handshake fails unless the client shows one
    };
    Kind kind;
    std::optional<Identity> shown = std::nullopt;  // in place of the server's own
    Admission(Kind kind_) : kind(kind_) {}         // NOLINT(google-explicit-constructor)
};

class Stream {
  public:
    // Makes a context ready for streams; once, before the first.
    static void prepare(SSL_CTX *context);

    // Takes over the descriptor. With a context the TLS handshake is next; see handshake().
    Stream(int descriptor, SSL_CTX *context);
    ~Stream();
    Stream(const Stream &) = delete;
    Stream &operator=(const Stream &) = delete;

    // Does the TLS handshake, if any. `admit` is asked with the host name the client wants.
    // False when the connection has ended; failure() then gives the reason, unless the client left
    // or was cut on purpose.
    bool handshake(const std::function<Admission(const std::string &)> &admit);

    // Bytes read; 0 at the end or on an error.
    size_t read(char *into, size_t size);
    bool write(std::string_view text);

    // Ends the sending side in order and waits for the client to leave; the descriptor stays until
    // the stream is gone.
    void finish();
    // Wakes a blocked reader or writer, from any thread.
    void cut();

    std::string failure() const { return failure_; }
    std::string server_name() const { return server_name_; }
    std::string client_certificate() const;

  private:
    static int on_client_hello(SSL *session, int *alert, void *unused);

    int descriptor_;
    std::unique_ptr<SSL, FreeWith<SSL_free>> session_;
    std::string server_name_;
    std::string failure_;
    bool fails_on_purpose_ = false;
    const std::function<Admission(const std::string &)> *admit_ = nullptr;
};

}  // namespace world
