/* The requests that reached the fakes of a world, and how each was answered. */
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "testing/http_message.h"

namespace world {

// The method is empty when the connection was cut before a request was read.
struct Exchange : Request {
    std::string service;  // "local", "tfa", "store", "time", "nginx" or "proxy"
    std::string url;
    std::string body_sha256;
    std::string body_path;  // of the whole body, if the server keeps it in a file
    int status = 0;         // 0: none was sent
    std::string mishap;     // the scripted fault, or that the client left; else empty
    uint64_t reply_size = 0;
    double started = 0;  // seconds since the record began
    double ended = 0;    // 0: still under way
};

class ExchangeRecord {
  public:
    static constexpr size_t kBeginning = 4096;
    static constexpr size_t kWholeBody = SIZE_MAX;

    // Keeps the first `kept_body` bytes of each body.
    explicit ExchangeRecord(size_t kept_body = kBeginning) : kept_body_(kept_body) {}

    size_t kept_body() const { return kept_body_; }
    // Adds one; the result is its number for change().
    size_t add(Exchange exchange);
    // Changes one in place, under the record's lock.
    void change(size_t number, const std::function<void(Exchange &)> &edit);
    std::vector<Exchange> all() const;
    // Removes and returns all.
    std::vector<Exchange> take();
    double now() const;

  private:
    const size_t kept_body_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    mutable std::mutex guard_;
    std::vector<Exchange> exchanges_;
    size_t taken_ = 0;  // the number of the first in exchanges_
};

}  // namespace world
