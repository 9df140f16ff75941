// The transfer options of the request to the cloud, in their order, and what follows the transfer.
#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_time_test.h"
#include "testing/call_trace.h"

namespace {

const std::string kBefore = "1 FAILONERROR 1\n1 ERRORBUFFER buffer\n";
const std::string kOfTls = "1 USE_SSL 3\n1 SSL_VERIFYPEER 1\n1 CAPATH \"/etc/ssl/certs/\"\n";
const std::string kBehind =
    "1 WRITEFUNCTION http_reply_write\n1 WRITEDATA record\n1 TIMEOUT 20\n1 CONNECTTIMEOUT 10\n";
const std::string kAfterwards = "1 hook\n1 info\n1 cleanup\nlog \"curl error (";

class CloudTimeOptions : public CloudTimeTest {
  protected:
    CloudTimeOptions() {
        trace::words.reply_writer = reinterpret_cast<const void *>(http_reply_write);
        calls::answer<curl_info_dump>() = [](CURL *) { return true; };
    }
    ~CloudTimeOptions() override { calls::answer<curl_info_dump>() = nullptr; }

    // A request that nobody answers makes these calls.
    static void expect_calls(const std::string &scheme, const std::string &options) {
        trace::start();
        EXPECT_EQ(api_get_time(scheme.c_str(), "127.0.0.1:9"), -1);
        const std::string url = scheme + "://127.0.0.1:9/time";
        EXPECT_THAT(trace::stop(), testing::StartsWith("log \"url: " + url + "\\n\"\n1 URL \"" +
                                                       url + "\"\n" + options + kAfterwards));
    }
};

TEST_F(CloudTimeOptions, PlainRequestSetsNothingOfTls) {
    for (const std::string scheme : {"http", "HTTPS", "Https", "https ", "httpsx", "http"}) {
        expect_calls(scheme, kBefore + kBehind);
    }
}

TEST_F(CloudTimeOptions, HttpsDemandsAndVerifies) {
    expect_calls("https", kBefore + kOfTls + kBehind + "1 SSL_SESSIONID_CACHE 0\n");
}

}  // namespace
