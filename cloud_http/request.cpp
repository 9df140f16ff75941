#include "cloud_http/request.h"

#include <openssl/crypto.h>

#include <cstdlib>
#include <utility>

#include "base/fixed_text.h"
#include "cloud_http/curl_http.h"
#include "deployment.h"
#include "log/log.h"

namespace cloudagent {

Request::Request(const char *url) noexcept : handle_(curl_easy_init()) {
    set_text(CURLOPT_URL, url);
}

Request::~Request() {
    clean_up();
    std::free(reply_.data);
}

void Request::use_client_certificate() noexcept {
    set_text(CURLOPT_SSLCERT, "CRT");
    set_text(CURLOPT_SSLKEY, "KEY");
    set_long(CURLOPT_USE_SSL, CURLUSESSL_ALL);
    constexpr bool kVerifies = CLOUD_VERIFY_CLOUD != 0;
    set_long(CURLOPT_SSL_VERIFYPEER, kVerifies ? 1 : 0);
    set_long(CURLOPT_SSL_VERIFYHOST, kVerifies ? 2 : 0);
    if (kVerifies) {
        set_text(CURLOPT_CAPATH, kAuthorities);
    }
}

void Request::set_content_type(const char *type) noexcept {
    FixedText<256> line;
    line.format("Content-Type: %s", type);
    cloud_log("curl_slist_append(): %s\n", line.c_str());
    headers_ = curl_slist_append(nullptr, line.c_str());
    lacks_memory_ |= headers_ == nullptr;
}

void Request::collect_reply() noexcept {
    set(CURLOPT_WRITEFUNCTION, &http_reply_write);
    set_pointer(CURLOPT_WRITEDATA, &reply_);
    if (headers_ != nullptr) {
        set_pointer(CURLOPT_HTTPHEADER, headers_);
    }
}

void Request::use_proxy(const char *proxy) noexcept {
    set_text(CURLOPT_PROXY, proxy);
    set_long(CURLOPT_PROXY_SSL_VERIFYPEER, 0);
    set_long(CURLOPT_HTTPPROXYTUNNEL, 1);
}

void Request::prepare_tls() noexcept {
    set_long(CURLOPT_SSL_SESSIONID_CACHE, 0);
#if OPENSSL_VERSION_NUMBER >= 0x30000000L
    lacks_memory_ |= OSSL_LIB_CTX_get0_global_default() == nullptr;
#endif
}

// NOLINTNEXTLINE(readability-make-member-function-const): the transfer changes
CURLcode Request::perform() noexcept {
    return lacks_memory_ ? CURLE_OUT_OF_MEMORY : curl_easy_perform(handle_);
}

CURLcode Request::perform_to_cloud(long *status) noexcept {
    prepare_tls();
    const CURLcode result = perform();
    curl_post_transfer_hook(handle_);
    *status = this->status();
    clean_up();
    return result;
}

long Request::status() const noexcept {
    long status = 0;
    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

void Request::clean_up() noexcept {
    if (handle_ != nullptr) {
        curl_easy_cleanup(std::exchange(handle_, nullptr));
    }
    if (headers_ != nullptr) {
        curl_slist_free_all(std::exchange(headers_, nullptr));
    }
}

char *Request::take_reply() noexcept {
    reply_.size = 0;
    return std::exchange(reply_.data, nullptr);
}

}  // namespace cloudagent
