#include "cloud_http/http_reply.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/owned.h"
#include "log/log.h"

using namespace cloudagent;

namespace {

std::size_t append_to_memory(HttpReply &reply, const char *chunk, std::size_t length) noexcept {
    const uint32_t held = reply.data != nullptr ? reply.size - 1 : 0;  // without the terminator
    const bool countable = length < UINT32_MAX - held;
    char *const grown =
        countable ? static_cast<char *>(std::realloc(reply.data, held + 1 + length)) : nullptr;
    if (grown == nullptr) {
        cloud_log("cannot allocate buffer for output\n");
        std::free(reply.data);
        reply.data = nullptr;
        reply.size = 0;
        return 0;
    }
    if (length != 0) {
        std::memcpy(grown + held, chunk, length);
    }
    grown[held + length] = '\0';
    reply.data = grown;
    reply.size = held + 1 + static_cast<uint32_t>(length);
    return length;
}

}  // namespace

size_t http_reply_write(char *chunk, size_t item_size, size_t item_count, void *record) noexcept {
    auto *const reply = static_cast<HttpReply *>(record);
    const std::size_t length = item_size * item_count;
    if (reply == nullptr) {
        cloud_log("reply ignored\n");
        return length;
    }
    if (reply->mode == HTTP_REPLY_FILE) {
        const OwnedFile file(std::fopen(reply->data, "a"));
        return file ? std::fwrite(chunk, item_size, item_count, file.get()) : length;
    }
    if (reply->mode == HTTP_REPLY_MEMORY) {
        return append_to_memory(*reply, chunk, length);
    }
    return length;
}
