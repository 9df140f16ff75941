#include "cloud_http_fixture.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_http/proxy.h"
#include "testing/call_trace.h"

namespace {

// The fields of a reply record; its text as "null" or "some".
std::string record_text(const void *record) {
    const auto &reply = *static_cast<const HttpReply *>(record);
    return "{" + std::to_string(reply.mode) + ", " + (reply.data != nullptr ? "some" : "null") +
           ", " + std::to_string(reply.size) + "}";
}

}  // namespace

CloudHttpTest::CloudHttpTest() {
    curl_global_init(CURL_GLOBAL_ALL);
    trace::words = {reinterpret_cast<const void *>(http_reply_write), record_text};
    curl_http_fail_count = 0;
    g_detect_dns = 0;
    g_upload_url = nullptr;
    std::memset(g_proxy_server, 0, sizeof g_proxy_server);
    std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
    ask_at("");
    publish_proxy(R"("enable":false)");
}

CloudHttpTest::~CloudHttpTest() { forget_upload_url(); }

void CloudHttpTest::forget_upload_url() {
    std::free(g_upload_url);
    g_upload_url = nullptr;
}

void CloudHttpTest::publish_proxy(const std::string &members) {
    local_service->on("GET /api/system/cloud_proxy",
                      {json_reply(R"({"restful_res":{"CloudProxySettings":{)" + members + "}}}")});
}

void CloudHttpTest::ask_at(const std::string &url) {
    std::strncpy(KDUMPS_url, url.c_str(), sizeof KDUMPS_url - 1);
}

world::ServerSetup CloudHttpTest::plain(uint16_t port) {
    world::ServerSetup setup;
    setup.port = port;
    return setup;
}

UploadTest::UploadTest() {
    world::write_file(kDump, kContent);
    on_each_sleep([](size_t) {});
}

void UploadTest::on_each_sleep(const std::function<void(size_t)> &action) {
    on_sleep = [action](size_t count) {
        action(count);
        if (count == 100) {
            std::filesystem::remove(kDump);
        }
    };
}

void UploadTest::answer_both(ScriptedServer &cloud) {
    cloud.on("POST /kdumps", {json_reply(R"({"message":"no"})")});
    cloud.on("PUT /put", {status_reply(200)});
}

void UploadTest::expect_both_to_fail_with(int code) {
    EXPECT_EQ(api_TFA_post_data("{}"), code);
    EXPECT_EQ(upload(0), code);
    EXPECT_TRUE(world::exists(kDump));
}

std::string UploadTest::begin_log(size_t size, int flag) const {
    return "api_TFA_post_FILE 394 filename /tmp/dump.bin uploadUrl " + url + " file size " +
           std::to_string(size) + " flag " + std::to_string(flag) +
           "\ncurl_slist_append(): Content-Type: application/octet-stream\n" + kNoProxyLog;
}

int count_of(const std::string &text, const std::string &piece) {
    int count = 0;
    for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) {
        ++count;
    }
    return count;
}

int count_of_headers(const world::Request &request, const std::string &name) {
    int count = 0;
    for (const auto &[key, value] : request.headers) {
        count += strcasecmp(key.c_str(), name.c_str()) == 0;
    }
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
