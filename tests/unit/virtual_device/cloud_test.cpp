#include <httplib.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "testing/fake_cloud.h"
#include "testing/world_test.h"

namespace {

using nlohmann::json;

constexpr const char *kTfaHost = "tfa.test";

class CloudTest : public world::WorldTest {
  protected:
    CloudTest() {
        signal(SIGPIPE, SIG_IGN);  // the client library leaves that to its user
        for (const char *host : {kTfaHost, world::kStoreHost, world::kTimeHost})
            world::add_host(host);
        world::authority().install();
        world::authority().write_client_files(world::kDeviceDir, "unit");
        open(std::chrono::seconds(300));
    }

    void open(std::chrono::seconds lifetime) {
        fake.reset();
        world::FakeCloudSetup setup;
        setup.cloud.tfa_hosts = {kTfaHost};
        setup.cloud.url_lifetime = lifetime;
        fake.emplace(setup);
    }

    std::unique_ptr<httplib::SSLClient> client(const char *host, bool with_certificate = true) {
        auto made = std::make_unique<httplib::SSLClient>(host, 443, with_certificate ? "CRT" : "",
                                                         with_certificate ? "KEY" : "");
        made->set_ca_cert_path("", "/etc/ssl/certs");
        return made;
    }

    httplib::Result ask(const std::string &body, const char *type = "application/json") {
        return client(kTfaHost)->Post("/dev/tfaapi/kdumps", body, type);
    }

    // The path and query of a fresh upload URL.
    std::string fresh_target(const std::string &name = "a.txt") {
        const json reply = json::parse(ask(json{{"filename", name}}.dump())->body);
        EXPECT_EQ(reply["message"], "OK");
        const std::string url = reply["upload_url"];
        const std::string origin = std::string("https://") + world::kStoreHost;
        EXPECT_EQ(url.substr(0, origin.size()), origin);
        return url.substr(origin.size());
    }

    int put(const std::string &target, const std::string &body) {
        const auto reply = client(world::kStoreHost)->Put(target, body, "application/octet-stream");
        return reply ? reply->status : 0;
    }

    std::optional<world::FakeCloud> fake;
};

TEST_F(CloudTest, KeepsWhatIsPut) {
    const std::string body(300000, 'x');
    EXPECT_EQ(put(fresh_target("/tmp/all config.tar"), body), 200);
    const auto stored = fake->cloud.stored();
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0].name, "all config.tar");
    EXPECT_EQ(stored[0].sha256, world::Sha256::of(body));
    EXPECT_EQ(world::read_file(stored[0].path), body);
}

TEST_F(CloudTest, AnUploadUrlServesOnce) {
    const std::string target = fresh_target();
    EXPECT_EQ(put(target, "x"), 200);
    EXPECT_EQ(put(target, "y"), 403);
    EXPECT_EQ(fake->cloud.stored().size(), 1u);
}

TEST_F(CloudTest, AnUploadUrlExpires) {
    open(std::chrono::seconds(0));
    EXPECT_EQ(put(fresh_target(), "x"), 403);
    EXPECT_TRUE(fake->cloud.stored().empty());
}

TEST_F(CloudTest, RefusesUrlsItNeverGave) {
    EXPECT_EQ(put("/up/1/a.txt?token=0", "x"), 403);
    EXPECT_EQ(client(world::kStoreHost)->Get("/up/1/a.txt")->status, 405);
}

TEST_F(CloudTest, DemandsTheClientCertificateButForTheTime) {
    EXPECT_FALSE(client(kTfaHost, false)->Post("/dev/tfaapi/kdumps", "{}", "application/json"));
    EXPECT_FALSE(client(world::kStoreHost, false)->Put("/up/1/a", "x", "text/plain"));
    EXPECT_EQ(client(world::kTimeHost, false)->Get("/time")->status, 200);
}

TEST_F(CloudTest, ChecksTheRequestForAUrl) {
    for (const char *body : {"", "{", "[]", "{}", R"({"filename":1})", R"({"filename":""})"})
        EXPECT_EQ(ask(body)->status, 400) << body;
    EXPECT_EQ(ask(R"({"filename":"a"})", "text/plain")->status, 400);
    EXPECT_EQ(client(kTfaHost)->Get("/dev/tfaapi/kdumps")->status, 405);
    EXPECT_EQ(client(kTfaHost)->Get("/other")->status, 404);
}

TEST_F(CloudTest, TellsTheTime) {
    const json reply = json::parse(client(world::kTimeHost, false)->Get("/time")->body);
    EXPECT_EQ(reply["time"].get<std::string>().size(), std::string("2024-05-01T08:00:00Z").size());
}

}  // namespace
