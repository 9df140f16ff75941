#include "cloud_http/cloud_request.h"

#include "cloud_http/curl_http.h"
#include "cloud_http/proxy.h"
#include "log/log.h"
#include "support/fixed_text.h"

CloudRequest::CloudRequest(const char *url) noexcept : handle_(curl_easy_init()) {
    set_text(handle(), CURLOPT_URL, url);
    set_no_session_cache(handle());
}

void CloudRequest::use_client_certificate() noexcept {
    set_text(handle(), CURLOPT_SSLCERT, "CRT");
    set_text(handle(), CURLOPT_SSLKEY, "KEY");
    set_long(handle(), CURLOPT_USE_SSL, CURLUSESSL_ALL);
    set_long(handle(), CURLOPT_SSL_VERIFYPEER, 0);
    set_long(handle(), CURLOPT_SSL_VERIFYHOST, 0);
}

void CloudRequest::set_content_type(const char *type) noexcept {
    FixedText<256> line;
    line.format("Content-Type: %s", type);
    cloud_log("curl_slist_append(): %s\n", line.c_str());
    headers_.reset(curl_slist_append(nullptr, line.c_str()));
}

void CloudRequest::collect_reply() noexcept {
    reply_.collect(handle());
    set_pointer(handle(), CURLOPT_HTTPHEADER, headers_.get());
}

void CloudRequest::use_device_proxy(const char *function, int site) noexcept {
    if (c_cloud_proxy_get(g_proxy_server) != 0) {
        return;
    }
    cloud_log("\n%s %d g_proxy_server \"%s\"\n\n", function, site, g_proxy_server);
    set_text(handle(), CURLOPT_PROXY, g_proxy_server);
    set_long(handle(), CURLOPT_PROXY_SSL_VERIFYPEER, 0);
    set_long(handle(), CURLOPT_HTTPPROXYTUNNEL, 1);
}

CURLcode CloudRequest::perform(long *status) noexcept {
    const CURLcode result = curl_easy_perform(handle());
    curl_post_transfer_hook(handle());
    *status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, status);
    handle_.reset();
    headers_.reset();
    return result;
}
