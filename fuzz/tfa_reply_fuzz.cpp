// Any reply of the cloud to the request for an upload URL, through any proxy, with any pinned name
// servers.
// Input: the first line of the name servers' file (empty: no pinning); then the local service's
// reply and the cloud's.
#include <cstring>

#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "fuzz.h"
#include "json_parser/owned_json.h"
#include "replies.h"

using cloudagent::OwnedJson;

namespace {

constexpr const char *kEndpoint = "https://tfa.example.com/dev/tfaapi/kdumps";

void prepare(std::string_view name_servers) {
    std::memset(g_proxy_server, 0, sizeof g_proxy_server);
    std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
    std::strcpy(KDUMPS_url, kEndpoint);
    g_detect_dns = name_servers.empty() ? 0 : 1;
    g_upload_url = nullptr;
    fuzz::write_file("/tmp/curlDNSFile", name_servers);
}

// A second reader of the cloud's reply.
std::string expected_url(const char *reply) {
    const OwnedJson document(parseJsonText(reply));
    const char *const message = getJsonStringValueForKey(document.get(), "message");
    const char *const url = getJsonStringValueForKey(document.get(), "upload_url");
    return message != nullptr && std::strcmp(message, "OK") == 0 && url != nullptr ? url : "";
}

void try_input(fuzz::Input input) {
    prepare(input.line());

    fuzz::Input replies = input;
    input.block();
    const std::string_view cloud = input.block();
    fuzz::answer_with(replies);
    const int result = api_TFA_post_data("{\"filename\": \"segmentrace.txt\"}");
    const fuzz::Request &request = fuzz::requests().back();
    REQUIRE(request.url == kEndpoint && request.method == "POST");
    REQUIRE(request.proxy == g_proxy_server || request.proxy.empty());
    if (request.code != 0) {
        REQUIRE(result == request.code);
    } else if (request.status != 200) {
        REQUIRE(result == request.status);
    } else {
        REQUIRE(result == 0 || result == -1);
    }
    const bool plain = !cloud.empty() && cloud.front() != '!' && cloud.front() != '#';
    const std::string url = plain ? expected_url(fuzz::c_text(cloud).get()) : "";
    if (plain) {
        REQUIRE(url == (g_upload_url != nullptr ? g_upload_url : ""));
    }
    REQUIRE(g_upload_url == nullptr || result == 0);
    std::free(g_upload_url);
    g_upload_url = nullptr;
}

}  // namespace

const fuzz::Target fuzz::target = {try_input};
