/*
 * A small HTTP/1.1 server, plain or TLS, that controls every byte and misbehaves on demand. One
 * thread per connection, one request per connection.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "testing/certificates.h"
#include "testing/http_message.h"
#include "testing/stream.h"

namespace world {

// Answers requests. A server calls these functions in this order, from many threads at once.
class HttpHandler {
  public:
    virtual ~HttpHandler() = default;
    // Admits or cuts a new connection. `server_name`: the host that a TLS client asks for.
    virtual Admission admit(const std::string &server_name) {
        (void)server_name;
        return Admission::welcome;
    }
    // The TLS handshake failed, for example without a client certificate.
    virtual void not_agreed(const std::string &server_name, const std::string &reason) {
        (void)server_name;
        (void)reason;
    }
    // The headers have arrived. May set a body_sink; the result is the body's fault.
    virtual Fault begin(Request &request) {
        (void)request;
        return {};
    }
    // The request is complete.
    virtual Reply answer(Request &request) = 0;
    // The client or a fault cut the body.
    virtual void broken_off(Request &request) { (void)request; }
};

// A port from which nothing comes back, as from a host that is off.
class SilentPort {
  public:
    SilentPort(const std::string &address, uint16_t port);
    ~SilentPort();
    SilentPort(const SilentPort &) = delete;
    SilentPort &operator=(const SilentPort &) = delete;

  private:
    int listener_;
    int filler_;
};

class HttpServer {
  public:
    // Listens on address:port; with a context it speaks TLS. Throws std::system_error.
    HttpServer(const std::string &address, uint16_t port, HttpHandler &handler,
               SslContext context = nullptr);
    ~HttpServer();  // cuts what is still open
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    // Cuts clients of connections to come that are silent for so long; 0: never.
    void set_patience(std::chrono::seconds patience) { patience_ = patience; }
    // Waits until no connection is open.
    void wait_until_idle();

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
    std::atomic<std::chrono::seconds> patience_{std::chrono::seconds(0)};
    std::mutex guard_;
    std::condition_variable served_;
    std::list<Connection> connections_;
    std::thread acceptor_;
};

}  // namespace world
