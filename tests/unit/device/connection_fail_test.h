// Fixture of the tests of the connection-failure log.
#pragma once

#include "device/connection_fail_log.h"
#include "device_test.h"

class ConnectionFailTest : public DeviceTest {
  protected:
    static constexpr const char *kTimeFile = "/tmp/app/cloud_tmp/conn_fail_log_time.txt";
    static constexpr const char *kStopFile = "/mnt/data/iss_config/cloud_conn_fail_log.stop";
    static constexpr const char *kAllow = R"({"restful_res":{"conn_fail_chk":{"createLog":true}}})";
    static constexpr const char *kForbid =
        R"({"restful_res":{"conn_fail_chk":{"createLog":false}}})";

    ConnectionFailTest() {
        conn_fail_logged_30m = 0;
        conn_fail_logged_60m = 0;
        local->on("GET /api/cloud_fail_log", {world::json_reply(kAllow)});
        local->on("POST /api/cloud_fail_log", {world::json_reply("{}")});
    }

    void set_up_time(int64_t seconds) { set_status(R"("upTime":)" + std::to_string(seconds)); }

    // One call at that up-time: the requests for a log that it makes.
    int requests_at(int64_t up_time) {
        set_up_time(up_time);
        const int before = log_requests();
        EXPECT_EQ(api_cloud_fail_log(), 0);
        return log_requests() - before;
    }

    // Requests for a log so far; each has an empty body.
    int log_requests() {
        int count = 0;
        for (const world::Request &request : local->requests()) {
            if (request.method == "POST") {
                ++count;
                EXPECT_EQ(request.target, "/api/cloud_fail_log");
                EXPECT_EQ(request.header("Content-Length"), "0");
                EXPECT_EQ(request.body_size, 0u);
            }
        }
        return count;
    }

    static std::string flags() {
        return std::to_string(conn_fail_logged_30m) + std::to_string(conn_fail_logged_60m);
    }
};
