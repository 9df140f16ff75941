/* Every request that reached one of the virtual device's servers, and what became of it. */
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "http_message.h"

namespace world {

struct Exchange {
    std::string service;  // "local", "tfa", "store", "time", "nginx" or "proxy"
    std::string method;   // empty when the connection was cut before a request was read
    std::string url;
    Headers headers;
    std::string client_certificate;
    std::string body;  // its first kKeptBody bytes
    uint64_t body_size = 0;
    std::string body_sha256;
    std::string body_path;  // where the whole body lies, if a server kept it
    int status = 0;         // 0: none was sent
    std::string mishap;     // what went wrong on purpose, or that the client left; else empty
    uint64_t reply_size = 0;
    double started = 0;  // seconds since the record began
    double ended = 0;
};

class ExchangeRecord {
  public:
    static constexpr size_t kKeptBody = 4096;

    // Adds one; the result is its number for change().
    size_t add(Exchange exchange);
    // Changes one in place, under the record's lock.
    void change(size_t number, const std::function<void(Exchange &)> &edit);
    std::vector<Exchange> all() const;
    double now() const;

  private:
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    mutable std::mutex guard_;
    std::vector<Exchange> exchanges_;
};

}  // namespace world
