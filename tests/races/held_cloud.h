// A cloud that holds its reply to the first request until it is told to go on, and a local service
// without a proxy.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "http_server.h"

class HeldCloud : public world::HttpHandler {
  public:
    // On 127.0.0.1, ports 443 (TLS) and 8000.
    HeldCloud();

    // Forgets all requests and holds the next one.
    void hold();
    // Waits for the first request and then a moment for others; how many there are.
    std::size_t held();
    void go_on();

    std::size_t requests_for_urls();
    std::vector<std::string> uploads();  // in the order they came in

  private:
    world::Reply answer(world::Request &request) override;

    struct LocalService : world::HttpHandler {
        world::Reply answer(world::Request &request) override;
    };

    std::mutex guard_;
    std::condition_variable changed_;
    bool holding_ = true;
    std::size_t asked_ = 0;
    std::vector<std::string> uploads_;
    LocalService local_;
    std::optional<world::HttpServer> local_server_;
    std::optional<world::HttpServer> cloud_server_;  // last: it calls the functions above
};
