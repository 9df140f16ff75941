// One transfer of libcurl's, used once.
#ifndef CLOUDAGENT_CLOUD_HTTP_TRANSFER_H
#define CLOUDAGENT_CLOUD_HTTP_TRANSFER_H

#include <openssl/crypto.h>

#include "cloud_http/reply_text.h"
#include "support/owned_curl.h"

// The one status that counts as success.
constexpr long kHttpOk = 200;

// The only way to set an option: libcurl tells types apart by option number and its compile-time
// check does not work from C++, so each kind of value has a setter of its own. An option that
// libcurl refuses is not in effect; one that finds no memory makes the transfer fail, since it
// would be another request.
class Transfer {
  public:
    explicit Transfer(const char *url) noexcept : handle_(curl_easy_init()) {
        set_text(CURLOPT_URL, url);
    }

    CURL *handle() const noexcept { return handle_.get(); }

    void set_long(CURLoption option, long value) noexcept { set(option, value); }
    void set_size(CURLoption option, curl_off_t value) noexcept { set(option, value); }
    void set_text(CURLoption option, const char *value) noexcept { set(option, value); }
    void set_pointer(CURLoption option, void *value) noexcept { set(option, value); }

    // A TLS session cache saves nothing when a handle is used once, and without memory it fails
    // badly. So does an OpenSSL that found no memory when it started: it is not used then.
    void prepare_tls() noexcept {
        set_long(CURLOPT_SSL_SESSIONID_CACHE, 0);
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
        lacks_memory_ |= OSSL_LIB_CTX_get0_global_default() == nullptr;
#endif
    }

    void collect_reply(ReplyText &reply) noexcept {
        set(CURLOPT_WRITEFUNCTION, &http_reply_write);
        set_pointer(CURLOPT_WRITEDATA, reply.record());
    }

    // What a request needs could not be allocated outside of libcurl.
    void miss_memory() noexcept { lacks_memory_ = true; }

    // NOLINTNEXTLINE(readability-make-member-function-const): the transfer changes
    CURLcode perform() noexcept {
        return lacks_memory_ ? CURLE_OUT_OF_MEMORY : curl_easy_perform(handle());
    }

    // The HTTP status of the last reply, or 0.
    long status() const noexcept {
        long status = 0;
        curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
        return status;
    }

    void clean_up() noexcept { handle_.reset(); }

  private:
    template <class Value>
    void set(CURLoption option, Value value) noexcept {
        lacks_memory_ |= curl_easy_setopt(handle(), option, value) == CURLE_OUT_OF_MEMORY;
    }

    OwnedCurl handle_;
    bool lacks_memory_ = false;
};

#endif
