#include <curl/curl.h>

#include <cstring>

#include "cloud_http/upload_url.h"
#include "testing/daemon.h"
#include "upload_fixture.h"

namespace {

constexpr const char *kFile = "/tmp/curlDNSFile";
constexpr const char *kResolver = "/etc/resolv.conf";

// A real DNS server on 127.0.0.1:53 that alone knows a host; the system's resolver is sent to an
// address where nobody answers.
class DnsServerTest : public UploadTest {
  protected:
    DnsServerTest() : resolver_(world::read_file(kResolver)) {
        world::write_file(kResolver, "nameserver 127.0.0.9\noptions timeout:1 attempts:1\n");
        const std::string endpoint = "http://only-there.test:8080/kdumps";
        endpoint.copy(KDUMPS_url, endpoint.size());
        url = "http://only-there.test:8080/put";
        cloud.on("POST /kdumps", {world::json_reply(R"({"message":"no"})")});
        cloud.on("PUT /put", {world::status_reply(200)});
        g_detect_dns = 1;
    }
    ~DnsServerTest() override { world::write_file(kResolver, resolver_); }

    world::ScriptedServer cloud{plain_cloud()};
    world::Daemon server = world::start_dnsmasq({{"only-there.test", "127.0.0.1"}});

  private:
    const std::string resolver_;
};

TEST_F(DnsServerTest, IsAskedWhenTheFileNamesIt) {
    world::write_file(kFile, "127.0.0.1");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(cloud.requests().size(), 1u);
    EXPECT_EQ(cloud.requests().at(0).header("Host"), "only-there.test:8080");
}

TEST_F(DnsServerTest, StaysTheSameForTheWholeProcess) {
    world::write_file(kFile, "127.0.0.1");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    world::write_file(kFile, "127.0.0.9");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
}

TEST_F(DnsServerTest, IsNotAskedWithoutTheFile) {
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_COULDNT_RESOLVE_HOST);
    EXPECT_THAT(console.text_without_stamps(), testing::EndsWith("TFA curl error : 6\n"));
}

TEST_F(DnsServerTest, IsNotAskedWithDetectionOff) {
    world::write_file(kFile, "127.0.0.1");
    g_detect_dns = 0;
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_COULDNT_RESOLVE_HOST);
}

TEST_F(DnsServerTest, IsNotAskedForUploads) {
    world::write_file(kFile, "127.0.0.1");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(upload(0), CURLE_COULDNT_RESOLVE_HOST);
}

// The library refuses a list that ends in a newline; the transfer then goes on as if unpinned.
TEST_F(DnsServerTest, IsNotAskedWhenALineEndFollowsItsAddress) {
    world::write_file(kFile, "127.0.0.1\n");
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_COULDNT_RESOLVE_HOST);
    EXPECT_STREQ(g_curl_dns_server, "127.0.0.1\n");
}

}  // namespace
