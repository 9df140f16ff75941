#include "testing/scripted_server.h"

#include <httplib.h>

#include "testing/world_test.h"

namespace {

using world::Fault;

class ScriptedServerTest : public world::WorldTest {
  protected:
    httplib::Client client{"http://127.0.0.1:8000"};
};

TEST_F(ScriptedServerTest, AnswersFromItsListAndRemembers) {
    world::ScriptedServer server;
    server.on("/a", {world::json_reply("{\"n\":1}"), world::status_reply(500, "no")});
    EXPECT_EQ(client.Get("/a?x=1")->body, "{\"n\":1}");
    EXPECT_EQ(client.Get("/a")->status, 500);
    EXPECT_EQ(client.Get("/a")->status, 500);
    EXPECT_EQ(client.Get("/b")->status, 404);
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].target, "/a?x=1");
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[3].header("host"), "127.0.0.1:8000");
}

TEST_F(ScriptedServerTest, TellsMethodsApart) {
    world::ScriptedServer server;
    server.on("PATCH /a", {world::status_reply(204)});
    server.on("/a", {world::status_reply(200)});
    EXPECT_EQ(client.Patch("/a", "x", "text/plain")->status, 204);
    EXPECT_EQ(client.Put("/a", "x", "text/plain")->status, 200);
}

TEST_F(ScriptedServerTest, TakesBodiesOfAnySize) {
    world::ScriptedServer server;
    server.on("POST /in", {world::status_reply(200)});
    const std::string body(3 << 20, 'b');
    EXPECT_EQ(client.Post("/in", body, "text/plain")->status, 200);
    EXPECT_EQ(server.requests().at(0).body, body);
}

TEST_F(ScriptedServerTest, MeetsTheSameFaultOnlyAsOftenAsScripted) {
    world::ScriptedServer server;
    server.on("*", {world::fault_reply(Fault::Kind::drop_at_accept),
                    world::fault_reply(Fault::Kind::garbage), world::json_reply("{}")});
    EXPECT_FALSE(client.Get("/a"));
    EXPECT_FALSE(client.Get("/a"));
    EXPECT_TRUE(client.Get("/a"));
    EXPECT_EQ(server.requests().size(), 2u) << "the connection dropped at once brought none";
}

class ScriptedFault : public ScriptedServerTest, public testing::WithParamInterface<Fault> {};

TEST_P(ScriptedFault, KeepsTheReplyFromTheClient) {
    world::ScriptedServer server;
    world::Reply reply = world::json_reply(std::string(100, 'x'));
    reply.fault = GetParam();
    server.on("*", {reply, world::json_reply("{}")});
    client.set_read_timeout(0, 300000);
    EXPECT_FALSE(client.Post("/a", "some body", "text/plain"));
}

INSTANTIATE_TEST_SUITE_P(Each, ScriptedFault,
                         testing::Values(Fault{Fault::Kind::drop_at_accept, 0},
                                         Fault{Fault::Kind::drop_after_headers, 0},
                                         Fault{Fault::Kind::drop_after_bytes, 3},
                                         Fault{Fault::Kind::never_answer, 0},
                                         Fault{Fault::Kind::garbage, 0},
                                         Fault{Fault::Kind::truncate, 4}));

TEST_F(ScriptedServerTest, TricklesAtItsRate) {
    world::ScriptedServer server;
    world::Reply reply = world::json_reply(std::string(100, 'x'));
    reply.fault = {Fault::Kind::trickle, 1000};
    server.on("*", {reply});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.Get("/a")->body.size(), 100u);
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(80));
}

class ScriptedTls : public world::WorldTest {
  protected:
    ScriptedTls() { world::add_host("cloud.test"); }

    httplib::Result fetch(bool with_certificate) {
        httplib::SSLClient client("cloud.test", 443, with_certificate ? "CRT" : "",
                                  with_certificate ? "KEY" : "");
        client.set_ca_cert_path("", "/etc/ssl/certs");
        return client.Get("/x");
    }
};

TEST_F(ScriptedTls, DemandsTheClientCertificate) {
    world::ScriptedServer cloud(world::tls_on(443, {"cloud.test"}));
    cloud.on("/x", {world::json_reply("{}")});
    world::authority().install();
    world::authority().write_client_files(world::kDeviceDir, "unit");
    EXPECT_FALSE(fetch(false));
    ASSERT_TRUE(fetch(true));
    ASSERT_EQ(cloud.requests().size(), 1u);
    EXPECT_EQ(cloud.requests()[0].client_certificate, "unit");
    EXPECT_EQ(cloud.requests()[0].server_name, "cloud.test");
}

TEST_F(ScriptedTls, AnotherAuthorityIsNotTrusted) {
    const world::CertificateAuthority stranger("stranger");
    world::ServerSetup setup = world::tls_on(443, {"cloud.test"}, false);
    setup.signed_by = &stranger;
    world::ScriptedServer cloud(setup);
    world::authority().install();
    EXPECT_EQ(fetch(false).error(), httplib::Error::SSLServerVerification);
    stranger.install();
    EXPECT_TRUE(fetch(false));
}

}  // namespace
