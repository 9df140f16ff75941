// Every option of every request, its value and its place.
#include <curl/curl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cloud_http/curl_http.h"
#include "cloud_http/proxy.h"
#include "cloud_http_fixture.h"
#include "deployment.h"
#include "testing/call_trace.h"

namespace {

const std::string kServerChecks =
    CLOUD_VERIFY_CLOUD ? "1 SSL_VERIFYPEER 1\n1 SSL_VERIFYHOST 2\n1 CAPATH \"/etc/ssl/certs/\"\n"
                       : "1 SSL_VERIFYPEER 0\n1 SSL_VERIFYHOST 0\n";

std::string trace_of(const std::function<void()> &call) {
    trace::start();
    call();
    return trace::stop();
}

int refuse(int, struct stat *) { return -1; }

class OptionsTest : public UploadTest {
  protected:
    OptionsTest() {
        answer_both(cloud);
        ask_at(std::string(kCloud) + "/kdumps");
    }

    ScriptedServer cloud{plain()};
};

struct Local : NamedRow {
    const char *method;
    const char *body;
    bool fails;
    std::string body_option;
};

class LocalOptions : public OptionsTest, public testing::WithParamInterface<Local> {};

TEST_P(LocalOptions, AreTheRequests) {
    const std::string method = GetParam().method;
    if (GetParam().fails) {
        local_service.reset();
    }
    EXPECT_EQ(
        trace_of([&] {
            curl_http(method.c_str(), "http://127.0.0.1:8000/a", nullptr, GetParam().body);
        }),
        "handle 1\n1 URL \"http://127.0.0.1:8000/a\"\n1 CUSTOMREQUEST \"" + method + "\"\n" +
            GetParam().body_option +
            "1 WRITEFUNCTION http_reply_write\n1 WRITEDATA record\n"
            "1 perform into {2, null, 0}\n1 status\n1 cleanup\n" +
            (GetParam().fails ? "log \"\\ncurl_http 1318 : method DELETE fail error 7\\n\\n\"\n"
                              : ""));
}

INSTANTIATE_TEST_SUITE_P(
    Of, LocalOptions,
    testing::Values(Local{"Get", "GET", nullptr, false, ""},
                    Local{"Post", "POST", "body", false, "1 POSTFIELDS \"body\"\n"},
                    Local{"AFailure", "DELETE", nullptr, true, "1 POSTFIELDS \"\"\n"}),
    RowName());

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
)" + kServerChecks +
                  R"(1 POSTFIELDS "{"filename": "a"}"
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
)" + kServerChecks +
                  R"(1 FOLLOWLOCATION 1
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

TEST_F(OptionsTest, OfTheProxyOfBothRequests) {
    publish_proxy(R"("enable":true,"proxyServer":"127.0.0.1","proxyServerPort":9)");
    EXPECT_THAT(trace_of([] { api_TFA_post_data("{}"); }),
                testing::HasSubstr(proxy_part("api_TFA_post_data 289")));
    g_proxy_server[0] = '\0';
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
    for (const char *call : {"open /tmp/dump.bin rb", "close /tmp/dump.bin",
                             "list append \"Content-Type: application/octet-stream\" to null",
                             "list free \"Content-Type: application/octet-stream\""}) {
        EXPECT_EQ(count_of(lines, std::string(call) + "\n"), 3) << call;
    }
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
    EXPECT_TRUE(sleeps.empty());
    calls::answer<::fstat>() = nullptr;
    on_each_sleep([](size_t) { calls::answer<::fstat>() = refuse; });
    url = kNobody;
    EXPECT_EQ(upload(2), 1) << "a retry ends the call too";
    calls::answer<::fstat>() = nullptr;
    EXPECT_THAT(logged(),
                testing::EndsWith(kRetryLog + "api_TFA_post_FILE 388 filename /tmp/dump.bin\n"));
    EXPECT_EQ(world::read_file(kDump), kContent);
}

}  // namespace
