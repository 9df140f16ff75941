#include "depot.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "config/deployment.h"
#include "http_server.h"
#include "stream.h"

namespace reliability {
namespace {

using nlohmann::json;

constexpr const char *kLoopback = "127.0.0.1";
constexpr const char *kStoreHost = "uploads.example.com";
constexpr const char *kProxySettings =
    R"({"restful_res":{"CloudProxySettings":)"
    R"({"enable":false,"proxyServer":"none","proxyServerPort":0}}})";

// Reads the head and as much of the body as it announces; false when the client leaves before.
bool read_request(world::Stream &stream, world::Request &request) {
    std::string text;
    size_t end = std::string::npos;
    char piece[16384];
    while ((end = text.find("\r\n\r\n")) == std::string::npos) {
        const size_t got = stream.read(piece, sizeof piece);
        if (got == 0)
            return false;
        text.append(piece, got);
    }
    if (!world::parse_head(text.substr(0, end + 4), request))
        return false;
    request.body = text.substr(end + 4);
    if (request.header("Expect") == "100-continue" &&
        !stream.write("HTTP/1.1 100 Continue\r\n\r\n"))
        return false;
    const size_t announced = std::strtoul(request.header("Content-Length").c_str(), nullptr, 10);
    while (request.body.size() < announced) {
        const size_t got = stream.read(piece, sizeof piece);
        if (got == 0)
            return false;
        request.body.append(piece, got);
    }
    return true;
}

}  // namespace

Depot::Depot()
    : context_(world::server_context(world::authority().issue_server({CLOUD_TFA_HOST, kStoreHost}),
                                     world::authority(), /*demand_client_certificate=*/true)),
      listeners_{world::listen_on(kLoopback, 443), world::listen_on(kLoopback, 8000)} {
    std::signal(SIGPIPE, SIG_IGN);
    world::Stream::prepare(context_.get());
    acceptors_[0] = std::thread(&Depot::accept_all, this, listeners_[0], context_.get());
    acceptors_[1] = std::thread(&Depot::accept_all, this, listeners_[1], nullptr);
}

Depot::~Depot() {
    for (int i = 0; i < 2; ++i) {
        shutdown(listeners_[i], SHUT_RDWR);
        acceptors_[i].join();
        close(listeners_[i]);
    }
    take_uploads();
}

std::vector<Upload> Depot::take_uploads() {
    while (open_ > 0)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    const std::lock_guard<std::mutex> lock(guard_);
    urls_.clear();
    return std::exchange(uploads_, {});
}

void Depot::accept_all(int listener, SSL_CTX *context) {
    for (;;) {
        const int descriptor = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0) {
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            return;
        }
        ++open_;
        std::thread(&Depot::serve, this, descriptor, context).detach();
    }
}

void Depot::serve(int descriptor, SSL_CTX *context) {
    const struct timeval patience = {patience_.load().count(), 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    exchange(descriptor, context);
    --open_;
}

void Depot::exchange(int descriptor, SSL_CTX *context) {
    world::Stream stream(descriptor, context);
    world::Request request;
    if (!stream.handshake([](const std::string &) { return world::Admission::welcome; }))
        return;
    if (read_request(stream, request))
        stream.write(world::wire_text(answer(request), true));
    stream.finish();
}

world::Reply Depot::answer(const world::Request &request) {
    if (request.path() == "/api/system/cloud_proxy")
        return world::json_reply(kProxySettings);
    const std::lock_guard<std::mutex> lock(guard_);
    return request.method == "PUT" ? take_upload(request) : hand_out_url(request);
}

world::Reply Depot::hand_out_url(const world::Request &request) {
    const json body = json::parse(request.body, nullptr, false);
    if (!body.is_object() || !body.value("filename", json()).is_string())
        return world::status_reply(400);
    const std::string name =
        std::filesystem::path(body["filename"].get<std::string>()).filename().string();
    const std::string path = "/up/" + std::to_string(++handed_out_) + "/" + name;
    urls_[path] = name;
    return world::json_reply(json{
        {"message", "OK"},
        {"upload_url", "https://" + std::string(kStoreHost) +
                           path}}.dump());
}

// A URL serves one upload.
world::Reply Depot::take_upload(const world::Request &request) {
    const auto url = urls_.find(request.path());
    if (url == urls_.end()) {
        uploads_.push_back({request.path(), request.body, 403});
        return world::status_reply(403);
    }
    uploads_.push_back({url->second, request.body, 200});
    urls_.erase(url);
    return world::status_reply(200);
}

}  // namespace reliability
