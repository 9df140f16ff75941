#include "cloud_http_fixture.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "log/log.h"
#include "testing/call_trace.h"

namespace {

// The fields of a reply record; its text as "null" or "some".
std::string record_text(const void *record) {
    const auto &reply = *static_cast<const HttpReply *>(record);
    return "{" + std::to_string(reply.mode) + ", " + (reply.data != nullptr ? "some" : "null") +
           ", " + std::to_string(reply.size) + "}";
}

}  // namespace

CloudHttpTest::CloudHttpTest() : local_service(std::make_unique<world::ScriptedServer>()) {
    curl_global_init(CURL_GLOBAL_ALL);
    trace::words = {reinterpret_cast<const void *>(http_reply_write), record_text};
    g_console_debug = 1;
    curl_http_fail_count = 0;
    g_detect_dns = 0;
    g_upload_url = nullptr;
    std::memset(g_proxy_server, 0, sizeof g_proxy_server);
    std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
    std::memset(KDUMPS_url, 0, sizeof KDUMPS_url);
    publish_proxy(R"("enable":false)");
}

CloudHttpTest::~CloudHttpTest() {
    std::free(g_upload_url);
    g_upload_url = nullptr;
    g_console_debug = 0;
}

void CloudHttpTest::publish_proxy(const std::string &members) {
    local_service->on(
        "GET /api/system/cloud_proxy",
        {world::json_reply(R"({"restful_res":{"CloudProxySettings":{)" + members + "}}}")});
}

world::ServerSetup CloudHttpTest::plain_cloud() {
    world::ServerSetup setup;
    setup.port = 8080;
    return setup;
}

int count_of(const std::string &text, const std::string &piece) {
    int count = 0;
    for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1))
        ++count;
    return count;
}

int count_of_headers(const world::Request &request, const std::string &name) {
    int count = 0;
    for (const auto &[key, value] : request.headers)
        count += strcasecmp(key.c_str(), name.c_str()) == 0;
    return count;
}

Redirected::Redirected(int descriptor, const std::string &path, int open_flags)
    : descriptor_(descriptor), saved_(dup(descriptor)) {
    const int file = open(path.c_str(), open_flags | O_CLOEXEC, 0600);
    dup2(file, descriptor_);
    close(file);
}

Redirected::~Redirected() {
    dup2(saved_, descriptor_);
    close(saved_);
}
