#include <curl/curl.h>

#include "cloud_http_fixture.h"
#include "testing/daemon.h"

namespace {

constexpr const char *kResolver = "/etc/resolv.conf";

// A real DNS server on 127.0.0.1:53 that alone knows a host; the system's resolver asks an address
// where nobody answers.
class DnsServerTest : public CloudHttpTest {
  protected:
    DnsServerTest() : resolver_(world::read_file(kResolver)) {
        world::write_file(kResolver, "nameserver 127.0.0.9\noptions timeout:1 attempts:1\n");
        ask_at("http://only-there.test:8080/kdumps");
        cloud.on("POST /kdumps", {json_reply(R"({"message":"no"})")});
        g_detect_dns = 1;
    }
    ~DnsServerTest() override { world::write_file(kResolver, resolver_); }

    ScriptedServer cloud{plain()};
    world::Daemon server = world::start_dnsmasq({{"only-there.test", "127.0.0.1"}});

  private:
    const std::string resolver_;
};

TEST_F(DnsServerTest, IsAskedWhenTheFileNamesIt) {
    world::write_file(kDnsFile, "127.0.0.1");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(cloud.requests().at(0).header("Host"), "only-there.test:8080");
}

// The library refuses a list that ends in a newline; the transfer then goes on as if unpinned.
TEST_F(DnsServerTest, IsNotAskedWhenALineEndFollowsItsAddress) {
    world::write_file(kDnsFile, "127.0.0.1\n");
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_COULDNT_RESOLVE_HOST);
    EXPECT_STREQ(g_curl_dns_server, "127.0.0.1\n");
    EXPECT_THAT(logged(), testing::EndsWith("TFA curl error : 6\n"));
}

}  // namespace
