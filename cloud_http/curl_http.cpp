#include "cloud_http/curl_http.h"

#include <cstring>

#include "cloud_http/curl_options.h"
#include "cloud_http/reply_text.h"
#include "log/log.h"
#include "support/owned_curl.h"

uint32_t curl_http_fail_count = 0;

int curl_http(const char *method, const char *url, char **out, const char *body) noexcept {
    OwnedCurl handle(curl_easy_init());
    set_text(handle.get(), CURLOPT_URL, url);
    set_text(handle.get(), CURLOPT_CUSTOMREQUEST, method);
    if (method == nullptr || std::strcmp(method, "GET") != 0) {
        // Without a text here libcurl would read the body from standard input.
        set_text(handle.get(), CURLOPT_POSTFIELDS, body != nullptr ? body : "");
    }
    ReplyText reply;
    reply.collect(handle.get());
    const int result = curl_easy_perform(handle.get());
    long status = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    handle.reset();
    if (out != nullptr) {
        *out = reply.release();
    }
    if (result != 0) {
        cloud_log("\n%s %d : method %s fail error %d\n\n", __func__, 1318, method, result);
        ++curl_http_fail_count;
    }
    return result;
}

int http_get(const char *url, char **out) noexcept { return curl_http("GET", url, out, nullptr); }

int http_post(const char *url, const char *body, char **out) noexcept {
    return curl_http("POST", url, out, body);
}

int http_patch(const char *url, const char *body, char **out) noexcept {
    return curl_http("PATCH", url, out, body);
}

int http_delete(const char *url, const char *body, char **out) noexcept {
    return curl_http("DELETE", url, out, body);
}
