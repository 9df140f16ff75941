// What the two requests to the cloud share: client certificate, content type, reply, proxy,
// transfer.
#ifndef CLOUDAGENT_CLOUD_HTTP_CLOUD_REQUEST_H
#define CLOUDAGENT_CLOUD_HTTP_CLOUD_REQUEST_H

#include "cloud_http/transfer.h"

// One request, used once. The methods are called in the order in which they stand here; a request's
// own options go between them.
class CloudRequest {
  public:
    explicit CloudRequest(const char *url) noexcept : transfer_(url) {}

    Transfer &transfer() noexcept { return transfer_; }

    // Client certificate CRT and key KEY of the working directory; the server is not verified.
    void use_client_certificate() noexcept;

    // The request's one header line, logged.
    void set_content_type(const char *type) noexcept;

    void collect_reply() noexcept;

    // Tunnels through the device's cloud proxy, when one is configured; logged for function and
    // site.
    void use_device_proxy(const char *function, int site) noexcept;

    // Transfers and releases everything but the reply. status: the HTTP status of the last reply,
    // or 0.
    CURLcode perform(long *status) noexcept;

    const char *reply() const noexcept { return reply_.get(); }

  private:
    ReplyText reply_;
    OwnedHeaderList headers_;
    Transfer transfer_;  // refers to the two above, so it goes first
};

#endif
