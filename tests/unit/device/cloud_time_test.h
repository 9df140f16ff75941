// Scripted servers for the tests of the cloud's time.
#pragma once

#include <algorithm>

#include "device/cloud_time.h"
#include "device_test.h"

class CloudTimeTest : public DeviceTest {
  protected:
    static constexpr const char *kHost = "time.test";
    static constexpr const char *kReadable =
        R"({"restful_res":{"timeConfs":{"sntpTimeZone":"CST-8"}}})";
    static constexpr const char *kSettings = "/api/system/settings/time";

    CloudTimeTest() {
        world::add_host(kHost);
        local->on("GET /api/system/settings/time", {world::json_reply(kReadable)});
        local->on("PATCH /api/system/settings/time", {world::status_reply(200)});
    }

    static std::string time_reply(const std::string &time) { return R"({"time":")" + time + "\"}"; }

    // The log with each run of transfer statistics as one line.
    std::string logged() {
        const std::string lines = LoggedTest::logged();
        std::string result;
        bool in_statistics = false;
        for (size_t at = 0, end = 0; at < lines.size(); at = end) {
            end = std::min(lines.find('\n', at), lines.size() - 1) + 1;
            const bool statistics = lines.compare(at, 9, "CURLINFO_") == 0;
            if (!statistics) {
                result += lines.substr(at, end - at);
            } else if (!in_statistics) {
                result += "<statistics>\n";
            }
            in_statistics = statistics;
        }
        return result;
    }

    // The bodies that arrived as the new time.
    std::vector<std::string> times_set() {
        std::vector<std::string> bodies;
        for (const world::Request &request : local->requests()) {
            if (request.method == "PATCH" && request.target == kSettings) {
                bodies.push_back(request.body);
            }
        }
        return bodies;
    }
};
