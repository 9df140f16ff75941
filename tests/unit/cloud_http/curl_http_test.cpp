#include "cloud_http/curl_http.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdlib>

#include "cloud_http_fixture.h"

namespace {

constexpr const char *kUrl = "http://127.0.0.1:8000/api/thing?x=1";

class CurlHttpTest : public CloudHttpTest {
  protected:
    CurlHttpTest() { answer(json_reply("{\"a\":1}")); }
    ~CurlHttpTest() override { std::free(out); }

    void answer(const Reply &reply) { local_service->on("/api/thing", {reply}); }

    char untouched = 'u';
    char *out = nullptr;
};

struct Call : NamedRow {
    std::function<int(char **out)> make;
    const char *asked;           // method and body
    const char *content_length;  // as sent; empty: no such header
};

class CurlHttpCall : public CurlHttpTest, public testing::WithParamInterface<Call> {};

TEST_P(CurlHttpCall, SendsItsMethodAndBody) {
    EXPECT_EQ(GetParam().make(&out), 0);
    EXPECT_STREQ(out, "{\"a\":1}");
    std::string line = GetParam().asked;
    line.insert(std::min(line.find(' '), line.size()), " /api/thing?x=1");
    EXPECT_EQ(local_service->asked(), std::vector<std::string>{line});
    EXPECT_EQ(local_service->requests().at(0).header("Content-Length"), GetParam().content_length);
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(curl_http_fail_count, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Of, CurlHttpCall,
    testing::Values(
        Call{"Get", [](char **out) { return http_get(kUrl, out); }, "GET", ""},
        Call{"Post", [](char **out) { return http_post(kUrl, "b=1", out); }, "POST b=1", "3"},
        Call{"Patch", [](char **out) { return http_patch(kUrl, "{}", out); }, "PATCH {}", "2"},
        Call{"Delete", [](char **out) { return http_delete(kUrl, "b", out); }, "DELETE b", "1"},
        Call{"GetIgnoresItsBody", [](char **out) { return curl_http("GET", kUrl, out, "body"); },
             "GET", ""},
        Call{"OnlyGetInCapitalsIsGet",
             [](char **out) { return curl_http("get", kUrl, out, "body"); }, "get body", "4"},
        Call{"AMethodThatBeginsWithGetIsNotGet",
             [](char **out) { return curl_http("GETX", kUrl, out, "body"); }, "GETX body", "4"},
        Call{"AnyMethod", [](char **out) { return curl_http("PUT", kUrl, out, "p"); }, "PUT p",
             "1"},
        Call{"NoMethodIsPost", [](char **out) { return curl_http(nullptr, kUrl, out, "b"); },
             "POST b", "1"},
        Call{"EmptyPost", [](char **out) { return http_post(kUrl, "", out); }, "POST", "0"}),
    RowName());

TEST_F(CurlHttpTest, StoresNullForAReplyWithoutABody) {
    answer(status_reply(200));
    char *reply = &untouched;
    EXPECT_EQ(http_get(kUrl, &reply), 0);
    EXPECT_EQ(reply, nullptr);
}

TEST_F(CurlHttpTest, TakesAnErrorStatusForASuccess) {
    answer(status_reply(500, "sorry"));
    EXPECT_EQ(http_get(kUrl, &out), 0);
    EXPECT_STREQ(out, "sorry");
    EXPECT_EQ(curl_http_fail_count, 0u);
    EXPECT_EQ(logged(), "");
}

TEST_F(CurlHttpTest, FollowsNoRedirect) {
    answer(world::redirect_reply("/elsewhere"));
    EXPECT_EQ(http_get(kUrl, &out), 0);
    EXPECT_EQ(local_service->requests().size(), 1u);
}

TEST_F(CurlHttpTest, NeverReadsStandardInput) {
    world::write_file("/tmp/input", "typed");
    const Redirected input(0, "/tmp/input", O_RDONLY);
    EXPECT_EQ(http_post(kUrl, nullptr, nullptr), 0);
    EXPECT_EQ(http_patch(kUrl, nullptr, nullptr), 0);
    EXPECT_EQ(local_service->requests().size(), 2u) << "no place for the reply is needed";
    for (const world::Request &request : local_service->requests()) {
        EXPECT_EQ(request.body, "");
        EXPECT_EQ(request.header("Content-Length"), "0");
        EXPECT_EQ(request.header("Transfer-Encoding"), "");
    }
}

TEST_F(CurlHttpTest, LogsAndCountsAnUnreachableService) {
    local_service.reset();
    char *reply = &untouched;
    EXPECT_EQ(http_get(kUrl, &reply), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(reply, nullptr);
    EXPECT_EQ(http_post(kUrl, "b", nullptr), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(logged(),
              "\ncurl_http 1318 : method GET fail error 7\n\n"
              "\ncurl_http 1318 : method POST fail error 7\n\n");
    g_console_debug = 0;
    http_get(kUrl, nullptr);
    EXPECT_EQ(curl_http_fail_count, 3u);
    EXPECT_EQ(logged(), "");
}

TEST_F(CurlHttpTest, NeverRetries) {
    answer(fault_reply(Fault::Kind::garbage));
    EXPECT_NE(http_get(kUrl, nullptr), 0);
    EXPECT_EQ(local_service->requests().size(), 1u);
}

TEST_F(CurlHttpTest, HandsOverWhatArrivedOfABrokenReply) {
    Reply reply = json_reply("0123456789");
    reply.fault = {Fault::Kind::truncate, 4};
    answer(reply);
    EXPECT_EQ(http_get(kUrl, &out), CURLE_PARTIAL_FILE);
    EXPECT_STREQ(out, "0123");
    EXPECT_EQ(logged(), "\ncurl_http 1318 : method GET fail error 18\n\n");
    EXPECT_EQ(http_get(kUrl, nullptr), CURLE_PARTIAL_FILE) << "the sanitizer sees it released";
    EXPECT_EQ(curl_http_fail_count, 2u);
}

TEST_F(CurlHttpTest, TheHookTakesAnyHandle) {
    curl_post_transfer_hook(nullptr);
    EXPECT_EQ(logged(), "");
}

}  // namespace
