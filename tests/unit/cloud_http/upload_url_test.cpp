#include "cloud_http/upload_url.h"

#include <curl/curl.h>
#include <fcntl.h>

#include <cstdlib>
#include <cstring>

#include "cloud_http_fixture.h"

namespace {

using testing::EndsWith;

Reply text(const std::string &body) { return json_reply(body); }

class UploadUrlTest : public CloudHttpTest {
  protected:
    UploadUrlTest() {
        ask_at(std::string(kCloud) + "/dev/kdumps");
        cloud.on("*", {text(R"({"message":"OK"})")});
    }

    // The log of a request up to the transfer, then `rest`.
    static std::string log_with(const std::string &rest) {
        return "curl_slist_append(): Content-Type: application/json\n" + kNoProxyLog + rest;
    }

    ScriptedServer cloud{plain()};
};

struct Answer : NamedRow {
    Reply reply;
    int result;
    std::string log;
};

class UploadUrlAnswer : public UploadUrlTest, public testing::WithParamInterface<Answer> {};

TEST_P(UploadUrlAnswer, LeavesTheUrlAsItWas) {
    char *const old = strdup("old");
    g_upload_url = old;
    cloud.on("/dev/kdumps", {GetParam().reply});
    EXPECT_EQ(api_TFA_post_data("{}"), GetParam().result);
    EXPECT_EQ(g_upload_url, old);
    EXPECT_STREQ(old, "old");
    EXPECT_EQ(logged(), log_with(GetParam().log));
    EXPECT_EQ(cloud.requests().size(), 1u);
}

Answer transfer_error(const char *name, Fault::Kind kind, int code) {
    Reply reply = text(R"({"message":"OK","upload_url":"u"})");
    reply.fault = {kind, 5};
    return {name, reply, code, "TFA curl error : " + std::to_string(code) + "\n"};
}

INSTANTIATE_TEST_SUITE_P(
    Transfer, UploadUrlAnswer,
    testing::Values(transfer_error("Garbage", Fault::Kind::garbage, CURLE_UNSUPPORTED_PROTOCOL),
                    transfer_error("CutShort", Fault::Kind::truncate, CURLE_PARTIAL_FILE),
                    transfer_error("NoReply", Fault::Kind::drop_after_bytes, CURLE_GOT_NOTHING)),
    RowName());

Answer http_error(const char *name, int status) {
    return {name, status_reply(status, R"({"message":"OK","upload_url":"u"})"), status,
            "TFA http error : " + std::to_string(status) + "\n"};
}

INSTANTIATE_TEST_SUITE_P(Status, UploadUrlAnswer,
                         testing::Values(http_error("Created", 201), http_error("NoContent", 204),
                                         http_error("NotModified", 304),
                                         http_error("Forbidden", 403), http_error("NotFound", 404),
                                         http_error("ServerError", 500)),
                         RowName());

// A body, and how the log prints it; nothing when it is no document.
Answer body(const char *name, const std::string &body, int result,
            const std::string &printed = "") {
    return {name, text(body), result,
            printed.empty() ? "" : "reply from TFA : " + printed + "\n\n"};
}

std::string nested_objects() {
    std::string nested;
    for (int i = 0; i < 100000; ++i) {
        nested += "{\"a\":";
    }
    return nested;
}

INSTANTIATE_TEST_SUITE_P(
    Body, UploadUrlAnswer,
    testing::Values(
        Answer{"Empty", text(""), -1, "secret from TFA error\n\n"}, body("NotJson", "<html>", -1),
        body("Blank", " \n", -1), body("JsonCutShort", R"({"message":"OK")", -1),
        body("DeeplyNested", std::string(100000, '['), -1),
        body("DeeplyNestedObjects", nested_objects(), -1),
        body("NulAtTheStart", std::string("\0{\"message\":\"OK\"}", 17), -1),
        body("NulInTheText", std::string("{\"message\":\"O\0K\"}", 17), -1),
        body("NoMessage", R"({"upload_url":"u"})", -1, "{\n\t\"upload_url\":\t\"u\"\n}"),
        body("EmptyObject", "{}", -1, "{\n}"),
        body("MessageAsNumber", R"({"message":1})", -1, "{\n\t\"message\":\t1\n}"),
        body("MessageNull", R"({"message":null})", -1, "{\n\t\"message\":\tnull\n}"),
        body("MessageAsObject", R"({"message":{"message":"OK"}})", -1,
             "{\n\t\"message\":\t{\n\t\t\"message\":\t\"OK\"\n\t}\n}"),
        body("JustAnArray", R"([{"message":"OK"}])", -1, "[{\n\t\t\"message\":\t\"OK\"\n\t}]"),
        body("JustText", R"("OK")", -1, "\"OK\""), body("JustANumber", "200", -1, "200"),
        body("OkInOtherCase", R"({"message":"ok","upload_url":"u"})", 0,
             "{\n\t\"message\":\t\"ok\",\n\t\"upload_url\":\t\"u\"\n}"),
        body("OkWithABlank", R"({"message":"OK ","upload_url":"u"})", 0,
             "{\n\t\"message\":\t\"OK \",\n\t\"upload_url\":\t\"u\"\n}"),
        body("MessageEmpty", R"({"message":"","upload_url":"u"})", 0,
             "{\n\t\"message\":\t\"\",\n\t\"upload_url\":\t\"u\"\n}"),
        body("OkWithoutUrl", R"({"message":"OK"})", 0, "{\n\t\"message\":\t\"OK\"\n}"),
        body("OkWithUrlAsNumber", R"({"message":"OK","upload_url":7})", 0,
             "{\n\t\"message\":\t\"OK\",\n\t\"upload_url\":\t7\n}"),
        body("OkWithUrlNull", R"({"message":"OK","upload_url":null})", 0,
             "{\n\t\"message\":\t\"OK\",\n\t\"upload_url\":\tnull\n}")),
    RowName());

TEST_F(UploadUrlTest, PostsTheBodyAsItIs) {
    const std::string body = R"({"filename": "a %s \" b.txt"})";
    EXPECT_EQ(api_TFA_post_data(body.c_str()), 0);
    EXPECT_EQ(cloud.asked(), std::vector<std::string>{"POST /dev/kdumps " + body});
    const auto request = cloud.requests().at(0);
    EXPECT_EQ(count_of_headers(request, "content-type"), 1);
    EXPECT_EQ(request.header("Content-Type"), "application/json");
    EXPECT_EQ(g_upload_url, nullptr);
}

TEST_F(UploadUrlTest, ANullBodyIsEmptyAndNotStandardInput) {
    world::write_file("/tmp/input", "typed");
    const Redirected input(0, "/tmp/input", O_RDONLY);
    EXPECT_EQ(api_TFA_post_data(nullptr), 0);
    EXPECT_EQ(cloud.requests().at(0).body, "");
    EXPECT_EQ(cloud.requests().at(0).header("Content-Length"), "0");
}

TEST_F(UploadUrlTest, ReplacesTheUrlByACopyWithoutReleasingTheOldOne) {
    cloud.on("*", {text(R"({"message":"OK","upload_url":"https://s.test/a?b=%20c"})"),
                   text(R"({"message":"OK","upload_url":""})")});
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    char *const first = g_upload_url;
    EXPECT_STREQ(first, "https://s.test/a?b=%20c");
    EXPECT_EQ(logged(), log_with("reply from TFA : {\n\t\"message\":\t\"OK\",\n\t\"upload_url\":\t"
                                 "\"https://s.test/a?b=%20c\"\n}\n\n"
                                 "api_TFA_post_data 340 url_size 23 \n\n"
                                 "api_TFA_post_data 343 upload to url : https://s.test/a?b=%20c\n"
                                 "length 23\n"));
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_STREQ(g_upload_url, "") << "an empty one too";
    EXPECT_THAT(logged(), EndsWith("api_TFA_post_data 340 url_size 0 \n\n"
                                   "api_TFA_post_data 343 upload to url : \nlength 0\n"));
    EXPECT_STREQ(first, "https://s.test/a?b=%20c");
    std::free(first);
}

TEST_F(UploadUrlTest, TakesTheFirstOfEachMemberInAnyCase) {
    cloud.on("*", {text(R"({"Message":"OK","message":"no","UPLOAD_URL":"u","upload_url":"v"})")});
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_STREQ(g_upload_url, "u");
}

TEST_F(UploadUrlTest, IgnoresWhatFollowsTheDocument) {
    cloud.on("*", {text(R"({"message":"OK","upload_url":"u"} and more)"),
                   text(std::string("{\"message\":\"OK\"}\0\0", 18))});
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_STREQ(g_upload_url, "u");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
}

TEST_F(UploadUrlTest, TakesAReplyAndAUrlOfManyBytes) {
    const std::string url = "https://s.test/" + std::string(100000, 'u');
    const std::string padding(3 << 20, 'p');
    cloud.on("*",
             {text(R"({"message":"OK","pad":")" + padding + R"(","upload_url":")" + url + "\"}")});
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    ASSERT_NE(g_upload_url, nullptr);
    EXPECT_EQ(g_upload_url, url);
    const std::string log = logged();
    EXPECT_NE(log.find(padding), std::string::npos);
    EXPECT_THAT(log, EndsWith("upload to url : " + url + "\nlength 100015\n"));
}

TEST_F(UploadUrlTest, JudgesTheStatusAtTheEndOfRedirects) {
    cloud.on("/dev/kdumps", {world::redirect_reply("/two")});
    cloud.on("/two", {world::redirect_reply(std::string(kCloud) + "/three", 307)});
    cloud.on("/three", {text(R"({"message":"OK","upload_url":"u"})"), status_reply(403)});
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_STREQ(g_upload_url, "u");
    EXPECT_EQ(api_TFA_post_data("{}"), 403);
    EXPECT_EQ(cloud.requests().size(), 6u);
}

TEST_F(UploadUrlTest, FailsWithTheCodeOfARefusedConnectionOrOfNoUrl) {
    ask_at(kNobody);
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(logged(), log_with("TFA curl error : 7\n"));
    ask_at("");
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_URL_MALFORMAT);
    EXPECT_EQ(logged(), log_with("TFA curl error : 3\n"));
}

TEST_F(UploadUrlTest, GoesAheadWithoutTheLocalService) {
    local_service.reset();
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_THAT(logged(),
                testing::StartsWith("curl_slist_append(): Content-Type: application/json\n"
                                    "\ncurl_http 1318 : method GET fail error 7\n\n"
                                    "\n\nc_cloud_proxy_get 23\n\n\n"
                                    "reply from TFA : {"));
}

TEST_F(UploadUrlTest, WritesNothingToStandardError) {
    {
        const Redirected errors(2, "/tmp/errors", O_WRONLY | O_CREAT);
        api_TFA_post_data("{}");
    }
    EXPECT_EQ(world::read_file("/tmp/errors"), "");
}

// Read before the first test.
const bool g_all_empty = KDUMPS_url[0] == '\0' && g_upload_url == nullptr && g_detect_dns == 0 &&
                         g_curl_dns_server[0] == '\0';

TEST(UploadUrlData, IsEmptyAtStartAndHasItsSizes) {
    EXPECT_TRUE(g_all_empty);
    EXPECT_EQ(sizeof KDUMPS_url, 1024u);
    EXPECT_EQ(sizeof g_curl_dns_server, 64u);
}

}  // namespace
