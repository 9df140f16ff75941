// Which name server options an upload-URL request gets, and when the resolver is set up anew.
#include <curl/curl.h>

#include <cstring>

#include "cloud_http/upload_url.h"
#include "testing/call_trace.h"
#include "upload_fixture.h"

namespace {

constexpr const char *kFile = "/tmp/curlDNSFile";
constexpr const char *kNoFileLog =
    "log \"\\n\\nReadCurlDnsFile 103 : get Curl info DNS server failed\\n\\n\"\n";
constexpr const char *kNoCache = "1 DNS_CACHE_TIMEOUT 0\n";
constexpr const char *kUnresolved = "log \"TFA curl error : 6\\n\"\n";

class DnsPinningTest : public UploadTest {
  protected:
    DnsPinningTest() { ask_at(kNobody); }

    static void ask_at(const std::string &url) {
        url.copy(KDUMPS_url, url.size());
        KDUMPS_url[url.size()] = '\0';
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

    static std::string read_and_pinned(const std::string &servers) {
        return std::string("open ") + kFile + " r\nclose " + kFile + "\n1 DNS_SERVERS \"" +
               servers + "\"\n";
    }
};

TEST_F(DnsPinningTest, IsOffWithoutTheFlag) {
    world::write_file(kFile, "127.0.0.1");
    EXPECT_EQ(pinning(), "");
    std::memcpy(g_curl_dns_server, "127.0.0.1", 10);
    EXPECT_EQ(pinning(), "");
}

TEST_F(DnsPinningTest, TakesTheServersOfTheFile) {
    for (const uint32_t flag : {1u, 2u, UINT32_MAX}) {
        g_detect_dns = flag;
        std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
        world::write_file(kFile, "127.0.0.1");
        EXPECT_EQ(pinning(), read_and_pinned("127.0.0.1"));
    }
}

TEST_F(DnsPinningTest, KeepsTheLineEnd) {
    g_detect_dns = 1;
    world::write_file(kFile, "127.0.0.1\n127.0.0.2\n");
    EXPECT_EQ(pinning(), read_and_pinned("127.0.0.1\\n"));
}

TEST_F(DnsPinningTest, ReadsTheFileOnce) {
    g_detect_dns = 1;
    world::write_file(kFile, "127.0.0.1\n");
    pinning();
    world::write_file(kFile, "10.0.0.1\n");
    EXPECT_EQ(pinning(), "1 DNS_SERVERS \"127.0.0.1\\n\"\n");
    EXPECT_EQ(pinning(), "1 DNS_SERVERS \"127.0.0.1\\n\"\n");
}

TEST_F(DnsPinningTest, LogsAMissingFileAtEveryCall) {
    g_detect_dns = 1;
    const std::string expected = std::string("open ") + kFile + " r\n" + kNoFileLog + kNoCache;
    EXPECT_EQ(pinning(), expected);
    EXPECT_EQ(pinning(), expected);
}

TEST_F(DnsPinningTest, FindsAFileThatComesLater) {
    g_detect_dns = 1;
    pinning();
    world::write_file(kFile, "127.0.0.1");
    EXPECT_EQ(pinning(), read_and_pinned("127.0.0.1"));
}

TEST_F(DnsPinningTest, TakesAnEmptyFileForNone) {
    g_detect_dns = 1;
    for (const std::string &content : {std::string(), std::string(1, '\0')}) {
        world::write_file(kFile, content);
        EXPECT_EQ(pinning(), std::string("open ") + kFile + " r\nclose " + kFile + "\n" + kNoCache);
    }
}

TEST_F(DnsPinningTest, HasNoPartInUploads) {
    g_detect_dns = 1;
    world::write_file(kFile, "127.0.0.1");
    url = "http://nowhere.test/";
    trace::start();
    EXPECT_EQ(upload(1), CURLE_COULDNT_RESOLVE_HOST);
    g_detect_dns = 0;
    EXPECT_EQ(upload(1), CURLE_COULDNT_RESOLVE_HOST);
    const std::string all = trace::stop();
    EXPECT_EQ(count_of(all, " DNS_"), 0);
    EXPECT_EQ(count_of(all, kFile), 0);
    EXPECT_EQ(count_of(all, "resolver init"), 0);
}

TEST_F(DnsPinningTest, SetsTheResolverUpAnewAfterAnUnknownHost) {
    ask_at("http://nowhere.test/");
    for (int attempt = 0; attempt < 3; ++attempt)
        EXPECT_THAT(
            whole_trace(),
            testing::EndsWith("list free \"Content-Type: application/json\"\nresolver init\n" +
                              std::string(kUnresolved)));
}

TEST_F(DnsPinningTest, LeavesTheResolverAloneWhenPinned) {
    ask_at("http://nowhere.test/");
    g_detect_dns = 1;
    const std::string all = whole_trace();
    EXPECT_THAT(all, testing::EndsWith(kUnresolved));
    EXPECT_EQ(count_of(all, "resolver init"), 0);
}

TEST_F(DnsPinningTest, LeavesTheResolverAloneAfterOtherFailures) {
    const std::string all = whole_trace();
    EXPECT_THAT(all, testing::EndsWith("log \"TFA curl error : 7\\n\"\n"));
    EXPECT_EQ(count_of(all, "resolver init"), 0);
}

}  // namespace
