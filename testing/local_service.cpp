#include "testing/local_service.h"

#include <fstream>

namespace world {
namespace {

using nlohmann::json;

constexpr const char *kStatus = "/api/system/status";
constexpr const char *kProxy = "/api/system/cloud_proxy";
constexpr const char *kTime = "/api/system/settings/time";
constexpr const char *kLed = "/api/system/settings/ledblink";
constexpr const char *kFailLog = "/api/cloud_fail_log";
constexpr const char *kFailLogFile = "/mnt/data/iss_config/cloud_conn_fail_log.txt";

Reply envelope(const json &payload) { return json_reply(json{{"restful_res", payload}}.dump()); }

Reply refusal(int status, const std::string &reason) {
    Reply reply = envelope({{"error", reason}});
    reply.status = status;
    return reply;
}

// The members of a resource, wherever it keeps them: {"timeConfs": {...}} or {"systemLED": "..."}.
json &members(json &payload) {
    return payload.size() == 1 && payload.begin()->is_object() ? *payload.begin() : payload;
}

}  // namespace

LocalService::LocalService(ExchangeRecord &record, Scripts scripts, const LocalSettings &settings)
    : Service("local", record, std::move(scripts)), first_up_time_(settings.up_time) {
    resources_[kStatus] = {{"systemInfo",
                            {{"modelName", "VD-100"},
                             {"serialNo", "VD2600000001"},
                             {"macAddr", "02:00:5e:10:00:01"},
                             {"firmwareVersion", "1.4.2"},
                             {"upTime", first_up_time_}}}};
    resources_[kProxy] = {{"CloudProxySettings", settings.proxy}};
    resources_[kTime] = {{"timeConfs", {{"sntpTimeZone", "UTC+00:00"}, {"manualTime", ""}}}};
    resources_[kLed] = {{"systemLED", "solidLight"}};
    resources_[kFailLog] = {
        {"conn_fail_chk", {{"createLog", settings.create_log}, {"entries", 0}}}};
}

json LocalService::state() {
    const std::lock_guard<std::mutex> lock(guard_);
    refresh();
    return resources_;
}

void LocalService::refresh() {
    const auto on = std::chrono::steady_clock::now() - start_;
    resources_[kStatus]["systemInfo"]["upTime"] =
        first_up_time_ + std::chrono::duration_cast<std::chrono::seconds>(on).count();
}

std::string LocalService::endpoint_of(const Request &request) {
    return request.method + " " + request.path();
}

Reply LocalService::own_answer(Request &request, const std::string &, const std::string &) {
    const std::lock_guard<std::mutex> lock(guard_);
    const std::string path = request.path();
    if (resources_.find(path) == resources_.end())
        return refusal(404, "no such resource");
    if (request.method == "GET")
        return get(path);
    if (request.method == "PATCH" && path != kStatus && path != kFailLog)
        return patch(path, request.body);
    if (request.method == "POST" && path == kFailLog)
        return log_failure();
    return refusal(405, "method not allowed");
}

Reply LocalService::get(const std::string &path) {
    refresh();
    return envelope(resources_[path]);
}

Reply LocalService::patch(const std::string &path, const std::string &body) {
    const json change = json::parse(body, nullptr, false);
    if (!change.is_object() || change.empty())
        return refusal(400, "the body is not a JSON object with members");
    json &present = members(resources_[path]);
    for (const auto &[name, value] : change.items()) {
        if (!present.contains(name))
            return refusal(400, "unknown member \"" + name + "\"");
        if (present[name].type_name() != std::string(value.type_name()))
            return refusal(400, "\"" + name + "\" must be a " + present[name].type_name());
    }
    present.update(change);
    return envelope(resources_[path]);
}

Reply LocalService::log_failure() {
    json &entries = resources_[kFailLog]["conn_fail_chk"]["entries"];
    entries = entries.get<int>() + 1;
    refresh();
    std::ofstream log(kFailLogFile, std::ios::app);
    log << "up " << resources_[kStatus]["systemInfo"]["upTime"]
        << " s: no connection to the cloud\n";
    return envelope(resources_[kFailLog]);
}

}  // namespace world
