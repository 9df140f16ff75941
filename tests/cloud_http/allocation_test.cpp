// What happens when memory, handles or lists are not to be had.
#include <curl/curl.h>

#include <cstdint>
#include <cstdlib>

#include "call_trace.h"
#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "upload_fixture.h"

namespace {

constexpr const char *kThing = "http://127.0.0.1:8000/api/thing";
constexpr const char *kNoMemoryLog = "cannot allocate buffer for output\n";

class AllocationTest : public UploadTest {
  protected:
    AllocationTest() {
        local_service->on("/api/thing", {world::json_reply("{\"a\":1}")});
        const std::string endpoint = std::string(kCloud) + "/kdumps";
        endpoint.copy(KDUMPS_url, endpoint.size());
        trace::start();
    }
    ~AllocationTest() override {
        trace::faults = {};
        trace::stop();
    }

    static size_t write(HttpReply &reply, std::string text) {
        return http_reply_write(text.data(), 1, text.size(), &reply);
    }
};

TEST_F(AllocationTest, AReplyGrowsByExactlyItsChunks) {
    HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
    write(reply, "12345");
    write(reply, "678");
    write(reply, "");
    EXPECT_EQ(trace::reallocations(), (std::vector<size_t>{6, 9, 9}));
    EXPECT_EQ(trace::texts_held(), 1u);
    std::free(reply.data);
    EXPECT_EQ(trace::texts_held(), 0u);
}

TEST_F(AllocationTest, AReplyThatCannotGrowIsReleased) {
    HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
    write(reply, "12345");
    trace::faults.reallocation = true;
    EXPECT_EQ(write(reply, "678"), 0u);
    EXPECT_EQ(trace::texts_held(), 0u);
    EXPECT_EQ(reply.data, nullptr);
    EXPECT_EQ(reply.size, 0u);
    EXPECT_EQ(reply.mode, 2u);
    EXPECT_EQ(console.text_without_stamps(), kNoMemoryLog);
}

TEST_F(AllocationTest, AReplyThatCannotBeginStaysEmpty) {
    HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
    trace::faults.reallocation = true;
    EXPECT_EQ(write(reply, "678"), 0u);
    EXPECT_EQ(reply.data, nullptr);
    EXPECT_EQ(reply.size, 0u);
    EXPECT_EQ(console.text_without_stamps(), kNoMemoryLog);
}

// The size is a 32-bit number: bytes and terminator may come to its largest value, not beyond.
TEST_F(AllocationTest, AReplyIsNoLongerThanItsSizeCanTell) {
    const struct {
        uint32_t size;
        size_t more;
        std::vector<size_t> asked;
    } rows[] = {
        {UINT32_MAX - 1, 1, {UINT32_MAX}}, {UINT32_MAX - 1, 2, {}},
        {UINT32_MAX, 0, {UINT32_MAX}},     {UINT32_MAX, 1, {}},
        {UINT32_MAX - 5, 1000, {}},
    };
    for (const auto &row : rows) {
        trace::start();
        HttpReply reply = {HTTP_REPLY_MEMORY, static_cast<char *>(std::malloc(1)), row.size};
        trace::faults.reallocation = true;
        EXPECT_EQ(write(reply, std::string(row.more, 'x')), 0u);
        EXPECT_EQ(trace::reallocations(), row.asked);
        EXPECT_EQ(reply.data, nullptr);
        EXPECT_EQ(reply.size, 0u);
    }
}

TEST_F(AllocationTest, ALocalRequestEndsWithAWriteError) {
    trace::faults.reallocation = true;
    char untouched = 'u';
    char *out = &untouched;
    EXPECT_EQ(http_get(kThing, &out), CURLE_WRITE_ERROR);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(console.text_without_stamps(),
              std::string(kNoMemoryLog) + "\ncurl_http 1318 : method GET fail error 23\n\n");
    EXPECT_EQ(curl_http_fail_count, 1u);
}

TEST_F(AllocationTest, ALocalRequestReleasesTheReplyThatNobodyWants) {
    EXPECT_EQ(http_get(kThing, nullptr), 0);
    EXPECT_EQ(trace::reallocations().size(), 1u);
    EXPECT_EQ(trace::texts_held(), 0u);
    char *out = nullptr;
    EXPECT_EQ(http_get(kThing, &out), 0);
    EXPECT_EQ(trace::texts_held(), 1u);
    std::free(out);
}

TEST_F(AllocationTest, ALocalRequestFailsWithoutAHandle) {
    trace::faults.init = true;
    char untouched = 'u';
    char *out = &untouched;
    EXPECT_EQ(http_post(kThing, "b", &out), CURLE_BAD_FUNCTION_ARGUMENT);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(curl_http_fail_count, 1u);
    EXPECT_EQ(c_cloud_proxy_get(g_proxy_server), -1);
}

TEST_F(AllocationTest, CloudRequestsFailWithoutAHandle) {
    trace::faults.init = true;
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_BAD_FUNCTION_ARGUMENT);
    EXPECT_EQ(upload(0), CURLE_BAD_FUNCTION_ARGUMENT);
    EXPECT_TRUE(world::exists(kDump));
    EXPECT_EQ(count_of(console.text_without_stamps(), "TFA curl error : 43\n"), 1);
}

TEST_F(AllocationTest, RepliesAreReleasedBeforeEachRequestReturns) {
    world::ScriptedServer cloud(plain_cloud());
    const char *const replies[] = {"no JSON", R"({"no":"message"})", R"({"message":"no"})",
                                   R"({"message":"OK"})", R"({"message":"OK","upload_url":"u"})"};
    for (const char *reply : replies) {
        cloud.on("/kdumps", {world::json_reply(reply)});
        api_TFA_post_data("{}");
        EXPECT_EQ(trace::texts_held(), 0u) << reply;
    }
    for (const int status : {200, 500}) {
        cloud.on("/put", {world::status_reply(status, "reply")});
        world::write_file(kDump, kContent);
        EXPECT_NE(upload(0), 1);
        EXPECT_EQ(trace::texts_held(), 0u) << status;
    }
}

TEST_F(AllocationTest, TheUrlThatCannotBeKeptIsAnError) {
    world::ScriptedServer cloud(plain_cloud());
    const std::string upload_url(4321, 'u');
    cloud.on("/kdumps",
             {world::json_reply(R"({"message":"OK","upload_url":")" + upload_url + "\"}")});
    trace::faults.allocation_of_bytes = 4322;
    EXPECT_EQ(api_TFA_post_data("{}"), -1);
    EXPECT_EQ(g_upload_url, nullptr);
    EXPECT_THAT(console.text_without_stamps(),
                testing::EndsWith("api_TFA_post_data 340 url_size 4321 \n\n"));
    trace::faults = {};
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(g_upload_url, upload_url);
}

TEST_F(AllocationTest, ARequestGoesOutWithoutItsHeaderList) {
    world::ScriptedServer cloud(plain_cloud());
    cloud.on("/put", {world::status_reply(200)});
    trace::faults.header_list = true;
    EXPECT_EQ(upload(0), 0);
    ASSERT_EQ(cloud.requests().size(), 1u);
    EXPECT_EQ(cloud.requests()[0].body, kContent);
}

}  // namespace
