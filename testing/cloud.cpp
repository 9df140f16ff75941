#include "testing/cloud.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "deployment.h"
#include "testing/sha256.h"

namespace world {
namespace {

using nlohmann::json;

constexpr const char *kKdumpsPath = "/dev/tfaapi/kdumps";
constexpr std::chrono::seconds kLongestHold{20};

Reply refusal(int status, const std::string &message) {
    Reply reply = json_reply(json{{"message", message}}.dump());
    reply.status = status;
    return reply;
}

std::string utc_now() {
    const std::time_t now = std::time(nullptr);
    std::tm parts = {};
    gmtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

// A file name as part of a URL path; long ones are cut.
std::string in_url(const std::string &name) {
    constexpr size_t kLongest = 100;
    std::string text;
    for (const char c : name.substr(0, kLongest)) {
        char code[4];
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(c));
        const bool plain =
            std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '_' || c == '-';
        text += plain ? std::string(1, c) : code;
    }
    return text;
}

bool holds(const std::vector<std::string> &names, const std::string &name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

void Gate::close() {
    const std::lock_guard<std::mutex> lock(guard_);
    closed_ = true;
    arrived_ = false;
}

void Gate::open() {
    const std::lock_guard<std::mutex> lock(guard_);
    closed_ = false;
    changed_.notify_all();
}

bool Gate::wait_for_arrival() {
    std::unique_lock<std::mutex> lock(guard_);
    return changed_.wait_for(lock, kLongestHold, [this] { return arrived_; });
}

void Gate::pass() {
    std::unique_lock<std::mutex> lock(guard_);
    arrived_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, kLongestHold, [this] { return !closed_; });
}

Cloud::Cloud(ExchangeRecord &record, Scripts scripts, CloudSettings settings)
    : Service("cloud", record, std::move(scripts)), settings_(std::move(settings)) {
    settings_.tfa_hosts.push_back(CLOUD_TFA_HOST);
    if (settings_.keeps_files)
        std::filesystem::create_directories(settings_.folder);
}

void Cloud::forget() {
    const std::lock_guard<std::mutex> lock(guard_);
    urls_.clear();
    stored_.clear();
}

std::vector<StoredObject> Cloud::stored() {
    const std::lock_guard<std::mutex> lock(guard_);
    return stored_;
}

std::vector<std::string> Cloud::hosts() const {
    std::vector<std::string> names = settings_.tfa_hosts;
    names.insert(names.end(), {kStoreHost, kTimeHost});
    return names;
}

Admission Cloud::admit(const std::string &server_name) {
    if (server_name.empty())
        return Admission::welcome;  // plain HTTP, or a TLS client that names no host
    const std::string url = "https://" + server_name;
    if (server_name == kTimeHost)
        return fault_of_connection("time", url) == Fault::Kind::drop_at_accept ? Admission::cut
                                                                               : Admission::welcome;
    const std::string endpoint = holds(settings_.tfa_hosts, server_name) ? "tfa" : "store";
    if (is_out(endpoint, url))
        return Admission::cut;
    const Fault::Kind fault = fault_of_connection(endpoint, url);
    if (fault == Fault::Kind::drop_at_accept)
        return Admission::cut;
    Admission admission = Admission::welcome_with_certificate;
    if (fault != Fault::Kind::none)
        admission.shown = authority().issue_flawed_server(fault, server_name);
    return admission;
}

bool Cloud::is_out(const std::string &part, const std::string &url) {
    if (std::chrono::steady_clock::now() - start_ >= settings_.outage)
        return false;
    note_connection(part, url, "outage");
    return true;
}

std::string Cloud::endpoint_of(const Request &request) {
    if (request.path() == kKdumpsPath)
        return "tfa";
    if (request.path() == "/time")
        return "time";
    return holds(settings_.tfa_hosts, request.server_name) ? "tfa" : "store";
}

std::string Cloud::origin_of(const Request &request) {
    return (request.server_name.empty() ? "http://" : "https://") + request.header("Host");
}

Reply Cloud::own_answer(Request &request, const std::string &endpoint, const std::string &digest) {
    if (endpoint == "time")
        return tell_time(request);
    if (endpoint == "store")
        return take_upload(request, digest);
    if (settings_.gate != nullptr)
        settings_.gate->pass();
    return hand_out_url(request);
}

Reply Cloud::tell_time(const Request &request) const {
    if (request.method != "GET")
        return refusal(405, "method not allowed");
    return json_reply(json{{"time", settings_.clock.empty() ? utc_now() : settings_.clock}}.dump());
}

Reply Cloud::hand_out_url(const Request &request) {
    if (request.path() != kKdumpsPath)
        return refusal(404, "no such resource");
    if (request.method != "POST")
        return refusal(405, "method not allowed");
    if (request.client_certificate.empty())
        return refusal(403, "client certificate required");
    const json body = json::parse(request.body, nullptr, false);
    if (request.header("Content-Type") != "application/json" || !body.is_object() ||
        !body.contains("filename") || !body["filename"].is_string())
        return refusal(400, "the body must be {\"filename\": \"...\"}");
    const std::string object =
        std::filesystem::path(body["filename"].get<std::string>()).filename().string();
    if (object.empty())
        return refusal(400, "\"filename\" names no file");

    const std::lock_guard<std::mutex> lock(guard_);
    const std::string number = std::to_string(++urls_given_);
    const std::string target = settings_.signer
                                   ? settings_.signer(urls_given_, in_url(object))
                                   : "/up/" + number + "/" + in_url(object) +
                                         "?token=" + Sha256::of("upload " + number).substr(0, 8);
    urls_[target] = {object, std::chrono::steady_clock::now() + settings_.url_lifetime, false};
    return json_reply(json{{"message", "OK"}, {"upload_url", settings_.store_url + target}}.dump());
}

// A body still on its way is kept under its request's number.
std::string Cloud::place_of(const Request &request) const {
    return settings_.folder + "/.incoming-" + std::to_string(request.number);
}

std::function<void(std::string_view)> Cloud::keeper(const Request &request,
                                                    const std::string &endpoint) {
    if (endpoint != "store" || request.method != "PUT" || !settings_.keeps_files)
        return {};
    auto file = std::make_shared<std::ofstream>(place_of(request), std::ios::binary);
    return [file](std::string_view piece) {
        file->write(piece.data(), static_cast<std::streamsize>(piece.size()));
    };
}

Reply Cloud::take_upload(const Request &request, const std::string &digest) {
    if (request.method != "PUT")
        return refusal(405, "method not allowed");
    const std::lock_guard<std::mutex> lock(guard_);
    const auto url = urls_.find(request.target);
    std::string reason;
    if (url == urls_.end())
        reason = "unknown upload URL";
    else if (url->second.used)
        reason = "this upload URL has been used";
    else if (std::chrono::steady_clock::now() >= url->second.expires)
        reason = "this upload URL has expired";
    std::error_code none;
    if (!reason.empty()) {
        std::filesystem::remove(place_of(request), none);
        return refusal(403, reason);
    }
    url->second.used = true;
    const std::string path = settings_.folder + "/" + std::to_string(stored_.size() + 1) + "-" +
                             in_url(url->second.object);
    std::filesystem::rename(place_of(request), path, none);
    stored_.push_back({url->second.object, request.body_size, digest, path});
    if (settings_.on_stored)
        settings_.on_stored();
    return status_reply(200);
}

}  // namespace world
