/*
 * A small HTTP/1.1 server whose every byte is under control, so that it can misbehave on demand:
 * one thread a connection, one request a connection, plain or TLS.
 */
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "certificates.h"
#include "http_message.h"
#include "stream.h"

namespace world {

// What a server does with a connection, in this order. Called from many threads at once.
class HttpHandler {
  public:
    virtual ~HttpHandler() = default;
    // What becomes of a new connection. `server_name`: the host a TLS client asks for.
    virtual Admission admit(const std::string &server_name) {
        (void)server_name;
        return Admission::welcome;
    }
    // The TLS handshake failed, for instance for want of a client certificate.
    virtual void not_agreed(const std::string &server_name, const std::string &reason) {
        (void)server_name;
        (void)reason;
    }
    // The headers are in. May set a body_sink; the result is what happens to the body.
    virtual Fault begin(Request &request) {
        (void)request;
        return {};
    }
    // The request is complete.
    virtual Reply answer(Request &request) = 0;
    // The body arrived only in part, since the client or a fault cut it.
    virtual void broken_off(Request &request) { (void)request; }
};

// A socket that listens on address:port. What its connections send goes out at once, as with real
// clouds: a short reply waits for no acknowledgement. Throws std::system_error.
int listen_on(const std::string &address, uint16_t port);

class HttpServer {
  public:
    // Listens on address:port; with a context it speaks TLS. Throws std::system_error.
    HttpServer(const std::string &address, uint16_t port, HttpHandler &handler,
               SslContext context = nullptr);
    ~HttpServer();  // cuts what is still open
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

  private:
    struct Connection {
        std::unique_ptr<Stream> stream;
        std::thread thread;
        bool done = false;
    };

    void accept_all();
    void serve(Connection &connection);
    void exchange(Stream &stream);
    void sweep(bool all);

    HttpHandler &handler_;
    SslContext context_;
    int listener_;
    std::mutex guard_;
    std::list<Connection> connections_;
    std::thread acceptor_;
};

}  // namespace world
