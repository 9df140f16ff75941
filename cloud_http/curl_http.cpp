#include "cloud_http/curl_http.h"

#include <cstring>

#include "cloud_http/transfer.h"
#include "log/log.h"

uint32_t curl_http_fail_count = 0;

int curl_http(const char *method, const char *url, char **out, const char *body) noexcept {
    Transfer transfer(url);
    transfer.set_text(CURLOPT_CUSTOMREQUEST, method);
    if (method == nullptr || std::strcmp(method, "GET") != 0) {
        // Without a text here libcurl would read the body from standard input.
        transfer.set_text(CURLOPT_POSTFIELDS, body != nullptr ? body : "");
    }
    ReplyText reply;
    transfer.collect_reply(reply);
    const int result = transfer.perform();
    transfer.status();  // read, as after every transfer; these requests take any status
    transfer.clean_up();
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
