#include "cloud_http/curl_http.h"

#include <fcntl.h>

#include <cstdlib>
#include <functional>

#include "cloud_http_fixture.h"
#include "log/log.h"

namespace {

constexpr const char *kUrl = "http://127.0.0.1:8000/api/thing?x=1";

struct Call : NamedRow {
    std::function<int(char **out)> make;
    const char *method;
    const char *body;
    const char *content_length;  // as sent; empty: no such header
};

class CurlHttpCall : public CloudHttpTest, public testing::WithParamInterface<Call> {};

TEST_P(CurlHttpCall, SendsItsMethodAndBody) {
    local_service->on("/api/thing", {world::json_reply("{\"a\":1}")});
    char *out = nullptr;
    EXPECT_EQ(GetParam().make(&out), 0);
    EXPECT_STREQ(out, "{\"a\":1}");
    std::free(out);
    const auto requests = local_service->requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, GetParam().method);
    EXPECT_EQ(requests[0].target, "/api/thing?x=1");
    EXPECT_EQ(requests[0].body, GetParam().body);
    EXPECT_EQ(requests[0].header("Content-Length"), GetParam().content_length);
    EXPECT_EQ(console.text(), "");
    EXPECT_EQ(curl_http_fail_count, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Of, CurlHttpCall,
    testing::Values(
        Call{"Get", [](char **out) { return http_get(kUrl, out); }, "GET", "", ""},
        Call{"Post", [](char **out) { return http_post(kUrl, "b=1", out); }, "POST", "b=1", "3"},
        Call{"Patch", [](char **out) { return http_patch(kUrl, "{}", out); }, "PATCH", "{}", "2"},
        Call{"Delete", [](char **out) { return http_delete(kUrl, "b", out); }, "DELETE", "b", "1"},
        Call{"GetIgnoresItsBody", [](char **out) { return curl_http("GET", kUrl, out, "body"); },
             "GET", "", ""},
        Call{"OnlyGetInCapitalsIsGet",
             [](char **out) { return curl_http("get", kUrl, out, "body"); }, "get", "body", "4"},
        Call{"AMethodThatBeginsWithGetIsNotGet",
             [](char **out) { return curl_http("GETX", kUrl, out, "body"); }, "GETX", "body", "4"},
        Call{"AnyMethod", [](char **out) { return curl_http("PUT", kUrl, out, "p"); }, "PUT", "p",
             "1"},
        Call{"EmptyPost", [](char **out) { return http_post(kUrl, "", out); }, "POST", "", "0"}),
    RowName());

class CurlHttpTest : public CloudHttpTest {
  protected:
    ~CurlHttpTest() override { std::free(out); }

    char untouched = 'u';
    char *out = nullptr;
};

TEST_F(CurlHttpTest, StoresNullForAReplyWithoutABody) {
    local_service->on("/api/thing", {world::status_reply(200)});
    char *reply = &untouched;
    EXPECT_EQ(http_get(kUrl, &reply), 0);
    EXPECT_EQ(reply, nullptr);
}

TEST_F(CurlHttpTest, TakesAnErrorStatusForASuccess) {
    local_service->on("/api/thing", {world::status_reply(500, "sorry")});
    EXPECT_EQ(http_get(kUrl, &out), 0);
    EXPECT_STREQ(out, "sorry");
    EXPECT_EQ(curl_http_fail_count, 0u);
    EXPECT_EQ(console.text(), "");
}

TEST_F(CurlHttpTest, FollowsNoRedirect) {
    local_service->on("/api/thing", {world::redirect_reply("/elsewhere")});
    EXPECT_EQ(http_get(kUrl, &out), 0);
    EXPECT_EQ(local_service->requests().size(), 1u);
}

TEST_F(CurlHttpTest, NeedsNoPlaceForTheReply) {
    local_service->on("/api/thing", {world::json_reply("{}")});
    EXPECT_EQ(http_post(kUrl, "b", nullptr), 0);
    EXPECT_EQ(local_service->requests().size(), 1u);
}

TEST_F(CurlHttpTest, SendsTheBodyWithoutAMethodToo) {
    local_service->on("/api/thing", {world::json_reply("{}")});
    EXPECT_EQ(curl_http(nullptr, kUrl, nullptr, "b"), 0);
    ASSERT_EQ(local_service->requests().size(), 1u);
    EXPECT_EQ(local_service->requests()[0].method, "POST");
    EXPECT_EQ(local_service->requests()[0].body, "b");
}

TEST_F(CurlHttpTest, NeverReadsStandardInput) {
    local_service->on("/api/thing", {world::json_reply("{}")});
    world::write_file("/tmp/input", "typed");
    const Redirected input(0, "/tmp/input", O_RDONLY);
    EXPECT_EQ(http_post(kUrl, nullptr, nullptr), 0);
    EXPECT_EQ(http_patch(kUrl, nullptr, nullptr), 0);
    for (const world::Request &request : local_service->requests()) {
        EXPECT_EQ(request.body, "");
        EXPECT_EQ(request.header("Content-Length"), "0");
        EXPECT_EQ(request.header("Transfer-Encoding"), "");
    }
}

TEST_F(CurlHttpTest, LogsAndCountsAnUnreachableService) {
    stop_local_service();
    char *reply = &untouched;
    EXPECT_EQ(http_get(kUrl, &reply), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(reply, nullptr);
    EXPECT_EQ(http_post(kUrl, "b", nullptr), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(console.text_without_stamps(),
              "\ncurl_http 1318 : method GET fail error 7\n\n"
              "\ncurl_http 1318 : method POST fail error 7\n\n");
    EXPECT_EQ(curl_http_fail_count, 2u);
}

TEST_F(CurlHttpTest, CountsFailuresWithLoggingOff) {
    stop_local_service();
    g_console_debug = 0;
    http_get(kUrl, nullptr);
    EXPECT_EQ(curl_http_fail_count, 1u);
    EXPECT_EQ(console.text(), "");
}

TEST_F(CurlHttpTest, NeverRetries) {
    local_service->on("/api/thing", {world::fault_reply(world::Fault::Kind::garbage)});
    EXPECT_NE(http_get(kUrl, nullptr), 0);
    EXPECT_EQ(local_service->requests().size(), 1u);
}

class CurlHttpBrokenReply : public CurlHttpTest {
  protected:
    CurlHttpBrokenReply() {
        world::Reply reply = world::json_reply("0123456789");
        reply.fault = {world::Fault::Kind::truncate, 4};
        local_service->on("/api/thing", {reply});
    }
};

TEST_F(CurlHttpBrokenReply, HandsOverWhatArrived) {
    EXPECT_EQ(http_get(kUrl, &out), CURLE_PARTIAL_FILE);
    EXPECT_STREQ(out, "0123");
    EXPECT_EQ(console.text_without_stamps(), "\ncurl_http 1318 : method GET fail error 18\n\n");
    EXPECT_EQ(curl_http_fail_count, 1u);
}

TEST_F(CurlHttpBrokenReply, ReleasesWhatArrivedWhenNobodyWantsIt) {
    EXPECT_EQ(http_get(kUrl, nullptr), CURLE_PARTIAL_FILE);
    EXPECT_EQ(curl_http_fail_count, 1u);
}

TEST_F(CurlHttpTest, TheHookTakesAnyHandle) {
    curl_post_transfer_hook(nullptr);
    EXPECT_EQ(console.text(), "");
}

}  // namespace
