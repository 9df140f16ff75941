#include "virtual_device/scenario.h"

#include <gmock/gmock.h>

#include "testing/world_test.h"
#include "virtual_device/expected_text.h"

namespace {

using testing::HasSubstr;

std::string complaint(const std::string &text) {
    try {
        world::read_scenario("x", "x.json", text);
    } catch (const std::exception &error) {
        return error.what();
    }
    return "";
}

TEST(Scenario, ReadsEveryField) {
    const world::Scenario scenario = world::read_scenario("x", "x.json", R"({
        "about": "a", "note": "n", "run": ["kdump RAM"],
        "files": {"/tmp/a": "text", "/tmp/b": null, "/tmp/c": ["x", {"text": "y", "times": 3}]},
        "environment": {"A": "b"}, "proxy": {"server": "p", "port": 8080},
        "up_time": 5, "create_log": false, "identity": false, "sleep": "real",
        "stop_after_sleeps": 2, "clock": "2024", "url_lifetime": 1,
        "refuse": ["tfa"], "daemons": ["nginx"], "dns": {"h": "127.0.0.1"},
        "local": {"GET /api/x": [404], "*": ["drop-at-accept", "ok"]},
        "tfa": ["ok", 503, "garbage", {"fault": "trickle", "bytes": 7},
                {"status": 500, "json": {"a": 1}, "headers": {"X": "y"}, "times": 2}]
    })");
    EXPECT_EQ(scenario.files.at("/tmp/a"), "text");
    EXPECT_EQ(scenario.files.at("/tmp/b"), std::nullopt);
    EXPECT_EQ(scenario.files.at("/tmp/c"), "xyyy");
    EXPECT_EQ(scenario.local_settings.proxy["proxyServerPort"], 8080);
    EXPECT_EQ(scenario.local_settings.up_time, 5);
    EXPECT_FALSE(scenario.local_settings.create_log);
    EXPECT_FALSE(scenario.identity);
    EXPECT_TRUE(scenario.real_sleep);
    EXPECT_EQ(scenario.stop_after_sleeps, 2);
    EXPECT_EQ(scenario.local.size(), 2u);
    const auto &replies = scenario.cloud.at("tfa");
    ASSERT_EQ(replies.size(), 6u);
    EXPECT_FALSE(replies[0].fixed);
    EXPECT_EQ(replies[1].fixed->status, 503);
    EXPECT_EQ(replies[2].fault.kind, world::Fault::Kind::garbage);
    EXPECT_EQ(replies[3].fault.amount, 7u);
    EXPECT_EQ(replies[5].fixed->body, "{\"a\":1}");
}

TEST(Scenario, ComplaintNamesFileFieldAndWhatIsAllowed) {
    const struct {
        const char *text, *message;
    } rows[] = {
        {"{", "x.json: "},
        {"[]", "x.json: must be an object"},
        {"{}", "x.json: \"about\" is missing"},
        {R"({"about": 1})", "x.json: about: must be a text"},
        {R"({"about": "a", "tfaa": []})", "x.json: unknown field \"tfaa\"; allowed are \"about\""},
        {R"({"about": "a", "run": "kdump"})", "x.json: run: must be a list"},
        {R"({"about": "a", "files": {"/usr/x": ""}})",
         "x.json: files: /usr/x: must be a path under"},
        {R"({"about": "a", "files": {"/tmp/x": 7}})", "x.json: files: /tmp/x: must be a text"},
        {R"({"about": "a", "files": {"/tmp/x": {"text": "a", "time": 1}}})",
         "unknown field \"time\""},
        {R"({"about": "a", "tfa": "ok"})", "x.json: tfa: must be a list of replies"},
        {R"({"about": "a", "tfa": ["sometimes"]})",
         "\"sometimes\" is no fault; allowed are \"drop"},
        {R"({"about": "a", "tfa": [{"fault": "garbage", "bytes": 3}]})", "means nothing with"},
        {R"({"about": "a", "tfa": [{"status": 99}]})",
         "status: must be a whole number from 100 to 599"},
        {R"({"about": "a", "tfa": [{"state": 200}]})", "unknown field \"state\""},
        {R"({"about": "a", "local": {"/api/x": ["ok"]}})",
         "x.json: local: /api/x: must be a method and a path"},
        {R"({"about": "a", "refuse": ["cloud"]})",
         "\"cloud\" is not \"local\", \"store\", \"tfa\" or \"time\""},
        {R"({"about": "a", "daemons": ["apache"]})",
         "\"apache\" is not \"nginx\", \"squid\", \"squid-with-password\", \"swift\" or "
         "\"tinyproxy\""},
        {R"({"about": "a", "proxy": {"answers": [407, "sometimes"]}})",
         "\"sometimes\" is no fault"},
        {R"({"about": "a", "sleep": "never"})", "x.json: sleep: must be \"recorded\" or \"real\""},
        {R"({"about": "a", "proxy": {"port": 70000}})",
         "x.json: proxy: port: must be a whole number"},
        {R"({"about": "a", "up_time": "1"})", "x.json: up_time: must be a whole number"},
        {R"({"about": "a", "identity": 1})", "x.json: identity: must be true or false"},
        {R"({"about": "a", "environment": {"A": 1}})", "x.json: environment: A: must be a text"}};
    for (const auto &row : rows)
        EXPECT_THAT(complaint(row.text), HasSubstr(row.message));
}

TEST(Scenario, UnknownNamePointsToTheList) {
    EXPECT_THAT([] { world::load_scenario("no-such"); },
                testing::ThrowsMessage<std::runtime_error>(HasSubstr("virtual_device scenarios")));
}

TEST(Scenario, EveryShippedOneReadsAndHasItsExpectedText) {
    const std::vector<std::string> names = world::shipped_scenarios();
    EXPECT_GE(names.size(), 15u);
    for (const std::string &name : names) {
        EXPECT_FALSE(world::load_scenario(name).run.empty()) << name;
        EXPECT_TRUE(world::exists(world::scenario_folder() + "/" + name + ".expected")) << name;
    }
}

// The scenarios' expected outcomes show every other form of text.
TEST(ExpectedText, ShowsControlBytesAndCountsLongRuns) {
    EXPECT_EQ(world::legible("a\tb\nc"), "a\tb\nc");
    EXPECT_EQ(world::legible(std::string("\0\x1b", 2)), "\\x00\\x1b");
    EXPECT_EQ(world::legible(std::string(40, 'x')), std::string(40, 'x'));
    EXPECT_EQ(world::legible("a" + std::string(41, 'x') + "b"), "a<x*41>b");
}

}  // namespace
