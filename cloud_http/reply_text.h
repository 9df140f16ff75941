// A reply collected in memory, released at the end of its scope unless it is handed on.
#ifndef CLOUDAGENT_CLOUD_HTTP_REPLY_TEXT_H
#define CLOUDAGENT_CLOUD_HTTP_REPLY_TEXT_H

#include <cstdlib>

#include "cloud_http/http_reply.h"

class ReplyText {
  public:
    ReplyText() noexcept = default;
    ~ReplyText() { std::free(reply_.data); }
    ReplyText(const ReplyText &) = delete;
    ReplyText &operator=(const ReplyText &) = delete;

    // What http_reply_write is to be handed.
    HttpReply *record() noexcept { return &reply_; }

    // Null when nothing arrived.
    const char *get() const noexcept { return reply_.data; }

    // Bytes held, the terminator included.
    uint32_t size() const noexcept { return reply_.size; }

    // The text, from now on the caller's to free.
    char *release() noexcept {
        char *const text = reply_.data;
        reply_ = {HTTP_REPLY_MEMORY, nullptr, 0};
        return text;
    }

  private:
    HttpReply reply_ = {HTTP_REPLY_MEMORY, nullptr, 0};
};

#endif
