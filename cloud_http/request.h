// One HTTP request over libcurl, used once.
#pragma once

#include <curl/curl.h>

#include "cloud_http/http_reply.h"

namespace cloudagent {

// The only HTTP status that counts as success.
constexpr long kHttpOk = 200;

// Whom a verified server's certificate must lead to: a folder with hashed names.
constexpr const char *kAuthorities = "/etc/ssl/certs/";

// Owns the transfer's handle, its header list and its reply. The options of a request to the cloud
// are set in the order of the methods here.
class Request {
  public:
    explicit Request(const char *url) noexcept;
    ~Request();
    Request(const Request &) = delete;
    Request &operator=(const Request &) = delete;

    // libcurl cannot type-check options in C++; use these setters. An option that finds no memory
    // makes perform() fail; one that libcurl does not support is ignored.
    void set_long(CURLoption option, long value) noexcept { set(option, value); }
    void set_size(CURLoption option, curl_off_t value) noexcept { set(option, value); }
    void set_text(CURLoption option, const char *value) noexcept { set(option, value); }
    void set_pointer(CURLoption option, void *value) noexcept { set(option, value); }

    // Client certificate CRT and key KEY of the working directory. The server is verified only if the
    // build says so: CLOUD_VERIFY_CLOUD.
    void use_client_certificate() noexcept;

    // The request's only header of its own; logged.
    void set_content_type(const char *type) noexcept;

    // Keeps the reply as text, and sends the headers that are set.
    void collect_reply() noexcept;

    // Tunnels through a proxy, whose certificate is not verified.
    void use_proxy(const char *proxy) noexcept;

    // Disables the TLS session cache, useless for one transfer and unsafe without memory. Makes
    // perform() fail if OpenSSL found no memory at its start.
    void prepare_tls() noexcept;

    CURLcode perform() noexcept;

    // Transfers over TLS and cleans up. status: the HTTP status of the last reply, or 0.
    CURLcode perform_to_cloud(long *status) noexcept;

    // The HTTP status of the last reply, or 0.
    long status() const noexcept;

    // Releases everything but the reply.
    void clean_up() noexcept;

    CURL *handle() const noexcept { return handle_; }

    // The text, null when nothing arrived; its size includes the terminator.
    const HttpReply &reply() const noexcept { return reply_; }

    char *take_reply() noexcept;  // for the caller to free()

  private:
    template <class Value>
    void set(CURLoption option, Value value) noexcept {
        lacks_memory_ |= curl_easy_setopt(handle_, option, value) == CURLE_OUT_OF_MEMORY;
    }

    CURL *handle_;
    curl_slist *headers_ = nullptr;
    HttpReply reply_ = {HTTP_REPLY_MEMORY, nullptr, 0};
    bool lacks_memory_ = false;
};

}  // namespace cloudagent
