#include <curl/curl.h>

#include <algorithm>
#include <cstring>

#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "testing/daemon.h"
#include "upload_fixture.h"

namespace {

constexpr const char *kProxyOn =
    R"("enable":true,"proxyServer":"127.0.0.1","proxyServerPort":3128)";

// A real proxy on 127.0.0.1:3128 that logs each request it gets.
class TunnelTest : public UploadTest {
  protected:
    TunnelTest() {
        world::add_host("tfa.test");
        point_at("https://tfa.test");
        world::authority().write_client_files(world::kDeviceDir);
        publish_proxy(kProxyOn);
    }

    void point_at(const std::string &server) {
        const std::string endpoint = server + "/kdumps";
        endpoint.copy(KDUMPS_url, endpoint.size());
        KDUMPS_url[endpoint.size()] = '\0';
        url = server + "/put";
    }

    static void answer(world::ScriptedServer &cloud) {
        cloud.on("POST /kdumps", {world::json_reply(R"({"message":"no"})")});
        cloud.on("PUT /put", {world::status_reply(200)});
    }

    static long connects_to(const std::string &place) {
        const std::vector<std::string> targets = world::proxied_targets();
        return std::count(targets.begin(), targets.end(), place);
    }
};

class RealTunnelTest : public TunnelTest {
  protected:
    world::Daemon proxy = world::start_tinyproxy();
};

TEST_F(RealTunnelTest, CarriesBothRequests) {
    world::ScriptedServer cloud(world::tls_on(443, {"tfa.test"}));
    answer(cloud);
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(connects_to("tfa.test:443"), 1);
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(connects_to("tfa.test:443"), 2);
    EXPECT_EQ(cloud.requests().size(), 2u);
    const std::string log = console.text_without_stamps();
    for (const char *function : {"api_TFA_post_data 289", "api_TFA_post_FILE 426"})
        EXPECT_EQ(
            count_of(log, "\n" + std::string(function) + " g_proxy_server \"127.0.0.1:3128\"\n\n"),
            1);
    EXPECT_STREQ(g_proxy_server, "127.0.0.1:3128");
}

TEST_F(RealTunnelTest, IsATunnelWithoutTlsToo) {
    world::ScriptedServer cloud(plain_cloud());
    answer(cloud);
    point_at("http://127.0.0.1:8080");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(connects_to("127.0.0.1:8080"), 2);
}

TEST_F(RealTunnelTest, IsNotUsedOnceSwitchedOff) {
    world::ScriptedServer cloud(world::tls_on(443, {"tfa.test"}));
    answer(cloud);
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    publish_proxy(R"("enable":false)");
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(cloud.requests().size(), 3u);
    EXPECT_EQ(connects_to("tfa.test:443"), 1);
    EXPECT_EQ(count_of(console.text_without_stamps(), " g_proxy_server "), 1);
}

// The text of the last good answer stays, but is not used.
TEST_F(RealTunnelTest, IsNotUsedWhileTheLocalServiceIsAway) {
    world::ScriptedServer cloud(world::tls_on(443, {"tfa.test"}));
    answer(cloud);
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    stop_local_service();
    EXPECT_EQ(api_TFA_post_data("{}"), 0);
    EXPECT_EQ(connects_to("tfa.test:443"), 1);
    EXPECT_STREQ(g_proxy_server, "127.0.0.1:3128");
}

TEST_F(TunnelTest, ToNobodyIsAFailedTransfer) {
    world::ScriptedServer cloud(world::tls_on(443, {"tfa.test"}));
    answer(cloud);
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(upload(0), CURLE_COULDNT_CONNECT);
    EXPECT_TRUE(world::exists(kDump));
    EXPECT_TRUE(cloud.requests().empty());
}

TEST_F(TunnelTest, ThatIsRefusedIsAFailedTransfer) {
    world::ServerSetup setup;
    setup.port = 3128;
    world::ScriptedServer proxy(setup);
    proxy.on("*", {world::status_reply(403)});
    EXPECT_EQ(api_TFA_post_data("{}"), CURLE_RECV_ERROR);
    EXPECT_EQ(upload(0), CURLE_RECV_ERROR);
    ASSERT_EQ(proxy.requests().size(), 2u);
    EXPECT_EQ(proxy.requests()[0].method, "CONNECT");
    EXPECT_EQ(proxy.requests()[0].target, "tfa.test:443");
    EXPECT_TRUE(world::exists(kDump));
}

TEST_F(TunnelTest, IsNotForTheLocalService) {
    world::ServerSetup setup;
    setup.port = 3128;
    world::ScriptedServer proxy(setup);
    api_TFA_post_data("{}");
    EXPECT_EQ(local_service->requests().size(), 1u);
    for (const world::Request &request : proxy.requests())
        EXPECT_EQ(request.method, "CONNECT");
}

}  // namespace
