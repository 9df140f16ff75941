#include "testing/scripted_server.h"

#include <httplib.h>

#include "testing/world_test.h"

namespace {

using world::Fault;

class ScriptedServerTest : public world::WorldTest {
  protected:
    world::ScriptedServer server;
    httplib::Client client{"http://127.0.0.1:8000"};
};

TEST_F(ScriptedServerTest, AnswersFromItsListAndRemembers) {
    server.on("/a", {world::json_reply("{\"n\":1}"), world::status_reply(500, "no")});
    server.on("PATCH /a", {world::status_reply(204)});
    EXPECT_EQ(client.Get("/a?x=1")->body, "{\"n\":1}");
    EXPECT_EQ(client.Get("/a")->status, 500);
    EXPECT_EQ(client.Put("/a", "x", "text/plain")->status, 500);
    EXPECT_EQ(client.Patch("/a", "y", "text/plain")->status, 204);
    EXPECT_EQ(client.Get("/b")->status, 404);
    EXPECT_EQ(server.asked(), (std::vector<std::string>{"GET /a?x=1", "GET /a", "PUT /a x",
                                                        "PATCH /a y", "GET /b"}));
    EXPECT_EQ(server.requests().at(4).header("host"), "127.0.0.1:8000");
}

class ScriptedFault : public ScriptedServerTest, public testing::WithParamInterface<Fault> {};

TEST_P(ScriptedFault, CutsTheReplyOnce) {
    world::Reply reply = world::json_reply(std::string(100, 'x'));
    reply.fault = GetParam();
    server.on("*", {reply, world::json_reply("{}")});
    client.set_read_timeout(0, 300000);
    EXPECT_FALSE(client.Post("/a", "some body", "text/plain"));
    EXPECT_TRUE(client.Post("/a", "some body", "text/plain"));
    const bool is_early = GetParam().kind == Fault::Kind::drop_at_accept;
    EXPECT_EQ(server.requests().size(), is_early ? 1u : 2u);
}

INSTANTIATE_TEST_SUITE_P(Each, ScriptedFault,
                         testing::Values(Fault{Fault::Kind::drop_at_accept, 0},
                                         Fault{Fault::Kind::drop_after_headers, 0},
                                         Fault{Fault::Kind::drop_after_bytes, 3},
                                         Fault{Fault::Kind::never_answer, 0},
                                         Fault{Fault::Kind::garbage, 0},
                                         Fault{Fault::Kind::truncate, 4}));

TEST_F(ScriptedServerTest, TricklesAtItsRate) {
    world::Reply reply = world::json_reply(std::string(100, 'x'));
    reply.fault = {Fault::Kind::trickle, 1000};
    server.on("*", {reply});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.Get("/a")->body.size(), 100u);
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(80));
}

}  // namespace
