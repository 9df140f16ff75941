#include "testing/http_server.h"

#include <netinet/tcp.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "testing/socket_address.h"

namespace world {
namespace {

constexpr size_t kLongestHead = 256 * 1024;
constexpr size_t kPiece = 64 * 1024;

// A client that has left must not end the program: block SIGPIPE in this thread.
void ignore_broken_pipes() {
    sigset_t pipes;
    sigemptyset(&pipes);
    sigaddset(&pipes, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipes, nullptr);
}

// Limits a transfer to a number of bytes a second, if there is a rate.
class Pace {
  public:
    explicit Pace(const Fault &fault)
        : rate_(fault.kind == Fault::Kind::trickle ? std::max<uint64_t>(fault.amount, 1) : 0) {}
    // In ten steps a second.
    size_t next_piece() const {
        return rate_ ? static_cast<size_t>(std::max<uint64_t>(rate_ / 10, 1)) : kPiece;
    }
    void wait(size_t moved) const {
        if (rate_)
            std::this_thread::sleep_for(
                std::chrono::microseconds(moved * uint64_t{1000000} / rate_));
    }

  private:
    uint64_t rate_;
};

// Reads up to the empty line; `rest` receives the bytes behind it. False when it never arrives.
bool read_head(Stream &stream, std::string &head, std::string &rest) {
    std::string text;
    char piece[4096];
    while (text.size() < kLongestHead) {
        const size_t got = stream.read(piece, sizeof piece);
        if (got == 0)
            return false;
        text.append(piece, got);
        const size_t end = text.find("\r\n\r\n");
        if (end != std::string::npos) {
            head = text.substr(0, end + 4);
            rest = text.substr(end + 4);
            return true;
        }
    }
    return false;
}

void take(Request &request, const char *data, size_t size) {
    request.body_size += size;
    if (request.body_sink)
        request.body_sink(data, size);
    else
        request.body.append(data, size);
}

// False when the client or the fault cut the body.
bool read_body(Stream &stream, Request &request, const std::string &rest, const Fault &fault) {
    if (fault.kind == Fault::Kind::drop_after_headers)
        return false;
    const uint64_t declared = std::strtoull(request.header("Content-Length").c_str(), nullptr, 10);
    const uint64_t wanted =
        fault.kind == Fault::Kind::drop_after_bytes ? std::min(declared, fault.amount) : declared;
    if (request.header("Expect") == "100-continue" &&
        !stream.write("HTTP/1.1 100 Continue\r\n\r\n"))
        return false;
    take(request, rest.data(), static_cast<size_t>(std::min<uint64_t>(rest.size(), wanted)));
    const Pace pace(fault);
    std::vector<char> piece(kPiece);
    while (request.body_size < wanted) {
        const uint64_t missing = wanted - request.body_size;
        const size_t got = stream.read(
            piece.data(), static_cast<size_t>(std::min<uint64_t>(missing, pace.next_piece())));
        if (got == 0)
            return false;
        take(request, piece.data(), got);
        pace.wait(got);
    }
    return fault.kind != Fault::Kind::drop_after_bytes;
}

void send_reply(Stream &stream, const Request &request, const Reply &reply) {
    const Fault &fault = reply.fault;
    if (fault.kind == Fault::Kind::drop_after_headers ||
        fault.kind == Fault::Kind::drop_after_bytes || fault.kind == Fault::Kind::drop_at_accept)
        return;
    if (fault.kind == Fault::Kind::never_answer) {
        char unused;
        while (stream.read(&unused, 1) > 0) {
        }
        return;
    }
    std::string text = fault.kind == Fault::Kind::garbage
                           ? "\x01\x02 this is not HTTP\n"
                           : wire_text(reply, request.method != "HEAD");
    if (fault.kind == Fault::Kind::truncate)
        text.resize(static_cast<size_t>(
            std::min<uint64_t>(text.size(), wire_text(reply, false).size() + fault.amount)));
    const Pace pace(fault);
    for (std::string_view left = text; !left.empty();) {
        const std::string_view now = left.substr(0, pace.next_piece());
        if (!stream.write(now))
            return;
        left.remove_prefix(now.size());
        pace.wait(now.size());
    }
}

// Sends at once, as real clouds do: a short reply waits for no acknowledgement.
int listen_on(const std::string &address, uint16_t port, int backlog) {
    const SocketAddress place(address, port);
    const int listener = place.new_socket();
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    setsockopt(listener, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (listener < 0 || !place.bind(listener) || listen(listener, backlog) != 0)
        throw std::system_error(errno, std::generic_category(),
                                "listen on " + address + ":" + std::to_string(port));
    return listener;
}

}  // namespace

// The kernel answers no more connections than wait to be accepted: one more than the backlog.
SilentPort::SilentPort(const std::string &address, uint16_t port)
    : listener_(listen_on(address, port, 0)), filler_(SocketAddress(address, port).new_socket()) {
    SocketAddress(address, port).connect(filler_);
}

SilentPort::~SilentPort() {
    close(filler_);
    close(listener_);
}

HttpServer::HttpServer(const std::string &address, uint16_t port, HttpHandler &handler,
                       SslContext context)
    : handler_(handler),
      context_(std::move(context)),
      listener_(listen_on(address, port, SOMAXCONN)) {
    if (context_)
        Stream::prepare(context_.get());
    acceptor_ = std::thread(&HttpServer::accept_all, this);
}

HttpServer::~HttpServer() {
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    close(listener_);
    sweep(true);
}

void HttpServer::accept_all() {
    for (;;) {
        const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0) {
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            return;
        }
        const struct timeval patience = {patience_.load().count(), 0};
        setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        sweep(false);
        const std::lock_guard<std::mutex> lock(guard_);
        Connection &connection = connections_.emplace_back();
        connection.stream = std::make_unique<Stream>(descriptor, context_.get());
        connection.thread = std::thread(&HttpServer::serve, this, std::ref(connection));
    }
}

void HttpServer::serve(Connection &connection) {
    ignore_broken_pipes();
    exchange(*connection.stream);
    connection.stream->finish();
    const std::lock_guard<std::mutex> lock(guard_);
    connection.done = true;
    served_.notify_all();
}

void HttpServer::wait_until_idle() {
    std::unique_lock<std::mutex> lock(guard_);
    served_.wait(lock, [this] {
        return std::all_of(connections_.begin(), connections_.end(),
                           [](const Connection &connection) { return connection.done; });
    });
}

void HttpServer::exchange(Stream &stream) {
    Request request;
    std::string head;
    std::string rest;
    if (!stream.handshake([this](const std::string &name) { return handler_.admit(name); })) {
        if (!stream.failure().empty())
            handler_.not_agreed(stream.server_name(), stream.failure());
        return;
    }
    if (!read_head(stream, head, rest))
        return;
    if (!parse_head(head, request)) {
        stream.write(wire_text(status_reply(400), true));
        return;
    }
    request.client_certificate = stream.client_certificate();
    request.server_name = stream.server_name();
    const Fault fault = handler_.begin(request);
    if (read_body(stream, request, rest, fault))
        send_reply(stream, request, handler_.answer(request));
    else
        handler_.broken_off(request);
}

// Joins the connections that have ended; with `all`, ends the others first.
void HttpServer::sweep(bool all) {
    std::list<Connection> ended;
    {
        const std::lock_guard<std::mutex> lock(guard_);
        for (auto at = connections_.begin(); at != connections_.end();) {
            const auto next = std::next(at);
            if (all)
                at->stream->cut();
            if (all || at->done)
                ended.splice(ended.end(), connections_, at);
            at = next;
        }
    }
    for (Connection &connection : ended)
        connection.thread.join();
}

}  // namespace world
