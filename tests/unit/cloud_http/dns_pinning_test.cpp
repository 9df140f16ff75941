// Which name server options an upload-URL request gets, and when the resolver is set up anew.
#include <curl/curl.h>
#include <resolv.h>

#include <cstring>

#include "cloud_http_fixture.h"
#include "testing/call_trace.h"
#include "testing/calls.h"
#include "testing/spawn.h"

namespace {

using testing::EndsWith;

const std::string kOpened = "open /tmp/curlDNSFile r\n";
const std::string kRead = kOpened + "close /tmp/curlDNSFile\n";
const std::string kNoCache = "1 DNS_CACHE_TIMEOUT 0\n";
const std::string kUnresolved = "log \"TFA curl error : 6\\n\"\n";

class DnsPinningTest : public UploadTest {
  protected:
    DnsPinningTest() {
        ask_at(kNobody);
        g_detect_dns = 1;
    }

    static std::string whole_trace() {
        trace::start();
        api_TFA_post_data("{}");
        return trace::stop();
    }

    // The calls between the URL and the method: the place of the name servers.
    static std::string pinning() {
        const std::string all = whole_trace();
        const size_t begin = all.find('\n', all.find("1 URL ")) + 1;
        const size_t end = all.find("1 CUSTOMREQUEST");
        EXPECT_EQ(count_of(all.substr(end), " DNS_"), 0);
        return all.substr(begin, end - begin);
    }

    static std::string servers(const std::string &list) {
        return "1 DNS_SERVERS \"" + list + "\"\n";
    }
};

TEST_F(DnsPinningTest, IsOffWithoutTheFlag) {
    g_detect_dns = 0;
    world::write_file(kDnsFile, "127.0.0.1");
    EXPECT_EQ(pinning(), "");
    std::strcpy(g_curl_dns_server, "127.0.0.1");
    EXPECT_EQ(pinning(), "");
}

TEST_F(DnsPinningTest, TakesTheServersOfTheFile) {
    for (const uint32_t flag : {1u, 2u, UINT32_MAX}) {
        g_detect_dns = flag;
        g_curl_dns_server[0] = '\0';
        world::write_file(kDnsFile, "127.0.0.1");
        EXPECT_EQ(pinning(), kRead + servers("127.0.0.1"));
    }
}

TEST_F(DnsPinningTest, ReadsTheFileOnceAndKeepsTheLineEnd) {
    world::write_file(kDnsFile, "127.0.0.1\n127.0.0.2\n");
    EXPECT_EQ(pinning(), kRead + servers("127.0.0.1\\n"));
    world::write_file(kDnsFile, "10.0.0.1\n");
    EXPECT_EQ(pinning(), servers("127.0.0.1\\n"));
    EXPECT_EQ(pinning(), servers("127.0.0.1\\n"));
}

TEST_F(DnsPinningTest, LogsAMissingFileAtEveryCallAndFindsItLater) {
    const std::string missing =
        kOpened + "log \"\\n\\nReadCurlDnsFile 103 : get Curl info DNS server failed\\n\\n\"\n";
    EXPECT_EQ(pinning(), missing + kNoCache);
    EXPECT_EQ(pinning(), missing + kNoCache);
    world::write_file(kDnsFile, "127.0.0.1");
    EXPECT_EQ(pinning(), kRead + servers("127.0.0.1"));
}

TEST_F(DnsPinningTest, TakesAnEmptyFileForNone) {
    for (const std::string &content : {std::string(), std::string(1, '\0')}) {
        world::write_file(kDnsFile, content);
        EXPECT_EQ(pinning(), kRead + kNoCache);
    }
}

TEST_F(DnsPinningTest, HasNoPartInUploads) {
    world::write_file(kDnsFile, "127.0.0.1");
    url = "http://nowhere.test/";
    trace::start();
    EXPECT_EQ(upload(1), CURLE_COULDNT_RESOLVE_HOST);
    g_detect_dns = 0;
    EXPECT_EQ(upload(1), CURLE_COULDNT_RESOLVE_HOST);
    const std::string all = trace::stop();
    for (const char *part : {" DNS_", kDnsFile, "resolver init"}) {
        EXPECT_EQ(count_of(all, part), 0) << part;
    }
    EXPECT_STREQ(g_curl_dns_server, "");
}

TEST_F(DnsPinningTest, SetsTheResolverUpAnewAfterAnUnknownHost) {
    g_detect_dns = 0;
    ask_at("http://nowhere.test/");
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_THAT(whole_trace(), EndsWith("list free \"Content-Type: application/json\"\n"
                                            "resolver init\n" +
                                            kUnresolved));
    }
}

TEST_F(DnsPinningTest, LeavesTheResolverAloneOnceItFailed) {
    ask_at("http://nowhere.test/");
    g_detect_dns = 0;
    const int renewals = world::run_apart([] {
        int count = 0;
        calls::answer<__res_init>() = [&] {
            ++count;
            return -1;
        };
        for (int attempt = 0; attempt < 3; ++attempt)
            api_TFA_post_data("{}");
        return count;
    });
    EXPECT_EQ(renewals, 1);
}

TEST_F(DnsPinningTest, LeavesTheResolverAloneWhenPinnedAndAfterOtherFailures) {
    ask_at("http://nowhere.test/");
    std::string all = whole_trace();
    EXPECT_THAT(all, EndsWith(kUnresolved));
    EXPECT_EQ(count_of(all, "resolver init"), 0);
    g_detect_dns = 0;
    ask_at(kNobody);
    all = whole_trace();
    EXPECT_THAT(all, EndsWith("log \"TFA curl error : 7\\n\"\n"));
    EXPECT_EQ(count_of(all, "resolver init"), 0);
}

}  // namespace
