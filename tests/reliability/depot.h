/*
 * The cloud and the local service for one run after the other: they answer at once, keep what
 * arrived whole, and give up on a client that falls silent.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "certificates.h"
#include "http_message.h"

namespace reliability {

// An upload whose every byte arrived and that was answered.
struct Upload {
    std::string name;
    std::string body;
    int status = 0;
};

class Depot {
  public:
    // Listens on 127.0.0.1, port 443 with TLS and 8000 without.
    Depot();
    ~Depot();
    Depot(const Depot &) = delete;
    Depot &operator=(const Depot &) = delete;

    // How long a client may be silent before it is given up.
    void set_patience(std::chrono::seconds patience) { patience_ = patience; }

    // What arrived since the last call, once no connection is open any more.
    std::vector<Upload> take_uploads();

  private:
    void accept_all(int listener, SSL_CTX *context);
    void serve(int descriptor, SSL_CTX *context);
    void exchange(int descriptor, SSL_CTX *context);
    world::Reply answer(const world::Request &request);
    world::Reply hand_out_url(const world::Request &request);
    world::Reply take_upload(const world::Request &request);

    std::atomic<std::chrono::seconds> patience_{std::chrono::seconds(1)};
    world::SslContext context_;
    std::mutex guard_;
    std::map<std::string, std::string> urls_;  // unused ones: path -> name of the dump
    std::vector<Upload> uploads_;
    std::atomic<int> open_{0};
    unsigned handed_out_ = 0;
    int listeners_[2];
    std::thread acceptors_[2];
};

}  // namespace reliability
