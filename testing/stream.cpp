#include "testing/stream.h"

#include <openssl/err.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <climits>

namespace world {
namespace {

int clamp_size(size_t size) { return static_cast<int>(std::min<size_t>(size, INT_MAX)); }

// The host name in a server-name extension: list length (2), type (1), name length (2), name.
std::string name_in_extension(const unsigned char *data, size_t size) {
    constexpr size_t kBeforeName = 5;
    if (data == nullptr || size <= kBeforeName)
        return "";
    return {reinterpret_cast<const char *>(data) + kBeforeName, size - kBeforeName};
}

}  // namespace

void Stream::prepare(SSL_CTX *context) {
    SSL_CTX_set_client_hello_cb(context, &Stream::on_client_hello, nullptr);
}

Stream::Stream(int descriptor, SSL_CTX *context) : descriptor_(descriptor) {
    if (context == nullptr)
        return;
    session_.reset(SSL_new(context));
    SSL_set_fd(session_.get(), descriptor);
    SSL_set_app_data(session_.get(), this);
}

Stream::~Stream() {
    session_.reset();
    close(descriptor_);
}

void Stream::finish() {
    if (session_ && SSL_is_init_finished(session_.get()))
        SSL_shutdown(session_.get());
    shutdown(descriptor_, SHUT_WR);
    // Read what still arrives: unread bytes reset the connection, and a client that is sending may
    // see the reset before the end.
    char unused[4096];
    while (recv(descriptor_, unused, sizeof unused, 0) > 0) {
    }
    cut();
}

int Stream::on_client_hello(SSL *session, int *, void *) {
    auto *self = static_cast<Stream *>(SSL_get_app_data(session));
    const unsigned char *data = nullptr;
    size_t size = 0;
    SSL_client_hello_get0_ext(session, TLSEXT_TYPE_server_name, &data, &size);
    self->server_name_ = name_in_extension(data, size);
    const Admission admission = (*self->admit_)(self->server_name_);
    self->fails_on_purpose_ = admission.kind == Admission::cut || admission.shown;
    if (admission.shown) {
        SSL_use_certificate(session, admission.shown->certificate.get());
        SSL_use_PrivateKey(session, admission.shown->key.get());
    }
    if (admission.kind == Admission::welcome_with_certificate)
        SSL_set_verify(session, SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
    if (admission.kind != Admission::cut)
        return SSL_CLIENT_HELLO_SUCCESS;
    self->cut();  // before the library can send its alert
    return SSL_CLIENT_HELLO_ERROR;
}

bool Stream::handshake(const std::function<Admission(const std::string &)> &admit) {
    if (!session_)
        return admit("").kind != Admission::cut;
    admit_ = &admit;
    ERR_clear_error();
    const int result = SSL_accept(session_.get());
    if (result == 1)
        return true;
    const unsigned long reason = ERR_get_error();
    const char *text = reason == 0 ? nullptr : ERR_reason_error_string(reason);
    if (!fails_on_purpose_ && text != nullptr)
        failure_ = text;
    return false;
}

size_t Stream::read(char *into, size_t size) {
    const ssize_t got = session_ ? SSL_read(session_.get(), into, clamp_size(size))
                                 : recv(descriptor_, into, size, 0);
    return got > 0 ? static_cast<size_t>(got) : 0;
}

bool Stream::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t sent = session_
                                 ? SSL_write(session_.get(), text.data(), clamp_size(text.size()))
                                 : send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        text.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

void Stream::cut() { shutdown(descriptor_, SHUT_RDWR); }

std::string Stream::client_certificate() const {
    if (!session_)
        return "";
    const Certificate shown(SSL_get1_peer_certificate(session_.get()));
    char name[256] = "";
    if (shown)
        X509_NAME_get_text_by_NID(X509_get_subject_name(shown.get()), NID_commonName, name,
                                  sizeof name);
    return name;
}

}  // namespace world
