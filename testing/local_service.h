/*
 * The device's own management service, with state: what a PATCH changes, the next GET shows.
 *
 *   GET         /api/system/status             "systemInfo": MAC, serial number, growing up-time
 *   GET, PATCH  /api/system/cloud_proxy        "CloudProxySettings"
 *   GET, PATCH  /api/system/settings/time      "timeConfs"
 *   GET, PATCH  /api/system/settings/ledblink  "systemLED"
 *   GET, POST   /api/cloud_fail_log            "conn_fail_chk"; a POST writes one more entry to the
 *                                              device's connection-failure log
 *
 * Every reply carries its payload in "restful_res". An unknown path gets 404, a method the resource
 * does not know 405, a PATCH that is no JSON object or names an unknown member 400.
 */
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

#include "testing/service.h"

namespace world {

struct LocalSettings {
    nlohmann::json proxy = {{"enable", false}, {"proxyServer", "none"}, {"proxyServerPort", 0}};
    bool create_log = true;
    long up_time = 86400;  // seconds, when the device is switched on
};

class LocalService : public Service {
  public:
    LocalService(ExchangeRecord &record, Scripts scripts, const LocalSettings &settings);

    // The resources' present state by path, as the record shows it.
    nlohmann::json state();

  protected:
    std::string endpoint_of(const Request &request) override;
    std::string part_of(const std::string &) override { return name_; }
    Reply own_answer(Request &request, const std::string &endpoint,
                     const std::string &digest) override;

  private:
    Reply get(const std::string &path);
    Reply patch(const std::string &path, const std::string &body);
    Reply log_failure();
    void refresh();

    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    const long first_up_time_;
    std::mutex guard_;
    std::map<std::string, nlohmann::json> resources_;  // path -> payload
};

}  // namespace world
