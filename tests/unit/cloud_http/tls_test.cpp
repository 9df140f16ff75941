#include <curl/curl.h>

#include <cstring>
#include <filesystem>

#include "cloud_http/upload_url.h"
#include "upload_fixture.h"

namespace {

constexpr const char *kHost = "tfa.test";

// Both requests against a server on 127.0.0.1:443 that ends every handshake without a client
// certificate.
class TlsTest : public UploadTest {
  protected:
    TlsTest() {
        world::add_host(kHost);
        const std::string endpoint = "https://tfa.test/kdumps";
        endpoint.copy(KDUMPS_url, endpoint.size());
        url = "https://tfa.test/put";
        world::authority().write_client_files(world::kDeviceDir, "device-17");
    }

    static void answer(world::ScriptedServer &cloud) {
        cloud.on("POST /kdumps",
                 {world::json_reply(R"({"message":"OK","upload_url":"https://tfa.test/put"})")});
        cloud.on("PUT /put", {world::status_reply(200)});
    }

    void expect_both_to_work(world::ScriptedServer &cloud) {
        answer(cloud);
        EXPECT_EQ(api_TFA_post_data("{}"), 0);
        EXPECT_EQ(upload(0), 0);
        const auto requests = cloud.requests();
        ASSERT_EQ(requests.size(), 2u);
        for (const world::Request &request : requests) {
            EXPECT_EQ(request.client_certificate, "device-17");
            EXPECT_EQ(request.server_name, kHost);
        }
    }

    void expect_both_to_fail_with(int code) {
        EXPECT_EQ(api_TFA_post_data("{}"), code);
        EXPECT_EQ(upload(0), code);
        EXPECT_TRUE(world::exists(kDump));
    }
};

TEST_F(TlsTest, ShowsTheClientCertificateOfTheWorkingDirectory) {
    world::ScriptedServer cloud(world::tls_on(443, {kHost}));
    expect_both_to_work(cloud);
    EXPECT_STREQ(g_upload_url, "https://tfa.test/put");
}

TEST_F(TlsTest, AcceptsAnyServerCertificate) {
    const world::CertificateAuthority stranger("stranger");
    world::ServerSetup setup = world::tls_on(443, {kHost});
    setup.signed_by = &stranger;
    world::ScriptedServer cloud(setup);
    expect_both_to_work(cloud);
}

TEST_F(TlsTest, AcceptsTheCertificateOfAnotherHost) {
    world::authority().install();
    world::ScriptedServer cloud(world::tls_on(443, {"other.test"}));
    expect_both_to_work(cloud);
}

TEST_F(TlsTest, NeedsTheFilesCrtAndKey) {
    world::ScriptedServer cloud(world::tls_on(443, {kHost}, false));
    answer(cloud);
    const std::string folder = world::kDeviceDir;
    std::filesystem::rename(folder + "/KEY", folder + "/key");
    expect_both_to_fail_with(CURLE_SSL_CERTPROBLEM);
    std::filesystem::rename(folder + "/key", folder + "/KEY");
    std::filesystem::remove(folder + "/CRT");
    expect_both_to_fail_with(CURLE_SSL_CERTPROBLEM);
    EXPECT_TRUE(cloud.requests().empty());
    EXPECT_EQ(count_of(console.text_without_stamps(), "TFA curl error : 58\n"), 2);
}

TEST_F(TlsTest, NeedsNoFilesWithoutTls) {
    std::filesystem::remove(std::string(world::kDeviceDir) + "/CRT");
    std::filesystem::remove(std::string(world::kDeviceDir) + "/KEY");
    world::ScriptedServer cloud(plain_cloud());
    cloud.on("/put", {world::status_reply(200)});
    url = std::string(kCloud) + "/put";
    EXPECT_EQ(upload(0), 0);
}

TEST_F(TlsTest, ABrokenHandshakeIsAFailedTransfer) {
    world::ServerSetup setup = plain_cloud();
    setup.port = 443;
    world::ScriptedServer cloud(setup);
    cloud.on("*", {world::fault_reply(world::Fault::Kind::drop_at_accept)});
    expect_both_to_fail_with(CURLE_SSL_CONNECT_ERROR);
}

}  // namespace
