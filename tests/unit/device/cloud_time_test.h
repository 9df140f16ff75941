// Scripted servers for the tests of the cloud's time.
#pragma once

#include <regex>

#include "device/cloud_time.h"
#include "device_test.h"

class CloudTimeTest : public DeviceTest {
  protected:
    static constexpr const char *kHost = "time.test";

    CloudTimeTest() {
        world::add_host(kHost);
        set_zone(R"({"sntpTimeZone":"CST-8"})");
        local->on("PATCH /api/system/settings/time", {status_reply(200)});
    }

    static std::string time_reply(const std::string &time) { return R"({"time":")" + time + "\"}"; }

    // The log with each run of transfer statistics as one line.
    std::string logged() {
        return std::regex_replace(LoggedTest::logged(), std::regex("(CURLINFO_.*\n)+"),
                                  "<statistics>\n");
    }

    void set_zone(const std::string &settings) {
        publish("system/settings/time", R"({"timeConfs":)" + settings + "}");
    }

    // The bodies that arrived as the new time.
    std::vector<std::string> times_set() {
        const std::string start = "PATCH /api/system/settings/time ";
        std::vector<std::string> bodies;
        for (const std::string &line : asked()) {
            if (line.compare(0, start.size(), start) == 0) {
                bodies.push_back(line.substr(start.size()));
            }
        }
        return bodies;
    }
};
