// The example agent from its start to its end, seen from outside.
#include "device_test.h"
#include "testing/spawn.h"

namespace {

using testing::HasSubstr;

class AgentExample : public DeviceTest {
  protected:
    AgentExample() {
        world::add_host("time.test");
        world::authority().install();
        set_status(R"("macAddr":"02:00:5e:10:00:01","serialNo":"SN42","upTime":86400)");
        publish("cloud_fail_log", R"({"conn_fail_chk":{"createLog":true}})");
        local->on("GET /api/system/settings/time", {time_settings(""), time_settings("12:00")});
        local->on("PATCH /api/system/settings/time", {json_reply("{}")});
        cloud.on("GET /time", {json_reply(R"({"time":"12:00Z"})")});
    }

    static world::Reply time_settings(const std::string &time) {
        return json_reply(R"({"restful_res":{"timeConfs":{"sntpTimeZone":"","manualTime":")" +
                          time + R"("}}})");
    }

    // Runs it; what it prints goes into `output`. The exit status.
    int run() {
        const world::Finished end =
            world::run_and_read(world::Command({AGENT_PROGRAM, "time.test"}));
        output = end.output;
        return end.status;
    }

    world::ScriptedServer cloud{world::tls_on(443, {"time.test"}, false)};
    std::string output;
};

TEST_F(AgentExample, GoesThroughEveryStep) {
    EXPECT_EQ(run(), 0) << output;
    for (const char *line :
         {"MAC address 02:00:5e:10:00:01, compact 02005e100001\n", "up for 86400 seconds\n",
          "device API at https://tillet.production.", "outage began at up-time 85900\n",
          "20 minutes later: failure log requested 0 times\n",
          "50 minutes later: failure log requested 1 times\n",
          "60 minutes later: failure log requested 2 times\n", "firmware upload: none\n",
          "clock set from https://time.test/time: 12:00\n"}) {
        EXPECT_THAT(output, HasSubstr(line));
    }
    EXPECT_THAT(output, testing::Not(HasSubstr("FAILED")));
}

TEST_F(AgentExample, LeavesItsFilesBehind) {
    run();
    EXPECT_EQ(world::read_file("/tmp/app/cloud_tmp/key_file"), "key-from-registration02005e100001");
    EXPECT_EQ(world::read_file("/tmp/app/cloud_tmp/seqno_file"), "2");
    EXPECT_EQ(world::list_files("/tmp"),
              (std::vector<std::string>{"/tmp/app/cloud_tmp/key_file",
                                        "/tmp/app/cloud_tmp/seqno_file", "/tmp/cloudwtpflag"}));
    EXPECT_EQ(world::read_file("/tmp/cloudwtpflag"), "");
    run();
    EXPECT_EQ(world::read_file("/tmp/app/cloud_tmp/seqno_file"), "3");
}

TEST_F(AgentExample, AsksTheLocalServiceInOrder) {
    run();
    const std::string status = "GET /api/system/status";
    const std::string check = "GET /api/cloud_fail_log";
    const std::string request = "POST /api/cloud_fail_log";
    const std::string time = "/api/system/settings/time";
    const std::string led = "PATCH /api/system/settings/ledblink {\"systemLED\":\"";
    std::vector<std::string> expected = {status, status, status, led + "twinkle\"}",
                                         led + "solidLight\"}"};
    expected.insert(expected.end(), {check, status});  // opens the outage
    for (int minutes = 10; minutes <= 60; minutes += 10) {
        expected.insert(expected.end(), {check, status});
        if (minutes == 30 || minutes == 60) {
            expected.push_back(request);
        }
    }
    expected.insert(expected.end(),
                    {"GET " + time, "PATCH " + time + R"( {"manualTime":"12:00"})", "GET " + time});
    EXPECT_EQ(asked(), expected);
}

TEST_F(AgentExample, TellsWhatFails) {
    cloud.on("GET /time", {status_reply(503)});
    local->on("GET /api/system/settings/time", {time_settings("")});
    EXPECT_EQ(run(), 1);
    EXPECT_THAT(output, HasSubstr("FAILED  clock set from https://time.test/time: \n"));
    local.reset();
    EXPECT_EQ(run(), 1);
    EXPECT_THAT(output, HasSubstr("FAILED  MAC address , compact \n"));
    EXPECT_THAT(output, HasSubstr("ok      turn released\n"));
}

}  // namespace
