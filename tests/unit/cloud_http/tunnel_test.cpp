#include <curl/curl.h>

#include <algorithm>

#include "cloud_http/proxy.h"
#include "cloud_http_fixture.h"
#include "testing/daemon.h"

namespace {

// Both requests, which the local service sends through a proxy on 127.0.0.1:3128.
class TunnelTest : public UploadTest {
  protected:
    explicit TunnelTest(const world::ServerSetup &setup = world::tls_on(443, {"tfa.test"}))
        : cloud(setup) {
        world::add_host("tfa.test");
        world::authority().write_client_files(world::kDeviceDir);
        publish_proxy(R"("enable":true,"proxyServer":"127.0.0.1","proxyServerPort":3128)");
        ask_at("https://tfa.test/kdumps");
        url = "https://tfa.test/put";
        answer_both(cloud);
    }

    ScriptedServer cloud;
};

// The proxy is a real one that logs each request it gets.
class RealTunnelTest : public TunnelTest {
  protected:
    using TunnelTest::TunnelTest;

    static long connects_to(const std::string &place) {
        const std::vector<std::string> targets = world::proxied_targets();
        return std::count(targets.begin(), targets.end(), place);
    }

    world::Daemon proxy = world::start_tinyproxy();
};

TEST_F(RealTunnelTest, CarriesBothRequests) {
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(connects_to("tfa.test:443"), 1);
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(connects_to("tfa.test:443"), 2);
    EXPECT_EQ(cloud.requests().size(), 2u);
    const std::string log = logged();
    for (const std::string function : {"api_TFA_post_data 289", "api_TFA_post_FILE 426"}) {
        EXPECT_EQ(count_of(log, "\n" + function + " g_proxy_server \"127.0.0.1:3128\"\n\n"), 1);
    }
    EXPECT_STREQ(g_proxy_server, "127.0.0.1:3128");
}

class PlainTunnelTest : public RealTunnelTest {
  protected:
    PlainTunnelTest() : RealTunnelTest(plain()) {}
};

TEST_F(PlainTunnelTest, IsATunnelToo) {
    ask_at("http://127.0.0.1:8080/kdumps");
    url = "http://127.0.0.1:8080/put";
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(connects_to("127.0.0.1:8080"), 2);
}

TEST_F(RealTunnelTest, IsNotUsedOnceSwitchedOff) {
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    publish_proxy(R"("enable":false)");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(cloud.requests().size(), 3u);
    EXPECT_EQ(connects_to("tfa.test:443"), 1);
    EXPECT_EQ(count_of(logged(), " g_proxy_server "), 1);
}

// The text of the last good answer stays, but is not used.
TEST_F(RealTunnelTest, IsNotUsedWhileTheLocalServiceIsAway) {
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    local_service.reset();
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(connects_to("tfa.test:443"), 1);
    EXPECT_STREQ(g_proxy_server, "127.0.0.1:3128");
}

TEST_F(TunnelTest, ToNobodyIsAFailedTransfer) {
    expect_both_to_fail_with(CURLE_COULDNT_CONNECT);
    EXPECT_TRUE(cloud.requests().empty());
}

TEST_F(TunnelTest, ThatIsRefusedIsAFailedTransfer) {
    ScriptedServer proxy(plain(3128));
    proxy.on("*", {status_reply(403)});
    expect_both_to_fail_with(CURLE_RECV_ERROR);
    EXPECT_EQ(proxy.asked(), std::vector<std::string>(2, "CONNECT tfa.test:443"));
    EXPECT_EQ(local_service->requests().size(), 2u) << "the local service is not behind it";
}

}  // namespace
