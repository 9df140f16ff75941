// Any reply of the cloud to the request for an upload URL, through any proxy, with any pinned name
// servers.
// Input: the first line of the name servers' file (empty: no pinning); then the local service's
// reply and the cloud's.
#include <cstring>

#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "fuzz.h"
#include "in_product.h"
#include "json_parser/owned_json.h"
#include "replies.h"

using cloudagent::OwnedJson;

namespace {

constexpr const char *kEndpoint = "https://tfa.example.com/dev/tfaapi/kdumps";

std::string_view name_servers;

std::FILE *open_name_servers(const char *path, const char *mode) {
    REQUIRE(std::strcmp(path, "/tmp/curlDNSFile") == 0 && std::strcmp(mode, "r") == 0);
    return fmemopen(const_cast<char *>(name_servers.data()), name_servers.size(), mode);
}

const fuzz::Answers kAnswers = {open_name_servers};

void forget_earlier_runs() {
    std::memset(g_proxy_server, 0, sizeof g_proxy_server);
    std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
    std::strcpy(KDUMPS_url, kEndpoint);
    g_detect_dns = name_servers.empty() ? 0 : 1;
    g_upload_url = nullptr;
}

// A second reader of the cloud's reply.
std::string expected_url(const char *reply) {
    const OwnedJson document(parseJsonText(reply));
    const char *const message = getJsonStringValueForKey(document.get(), "message");
    const char *const url = getJsonStringValueForKey(document.get(), "upload_url");
    return message != nullptr && std::strcmp(message, "OK") == 0 && url != nullptr ? url : "";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    fuzz::Input input(data, size);
    name_servers = input.line();
    forget_earlier_runs();

    fuzz::Input replies = input;
    input.block();
    const std::string_view cloud = input.block();
    fuzz::answer_with(replies);
    int result = 0;
    {
        const fuzz::InProduct in_product(kAnswers);
        result = api_TFA_post_data("{\"filename\": \"segmentrace.txt\"}");
    }
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
    REQUIRE(fuzz::all_released());
    std::free(g_upload_url);
    g_upload_url = nullptr;
    return 0;
}
