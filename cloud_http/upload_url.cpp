#include "cloud_http/upload_url.h"

#include <netinet/in.h>
#include <resolv.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cloud_http/cloud_request.h"
#include "json_parser/owned_json.h"
#include "log/log.h"
#include "support/owned.h"

char KDUMPS_url[1024] = "";
char *g_upload_url = nullptr;
char g_curl_dns_server[64] = "";
uint32_t g_detect_dns = 0;

namespace {

constexpr const char *kFunction = "api_TFA_post_data";

// Once a server list has been read it serves every later request of the process.
void pin_dns_servers(Transfer &transfer) noexcept {
    if (g_detect_dns == 0) {
        return;
    }
    const bool known =
        g_curl_dns_server[0] != '\0' || (ReadCurlDnsFile() == 0 && g_curl_dns_server[0] != '\0');
    if (known) {
        transfer.set_text(CURLOPT_DNS_SERVERS, g_curl_dns_server);
    } else {
        transfer.set_long(CURLOPT_DNS_CACHE_TIMEOUT, 0);
    }
}

// The next attempt sees a resolver configuration that has changed meanwhile. Where libc finds no
// memory for that it keeps a lock, and a second call would wait for ever.
void renew_resolver() noexcept {
    static bool failed = false;
    failed = failed || res_init() != 0;
}

bool keep_upload_url(const char *url) noexcept {
    const std::size_t length = std::strlen(url);
    cloud_log("%s %d url_size %d \n\n", kFunction, 340, static_cast<int>(length));
    char *const copy = static_cast<char *>(std::malloc(length + 1));
    if (copy == nullptr) {
        return false;
    }
    std::memcpy(copy, url, length + 1);
    g_upload_url = copy;
    cloud_log("%s %d upload to url : %s\nlength %d\n", kFunction, 343, g_upload_url,
              static_cast<int>(length));
    return true;
}

int read_reply(const char *reply) noexcept {
    if (reply == nullptr) {
        cloud_log("secret from TFA error\n\n");
        return -1;
    }
    const OwnedJson document(parseJsonText(reply));
    if (!document) {
        return -1;
    }
    const OwnedText printed(printJson(document.get()));
    cloud_log("reply from TFA : %s\n\n", printed.get());
    const char *const message = getJsonStringValueForKey(document.get(), "message");
    if (message == nullptr) {
        return -1;
    }
    if (std::strcmp(message, "OK") != 0) {
        return 0;
    }
    const char *const url = getJsonStringValueForKey(document.get(), "upload_url");
    return url == nullptr || keep_upload_url(url) ? 0 : -1;
}

}  // namespace

int api_TFA_post_data(const char *body) noexcept {
    CloudRequest request(KDUMPS_url);
    Transfer &transfer = request.transfer();
    pin_dns_servers(transfer);
    transfer.set_text(CURLOPT_CUSTOMREQUEST, "POST");
    request.use_client_certificate();
    transfer.set_text(CURLOPT_POSTFIELDS, body != nullptr ? body : "");
    transfer.set_long(CURLOPT_FOLLOWLOCATION, 1);
    request.set_content_type("application/json");
    request.collect_reply();
    request.use_device_proxy(kFunction, 289);

    long status = 0;
    const CURLcode result = request.perform(&status);
    if (result == CURLE_COULDNT_RESOLVE_HOST && g_detect_dns == 0) {
        renew_resolver();
    }
    if (result != CURLE_OK) {
        cloud_log("TFA curl error : %d\n", static_cast<int>(result));
        return result;
    }
    if (status != kHttpOk) {
        cloud_log("TFA http error : %d\n", static_cast<int>(status));
        return static_cast<int>(status);
    }
    return read_reply(request.reply());
}

int ReadCurlDnsFile() noexcept {
    const OwnedFile file(std::fopen("/tmp/curlDNSFile", "r"));
    if (!file) {
        cloud_log("\n\n%s %d : get Curl info DNS server failed\n\n", __func__, 103);
        return -1;
    }
    const int size = static_cast<int>(sizeof g_curl_dns_server);
    return std::fgets(g_curl_dns_server, size, file.get()) != nullptr ? 0 : -1;
}
