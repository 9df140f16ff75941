// Every option of every request, its value and its place.
#include <curl/curl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "cloud_http/curl_http.h"
#include "cloud_http/upload_url.h"
#include "testing/call_trace.h"
#include "upload_fixture.h"

namespace {

constexpr const char *kThing = "http://127.0.0.1:8000/api/thing";

std::string trace_of(const std::function<void()> &call) {
    trace::start();
    call();
    return trace::stop();
}

int refuse(int, struct stat *) { return -1; }

class OptionsTest : public UploadTest {
  protected:
    OptionsTest() {
        local_service->on("/api/thing", {world::json_reply("{}")});
        cloud.on("/kdumps", {world::json_reply(R"({"message":"no"})")});
        cloud.on("/put", {world::status_reply(200)});
        const std::string endpoint = std::string(kCloud) + "/kdumps";
        endpoint.copy(KDUMPS_url, endpoint.size());
    }

    world::ScriptedServer cloud{plain_cloud()};
};

TEST_F(OptionsTest, OfALocalGet) {
    EXPECT_EQ(trace_of([] { http_get(kThing, nullptr); }), R"(handle 1
1 URL "http://127.0.0.1:8000/api/thing"
1 CUSTOMREQUEST "GET"
1 WRITEFUNCTION http_reply_write
1 WRITEDATA record
1 perform into {2, null, 0}
1 status
1 cleanup
)");
}

TEST_F(OptionsTest, OfALocalPost) {
    EXPECT_EQ(trace_of([] { http_post(kThing, "body", nullptr); }), R"(handle 1
1 URL "http://127.0.0.1:8000/api/thing"
1 CUSTOMREQUEST "POST"
1 POSTFIELDS "body"
1 WRITEFUNCTION http_reply_write
1 WRITEDATA record
1 perform into {2, null, 0}
1 status
1 cleanup
)");
}

TEST_F(OptionsTest, OfALocalRequestThatFails) {
    stop_local_service();
    EXPECT_EQ(trace_of([] { http_delete(kThing, nullptr, nullptr); }), R"(handle 1
1 URL "http://127.0.0.1:8000/api/thing"
1 CUSTOMREQUEST "DELETE"
1 POSTFIELDS ""
1 WRITEFUNCTION http_reply_write
1 WRITEDATA record
1 perform into {2, null, 0}
1 status
1 cleanup
log "\ncurl_http 1318 : method DELETE fail error 7\n\n"
)");
}

const std::string kUnproxiedTransfer = R"(handle 2
2 URL "http://127.0.0.1:8000/api/system/cloud_proxy"
2 CUSTOMREQUEST "GET"
2 WRITEFUNCTION http_reply_write
2 WRITEDATA record
2 perform into {2, null, 0}
2 status
2 cleanup
log "\n\nc_cloud_proxy_get 27\n\n\n"
log "\n\nc_cloud_proxy_get 32 proxy_string ""\n\n\n"
1 SSL_SESSIONID_CACHE 0
1 perform into {2, null, 0}
1 hook
1 status
1 cleanup
)";

TEST_F(OptionsTest, OfAnUploadUrlRequest) {
    EXPECT_EQ(trace_of([] { api_TFA_post_data("{\"filename\": \"a\"}"); }),
              R"(handle 1
1 URL "http://127.0.0.1:8080/kdumps"
1 CUSTOMREQUEST "POST"
1 SSLCERT "CRT"
1 SSLKEY "KEY"
1 USE_SSL 3
1 SSL_VERIFYPEER 0
1 SSL_VERIFYHOST 0
1 POSTFIELDS "{"filename": "a"}"
1 FOLLOWLOCATION 1
log "curl_slist_append(): Content-Type: application/json\n"
list append "Content-Type: application/json" to null
1 WRITEFUNCTION http_reply_write
1 WRITEDATA record
1 HTTPHEADER "Content-Type: application/json"
)" + kUnproxiedTransfer +
                  R"(list free "Content-Type: application/json"
log "reply from TFA : {\n\t"message":\t"no"\n}\n\n"
)");
}

TEST_F(OptionsTest, OfAnUpload) {
    EXPECT_EQ(trace_of([this] { upload(0); }),
              R"(open /tmp/dump.bin rb
log "api_TFA_post_FILE 394 filename /tmp/dump.bin uploadUrl http://127.0.0.1:8080/put file size 5 flag 0\n"
handle 1
1 URL "http://127.0.0.1:8080/put"
1 CUSTOMREQUEST "PUT"
1 UPLOAD 1
1 READDATA file /tmp/dump.bin
1 INFILESIZE_LARGE 5
1 VERBOSE 1
1 SSLCERT "CRT"
1 SSLKEY "KEY"
1 USE_SSL 3
1 SSL_VERIFYPEER 0
1 SSL_VERIFYHOST 0
1 FOLLOWLOCATION 1
log "curl_slist_append(): Content-Type: application/octet-stream\n"
list append "Content-Type: application/octet-stream" to null
1 WRITEFUNCTION http_reply_write
1 WRITEDATA record
1 HTTPHEADER "Content-Type: application/octet-stream"
)" + kUnproxiedTransfer +
                  R"(list free "Content-Type: application/octet-stream"
close /tmp/dump.bin
unlink /tmp/dump.bin
log "api_TFA_post_FILE 458 unlink /tmp/dump.bin\n\n"
log "api_TFA_post_FILE 467 curl_easy_perform() OK\n\n"
)");
}

constexpr const char *kProxyOn = R"("enable":true,"proxyServer":"127.0.0.1","proxyServerPort":9)";

// Between the answer about the proxy and the transfer.
std::string proxy_part(const std::string &site) {
    return R"(log "\n\nc_cloud_proxy_get 60 Proxy Server change to "127.0.0.1:9"\n\n\n"
log "\n)" + site +
           R"( g_proxy_server "127.0.0.1:9"\n\n"
1 PROXY "127.0.0.1:9"
1 PROXY_SSL_VERIFYPEER 0
1 HTTPPROXYTUNNEL 1
1 SSL_SESSIONID_CACHE 0
1 perform into {2, null, 0}
)";
}

TEST_F(OptionsTest, OfTheProxyOfAnUploadUrlRequest) {
    publish_proxy(kProxyOn);
    EXPECT_THAT(trace_of([] { api_TFA_post_data("{}"); }),
                testing::HasSubstr(proxy_part("api_TFA_post_data 289")));
}

TEST_F(OptionsTest, OfTheProxyOfAnUpload) {
    publish_proxy(kProxyOn);
    EXPECT_THAT(trace_of([this] { upload(0); }),
                testing::HasSubstr(proxy_part("api_TFA_post_FILE 426")));
}

TEST_F(OptionsTest, OfEveryRetryAreThoseOfTheFirstAttempt) {
    url = kNobody;
    const std::string lines = trace_of([this] { upload(1); });
    const std::string first = trace::of_handle(lines, 1);
    EXPECT_THAT(first, testing::StartsWith("URL \"http://127.0.0.1:8081/nobody\"\n"));
    EXPECT_THAT(first, testing::EndsWith("perform into {2, null, 0}\nhook\nstatus\ncleanup\n"));
    EXPECT_EQ(trace::of_handle(lines, 3), first);
    EXPECT_EQ(trace::of_handle(lines, 5), first);
    EXPECT_EQ(count_of(lines, "open /tmp/dump.bin rb\n"), 3);
    EXPECT_EQ(count_of(lines, "close /tmp/dump.bin\n"), 3);
    EXPECT_EQ(count_of(lines, "list append \"Content-Type: application/octet-stream\" to null\n"),
              3);
    EXPECT_EQ(count_of(lines, "list free \"Content-Type: application/octet-stream\"\n"), 3);
}

TEST_F(OptionsTest, OfALargeFileHaveItsWholeSize) {
    ASSERT_EQ(truncate(kDump, 3221225472), 0);
    url = kNobody;
    EXPECT_THAT(trace_of([this] { upload(0); }),
                testing::HasSubstr("\n1 INFILESIZE_LARGE 3221225472\n"));
}

TEST_F(OptionsTest, OfAFileWhoseSizeCannotBeReadAreNeverSet) {
    calls::answer<::fstat>() = refuse;
    EXPECT_EQ(trace_of([this] { EXPECT_EQ(upload(2), 1); }), R"(open /tmp/dump.bin rb
log "api_TFA_post_FILE 388 filename /tmp/dump.bin\n"
close /tmp/dump.bin
)");
    calls::answer<::fstat>() = nullptr;
    EXPECT_EQ(world::read_file(kDump), kContent);
    EXPECT_TRUE(sleeps.empty());
}

TEST_F(OptionsTest, OfAFileWhoseSizeCannotBeReadAtARetryEndTheCall) {
    on_each_sleep([](size_t) { calls::answer<::fstat>() = refuse; });
    url = kNobody;
    EXPECT_EQ(upload(2), 1);
    calls::answer<::fstat>() = nullptr;
    EXPECT_THAT(console.text_without_stamps(),
                testing::EndsWith(kRetryLog + "api_TFA_post_FILE 388 filename /tmp/dump.bin\n"));
}

}  // namespace
