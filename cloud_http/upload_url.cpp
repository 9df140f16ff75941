#include "cloud_http/upload_url.h"

#include <netinet/in.h>
#include <resolv.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/owned.h"
#include "cloud_http/proxy.h"
#include "cloud_http/request.h"
#include "json_parser/owned_json.h"
#include "log/log.h"

using namespace cloudagent;

char KDUMPS_url[1024] = "";
char *g_upload_url = nullptr;
char g_curl_dns_server[64] = "";
uint32_t g_detect_dns = 0;

namespace {

// A server list that has been read once serves all later requests of the process.
void pin_dns_servers(Request &request) noexcept {
    if (g_detect_dns == 0) {
        return;
    }
    const bool known =
        g_curl_dns_server[0] != '\0' || (ReadCurlDnsFile() == 0 && g_curl_dns_server[0] != '\0');
    if (known) {
        request.set_text(CURLOPT_DNS_SERVERS, g_curl_dns_server);
    } else {
        request.set_long(CURLOPT_DNS_CACHE_TIMEOUT, 0);
    }
}

// Lets the next attempt see a changed resolver configuration. Never calls libc again after a
// failure: without memory it keeps its lock, and the next call would block.
void renew_resolver() noexcept {
    static bool failed = false;
    failed = failed || res_init() != 0;
}

bool keep_upload_url(const char *url) noexcept {
    constexpr const char *kFunction = "api_TFA_post_data";
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
    Request request(KDUMPS_url);
    pin_dns_servers(request);
    request.set_text(CURLOPT_CUSTOMREQUEST, "POST");
    request.use_client_certificate();
    request.set_text(CURLOPT_POSTFIELDS, body != nullptr ? body : "");
    request.set_long(CURLOPT_FOLLOWLOCATION, 1);
    request.set_content_type("application/json");
    request.collect_reply();
    if (c_cloud_proxy_get(g_proxy_server) == 0) {
        cloud_log("\n%s %d g_proxy_server \"%s\"\n\n", __func__, 289, g_proxy_server);
        request.use_proxy(g_proxy_server);
    }

    long status = 0;
    const CURLcode result = request.perform_to_cloud(&status);
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
    return read_reply(request.reply().data);
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
