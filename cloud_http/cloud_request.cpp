#include "cloud_http/cloud_request.h"

#include "cloud_http/curl_http.h"
#include "cloud_http/proxy.h"
#include "log/log.h"
#include "support/fixed_text.h"

void CloudRequest::use_client_certificate() noexcept {
    transfer_.set_text(CURLOPT_SSLCERT, "CRT");
    transfer_.set_text(CURLOPT_SSLKEY, "KEY");
    transfer_.set_long(CURLOPT_USE_SSL, CURLUSESSL_ALL);
    transfer_.set_long(CURLOPT_SSL_VERIFYPEER, 0);
    transfer_.set_long(CURLOPT_SSL_VERIFYHOST, 0);
}

void CloudRequest::set_content_type(const char *type) noexcept {
    FixedText<256> line;
    line.format("Content-Type: %s", type);
    cloud_log("curl_slist_append(): %s\n", line.c_str());
    headers_.reset(curl_slist_append(nullptr, line.c_str()));
    if (!headers_) {
        transfer_.miss_memory();
    }
}

void CloudRequest::collect_reply() noexcept {
    transfer_.collect_reply(reply_);
    transfer_.set_pointer(CURLOPT_HTTPHEADER, headers_.get());
}

void CloudRequest::use_device_proxy(const char *function, int site) noexcept {
    if (c_cloud_proxy_get(g_proxy_server) != 0) {
        return;
    }
    cloud_log("\n%s %d g_proxy_server \"%s\"\n\n", function, site, g_proxy_server);
    transfer_.set_text(CURLOPT_PROXY, g_proxy_server);
    transfer_.set_long(CURLOPT_PROXY_SSL_VERIFYPEER, 0);
    transfer_.set_long(CURLOPT_HTTPPROXYTUNNEL, 1);
}

CURLcode CloudRequest::perform(long *status) noexcept {
    transfer_.prepare_tls();
    const CURLcode result = transfer_.perform();
    curl_post_transfer_hook(transfer_.handle());
    *status = transfer_.status();
    transfer_.clean_up();
    headers_.reset();
    return result;
}
