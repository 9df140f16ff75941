#include "cloud_http/curl_http.h"

#include <cstring>

#include "cloud_http/request.h"
#include "log/log.h"

using namespace cloudagent;

uint32_t curl_http_fail_count = 0;

int curl_http(const char *method, const char *url, char **out, const char *body) noexcept {
    Request request(url);
    request.set_text(CURLOPT_CUSTOMREQUEST, method);
    if (method == nullptr || std::strcmp(method, "GET") != 0) {
        // Without a text libcurl would read the body from standard input.
        request.set_text(CURLOPT_POSTFIELDS, body != nullptr ? body : "");
    }
    request.collect_reply();
    const int result = request.perform();
    request.status();  // read after every transfer, though any status is accepted here
    request.clean_up();
    if (out != nullptr) {
        *out = request.take_reply();
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
