// Requests without memory, handles or lists.
#include <curl/curl.h>
#include <openssl/crypto.h>

#include <cstdlib>
#include <cstring>

#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_http/proxy.h"
#include "cloud_http_fixture.h"
#include "testing/call_trace.h"
#include "testing/failing_memory.h"

namespace {

constexpr const char *kThing = "http://127.0.0.1:8000/api/thing";
const std::string kNoMemoryLog = "cannot allocate buffer for output\n";

template <size_t Size>
int is_of(const MemoryRequest *request) {
    return request->size == Size ? 1 : 0;
}

int is_of_a_reply(const MemoryRequest *request) { return request->is_realloc; }

std::vector<size_t> reply_sizes;

int is_noted(const MemoryRequest *request) {
    if (request->is_realloc != 0) {
        reply_sizes.push_back(request->size);
    }
    return request->is_realloc;
}

CURL *no_handle() { return nullptr; }

class AllocationTest : public UploadTest {
  protected:
    AllocationTest() {
        local_service->on("/api/thing", {json_reply("{\"a\":1}")});
        ask_at(std::string(kCloud) + "/kdumps");
        reply_sizes.clear();
    }
    ~AllocationTest() override {
        calls::answer<calls::set_option>() = nullptr;
        calls::answer<curl_easy_init>() = nullptr;
        calls::answer<curl_slist_append>() = nullptr;
        calls::answer<OSSL_LIB_CTX_get0_global_default>() = nullptr;
    }

    static size_t write(HttpReply &reply, std::string text) {
        return http_reply_write(text.data(), 1, text.size(), &reply);
    }

    static void refuse(CURLoption refused, CURLcode code) {
        calls::answer<calls::set_option>() = [=](CURL *, CURLoption option,
                                                 calls::OptionValue) -> std::optional<CURLcode> {
            return option == refused ? std::optional(code) : std::nullopt;
        };
    }

    ScriptedServer cloud{plain()};
};

TEST_F(AllocationTest, AReplyGrowsByExactlyItsChunks) {
    const MemoryWatch watch(0, MEMORY_FAILS_ONCE, is_noted);
    HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
    write(reply, "12345");
    write(reply, "678");
    write(reply, "");
    EXPECT_EQ(reply_sizes, (std::vector<size_t>{6, 9, 9}));
    EXPECT_EQ(memory_live(), 1u);
    std::free(reply.data);
    EXPECT_EQ(memory_live(), 0u);
}

TEST_F(AllocationTest, AReplyThatCannotBeginOrGrowIsReleased) {
    for (const size_t failing : {1u, 2u}) {
        const MemoryWatch watch(failing, MEMORY_FAILS_ONWARD, is_of_a_reply);
        HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
        EXPECT_EQ(write(reply, "12345"), failing == 1 ? 0u : 5u);
        EXPECT_EQ(write(reply, "678"), 0u);
        EXPECT_EQ(memory_live(), 0u);
        EXPECT_EQ(reply.data, nullptr);
        EXPECT_EQ(reply.size, 0u);
        EXPECT_EQ(reply.mode, 2u);
        EXPECT_EQ(logged(), failing == 1 ? kNoMemoryLog + kNoMemoryLog : kNoMemoryLog);
    }
}

// The size is a 32-bit number: bytes and terminator may add up to its largest value, not beyond.
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
        reply_sizes.clear();
        HttpReply reply = {HTTP_REPLY_MEMORY, static_cast<char *>(std::malloc(1)), row.size};
        const MemoryWatch watch(1, MEMORY_FAILS_ONWARD, is_noted);
        EXPECT_EQ(write(reply, std::string(row.more, 'x')), 0u);
        EXPECT_EQ(reply_sizes, row.asked);
        EXPECT_EQ(reply.data, nullptr);
        EXPECT_EQ(reply.size, 0u);
    }
}

TEST_F(AllocationTest, ALocalRequestEndsWithAWriteError) {
    const MemoryWatch watch(1, MEMORY_FAILS_ONWARD, is_of_a_reply);
    char untouched = 'u';
    char *out = &untouched;
    EXPECT_EQ(http_get(kThing, &out), CURLE_WRITE_ERROR);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(logged(), kNoMemoryLog + "\ncurl_http 1318 : method GET fail error 23\n\n");
    EXPECT_EQ(curl_http_fail_count, 1u);
}

TEST_F(AllocationTest, ALocalRequestReleasesTheReplyThatNobodyWants) {
    const MemoryWatch watch(0, MEMORY_FAILS_ONCE, is_noted);
    EXPECT_EQ(http_get(kThing, nullptr), 0);
    EXPECT_EQ(reply_sizes.size(), 1u);
    EXPECT_EQ(memory_live(), 0u);
    char *out = nullptr;
    EXPECT_EQ(http_get(kThing, &out), 0);
    EXPECT_EQ(memory_live(), 1u);
    std::free(out);
}

TEST_F(AllocationTest, ALocalRequestFailsWithoutAHandle) {
    calls::answer<curl_easy_init>() = no_handle;
    char untouched = 'u';
    char *out = &untouched;
    EXPECT_EQ(http_post(kThing, "b", &out), CURLE_BAD_FUNCTION_ARGUMENT);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(curl_http_fail_count, 1u);
    EXPECT_EQ(c_cloud_proxy_get(g_proxy_server), -1);
}

TEST_F(AllocationTest, CloudRequestsFailWithoutAHandle) {
    calls::answer<curl_easy_init>() = no_handle;
    expect_both_to_fail_with(CURLE_BAD_FUNCTION_ARGUMENT);
    EXPECT_EQ(count_of(logged(), "TFA curl error : 43\n"), 1);
}

TEST_F(AllocationTest, RepliesAreReleasedBeforeEachRequestReturns) {
    const char *const replies[] = {"no JSON", R"({"no":"message"})", R"({"message":"no"})",
                                   R"({"message":"OK"})", R"({"message":"OK","upload_url":"u"})"};
    for (const char *reply : replies) {
        cloud.on("/kdumps", {json_reply(reply)});
        const MemoryWatch watch;
        api_TFA_post_data("{}");
        forget_upload_url();
        EXPECT_EQ(memory_live(), 0u) << reply;
    }
    for (const int status : {200, 500}) {
        cloud.on("/put", {status_reply(status, "reply")});
        world::write_file(kDump, kContent);
        const MemoryWatch watch;
        EXPECT_NE(upload(0), 1);
        EXPECT_EQ(memory_live(), 0u) << status;
    }
}

TEST_F(AllocationTest, TheUrlThatCannotBeKeptIsAnError) {
    const std::string upload_url(4321, 'u');
    cloud.on("/kdumps", {json_reply(R"({"message":"OK","upload_url":")" + upload_url + "\"}")});
    {
        const MemoryWatch watch(1, MEMORY_FAILS_ONWARD, is_of<4322>);
        EXPECT_EQ(api_TFA_post_data("{}"), -1);
    }
    EXPECT_EQ(g_upload_url, nullptr);
    EXPECT_THAT(logged(), testing::EndsWith("api_TFA_post_data 340 url_size 4321 \n\n"));
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(g_upload_url, upload_url);
}

struct Setting : NamedRow {
    CURLoption option;
};

class OptionWithoutMemory : public AllocationTest, public testing::WithParamInterface<Setting> {
  protected:
    OptionWithoutMemory() {
        publish_proxy(R"("enable":true,"proxyServer":"127.0.0.1","proxyServerPort":9)");
        std::memcpy(g_curl_dns_server, "127.0.0.1", 10);
        g_detect_dns = 1;
        cloud.on("*", {json_reply(R"({"message":"OK"})")});
    }

    static int calls_of(const std::string &lines, const std::string &call) {
        return count_of(trace::of_handle(lines, 1), call + "\n");
    }
};

// A request with an option missing would be another request.
TEST_P(OptionWithoutMemory, MeansNoRequest) {
    refuse(GetParam().option, CURLE_OUT_OF_MEMORY);
    trace::start();
    api_TFA_post_data("{}");
    const std::string lines = trace::stop();
    EXPECT_EQ(calls_of(lines, "perform into {2, null, 0}"), 0);
    EXPECT_EQ(calls_of(lines, "hook"), 1);
    EXPECT_EQ(calls_of(lines, "cleanup"), 1);
    EXPECT_TRUE(cloud.requests().empty());
    EXPECT_THAT(logged(), testing::EndsWith("TFA curl error : 27\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Of, OptionWithoutMemory,
    testing::Values(Setting{"Url", CURLOPT_URL}, Setting{"DnsServers", CURLOPT_DNS_SERVERS},
                    Setting{"Method", CURLOPT_CUSTOMREQUEST},
                    Setting{"Certificate", CURLOPT_SSLCERT}, Setting{"Key", CURLOPT_SSLKEY},
                    Setting{"Body", CURLOPT_POSTFIELDS}, Setting{"Headers", CURLOPT_HTTPHEADER},
                    Setting{"Proxy", CURLOPT_PROXY}),
    RowName());

TEST_F(AllocationTest, ALocalRequestWithoutItsMethodIsNotSent) {
    refuse(CURLOPT_CUSTOMREQUEST, CURLE_OUT_OF_MEMORY);
    EXPECT_EQ(http_patch(kThing, "b", nullptr), CURLE_OUT_OF_MEMORY);
    EXPECT_TRUE(local_service->requests().empty());
    EXPECT_EQ(logged(), "\ncurl_http 1318 : method PATCH fail error 27\n\n");
    EXPECT_EQ(curl_http_fail_count, 1u);
}

// libcurl would fault in the handshake.
TEST_F(AllocationTest, NothingIsSentToTheCloudWhenOpensslHasNotStarted) {
    calls::answer<OSSL_LIB_CTX_get0_global_default>() = [] { return nullptr; };
    expect_both_to_fail_with(CURLE_OUT_OF_MEMORY);
    EXPECT_TRUE(cloud.requests().empty());
}

TEST_F(AllocationTest, AnUploadWithoutItsHeaderListIsNotSent) {
    calls::answer<curl_slist_append>() = [](curl_slist *, const char *) { return nullptr; };
    EXPECT_EQ(upload(0), CURLE_OUT_OF_MEMORY);
    EXPECT_TRUE(cloud.requests().empty());
    EXPECT_TRUE(world::exists(kDump));
    EXPECT_THAT(logged(),
                testing::EndsWith("api_TFA_post_FILE 439 curl_easy_perform() failed: " +
                                  std::string(curl_easy_strerror(CURLE_OUT_OF_MEMORY)) + "\n\n"));
}

// As by a libcurl that was built without the name server options.
TEST_F(AllocationTest, AnOptionThatLibcurlLacksIsNotInEffect) {
    cloud.on("/kdumps", {json_reply(R"({"message":"OK","upload_url":"u"})")});
    g_detect_dns = 1;
    std::memcpy(g_curl_dns_server, "127.0.0.1", 10);
    for (const CURLcode refusal :
         {CURLE_UNKNOWN_OPTION, CURLE_NOT_BUILT_IN, CURLE_BAD_FUNCTION_ARGUMENT}) {
        refuse(CURLOPT_DNS_SERVERS, refusal);
        EXPECT_EQ(api_TFA_post_data("{}"), 0);
        EXPECT_STREQ(g_upload_url, "u");
        forget_upload_url();
    }
}

}  // namespace
