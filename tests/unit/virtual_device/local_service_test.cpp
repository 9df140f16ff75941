#include "testing/local_service.h"

#include <httplib.h>

#include <nlohmann/json.hpp>

#include "testing/world_test.h"

namespace {

using nlohmann::json;

class LocalServiceTest : public world::WorldTest {
  protected:
    json payload(const httplib::Result &reply) { return json::parse(reply->body)["restful_res"]; }

    world::ExchangeRecord record;
    world::LocalService service{
        record, {{"GET /api/scripted", {{world::status_reply(503), {}}, {}}}}, {}};
    world::HttpServer server{"127.0.0.1", 8000, service};
    httplib::Client client{"http://127.0.0.1:8000"};
};

TEST_F(LocalServiceTest, StatusTellsWhoTheDeviceIs) {
    const json info = payload(client.Get("/api/system/status"))["systemInfo"];
    EXPECT_EQ(info["macAddr"], "02:00:5e:10:00:01");
    EXPECT_TRUE(info["serialNo"].is_string());
    EXPECT_GE(info["upTime"], 86400);
}

TEST_F(LocalServiceTest, PatchesAreSeenByLaterGets) {
    const struct {
        const char *path, *body, *object, *member, *value;
    } cases[] = {
        {"/api/system/settings/time", R"({"manualTime":"2024"})", "timeConfs", "manualTime",
         "2024"},
        {"/api/system/cloud_proxy", R"({"proxyServer":"p"})", "CloudProxySettings", "proxyServer",
         "p"},
    };
    for (const auto &one : cases) {
        EXPECT_EQ(client.Patch(one.path, one.body, "application/json")->status, 200);
        EXPECT_EQ(payload(client.Get(one.path))[one.object][one.member], one.value);
    }
    client.Patch("/api/system/settings/ledblink", R"({"systemLED":"twinkle"})", "application/json");
    EXPECT_EQ(payload(client.Get("/api/system/settings/ledblink"))["systemLED"], "twinkle");
}

TEST_F(LocalServiceTest, FailureLogCountsAndWrites) {
    EXPECT_EQ(payload(client.Get("/api/cloud_fail_log"))["conn_fail_chk"]["createLog"], true);
    client.Post("/api/cloud_fail_log", "", "text/plain");
    client.Post("/api/cloud_fail_log", "", "text/plain");
    EXPECT_EQ(payload(client.Get("/api/cloud_fail_log"))["conn_fail_chk"]["entries"], 2);
    const std::string log = world::read_file("/mnt/data/iss_config/cloud_conn_fail_log.txt");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2);
}

TEST_F(LocalServiceTest, RefusesWhatItDoesNotKnow) {
    const char *const led = "/api/system/settings/ledblink";
    EXPECT_EQ(client.Get("/api/nothing")->status, 404);
    EXPECT_EQ(client.Delete("/api/system/status")->status, 405);
    EXPECT_EQ(client.Patch("/api/system/status", "{}", "application/json")->status, 405);
    for (const char *body : {"", "{", "[]", "{}", R"({"systemLED":1})", R"({"colour":"red"})"})
        EXPECT_EQ(client.Patch(led, body, "application/json")->status, 400) << body;
    EXPECT_EQ(payload(client.Get(led))["systemLED"], "solidLight");
    EXPECT_TRUE(payload(client.Get("/api/nothing")).contains("error"));
}

TEST_F(LocalServiceTest, FollowsItsScriptAndRecords) {
    EXPECT_EQ(client.Get("/api/scripted")->status, 503);
    EXPECT_EQ(client.Get("/api/scripted")->status, 404);
    const auto exchanges = record.all();
    ASSERT_EQ(exchanges.size(), 2u);
    EXPECT_EQ(exchanges[0].url, "http://127.0.0.1:8000/api/scripted");
    EXPECT_EQ(exchanges[0].status, 503);
}

}  // namespace
