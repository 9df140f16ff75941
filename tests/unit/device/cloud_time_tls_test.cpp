// The cloud's time over TLS: the server is verified against /etc/ssl/certs/.
#include "cloud_time_test.h"

namespace {

class CloudTimeTls : public CloudTimeTest {
  protected:
    // Some builds of libcurl cannot do without a bundle; this one helps nobody.
    CloudTimeTls() {
        world::write_file("/etc/ssl/certs/ca-certificates.crt",
                          world::CertificateAuthority("bundle").identity().certificate_pem());
    }

    // One call to a cloud whose certificate, for that host, was issued by that authority.
    std::string ask(const world::CertificateAuthority &issuer, const char *certified_host = kHost) {
        world::ServerSetup setup = world::tls_on(443, {certified_host}, false);
        setup.signed_by = &issuer;
        world::ScriptedServer cloud(setup);
        cloud.on("GET /time", {world::json_reply(time_reply("12Z"))});
        EXPECT_EQ(api_get_time("https", kHost), -1);
        requests_ = cloud.requests().size();
        return logged();
    }

    static std::string refusal(const std::string &lines) {
        const std::string start = "url: https://time.test/time\n<statistics>\ncurl error (60) SSL";
        return lines.compare(0, start.size(), start) == 0 ? "refused" : lines;
    }

    size_t requests_ = 0;
};

TEST_F(CloudTimeTls, TrustedServerSetsTheClock) {
    world::authority().install();
    EXPECT_EQ(ask(world::authority()),
              "url: https://time.test/time\n<statistics>\n"
              "\n\n api_get_time json (15 bytes):\n{\"time\":\"12Z\"}\n");
    EXPECT_EQ(times_set(), std::vector<std::string>{R"({"manualTime":"12"})"});
}

TEST_F(CloudTimeTls, AnotherAuthorityIsRefusedUntilItIsInstalled) {
    const world::CertificateAuthority stranger("stranger");
    world::authority().install();
    EXPECT_EQ(refusal(ask(stranger)), "refused");
    EXPECT_EQ(requests_, 0u);
    EXPECT_TRUE(asked().empty());
    stranger.install();
    ask(stranger);
    EXPECT_EQ(times_set().size(), 1u);
}

TEST_F(CloudTimeTls, WithoutAnyAuthorityNobodyIsTrusted) {
    EXPECT_EQ(refusal(ask(world::authority())), "refused");
    EXPECT_TRUE(asked().empty());
}

TEST_F(CloudTimeTls, CertificateMustBeTheHosts) {
    world::authority().install();
    EXPECT_EQ(refusal(ask(world::authority(), "other.test")), "refused");
    EXPECT_TRUE(asked().empty());
}

}  // namespace
