#include <curl/curl.h>

#include <filesystem>

#include "cloud_http_fixture.h"

namespace {

constexpr const char *kHost = "tfa.test";

// Both requests against a server on 127.0.0.1:443 that ends every handshake without a client
// certificate.
class TlsTest : public UploadTest {
  protected:
    TlsTest() {
        world::add_host(kHost);
        ask_at("https://tfa.test/kdumps");
        url = "https://tfa.test/put";
        world::authority().write_client_files(world::kDeviceDir, "device-17");
    }

    void expect_both_to_work_with(const world::ServerSetup &setup) {
        ScriptedServer cloud(setup);
        answer_both(cloud);
        EXPECT_EQ(api_TFA_post_data("{}"), 0);
        EXPECT_EQ(upload(0), 0);
        EXPECT_EQ(cloud.requests().size(), 2u);
        for (const world::Request &request : cloud.requests()) {
            EXPECT_EQ(request.client_certificate, "device-17");
            EXPECT_EQ(request.server_name, kHost);
        }
    }
};

TEST_F(TlsTest, ShowsTheClientCertificateOfTheWorkingDirectory) {
    expect_both_to_work_with(world::tls_on(443, {kHost}));
}

TEST_F(TlsTest, AcceptsAnyServerCertificate) {
    const world::CertificateAuthority stranger("stranger");
    world::ServerSetup setup = world::tls_on(443, {kHost});
    setup.signed_by = &stranger;
    expect_both_to_work_with(setup);
}

TEST_F(TlsTest, AcceptsTheCertificateOfAnotherHost) {
    world::authority().install();
    expect_both_to_work_with(world::tls_on(443, {"other.test"}));
}

TEST_F(TlsTest, NeedsTheFilesCrtAndKey) {
    ScriptedServer cloud(world::tls_on(443, {kHost}, false));
    answer_both(cloud);
    std::filesystem::rename("KEY", "key");
    expect_both_to_fail_with(CURLE_SSL_CERTPROBLEM);
    std::filesystem::rename("key", "KEY");
    std::filesystem::remove("CRT");
    expect_both_to_fail_with(CURLE_SSL_CERTPROBLEM);
    EXPECT_TRUE(cloud.requests().empty());
    EXPECT_EQ(count_of(logged(), "TFA curl error : 58\n"), 2);
}

TEST_F(TlsTest, NeedsNoFilesWithoutTls) {
    std::filesystem::remove("CRT");
    std::filesystem::remove("KEY");
    ScriptedServer cloud(plain());
    answer_both(cloud);
    url = std::string(kCloud) + "/put";
    EXPECT_EQ(upload(0), 0);
}

TEST_F(TlsTest, ABrokenHandshakeIsAFailedTransfer) {
    ScriptedServer cloud(plain(443));
    cloud.on("*", {fault_reply(Fault::Kind::drop_at_accept)});
    expect_both_to_fail_with(CURLE_SSL_CONNECT_ERROR);
}

}  // namespace
